#include "TrajectoryFields.h"

#include "Output.h"
#include "TrajectoryFile.h"

#include <QFileInfo>

#include <cmath>
#include <numbers>

namespace dataprep {

namespace {

QString degrees(double valueRad, int decimals)
{
    return std::isfinite(valueRad)
        ? QString::number(valueRad * 180.0 / std::numbers::pi, 'f', decimals) + QStringLiteral(" deg")
        : QStringLiteral("-");
}

QString metres(double valueM, int decimals)
{
    return QString::number(valueM, 'f', decimals) + QStringLiteral(" m");
}

} // namespace

QString intervalText(double intervalSec)
{
    if (!std::isfinite(intervalSec) || intervalSec <= 0.0)
        return QStringLiteral("-");
    return QString::number(intervalSec, 'g', 9) + QStringLiteral(" s (") + QString::number(1.0 / intervalSec, 'f', 3)
        + QStringLiteral(" Hz)");
}

QJsonValue frequencyHz(double intervalSec)
{
    return std::isfinite(intervalSec) && intervalSec > 0.0 ? QJsonValue(1.0 / intervalSec) : QJsonValue();
}

Fields stdDevFields(const datamodel::ImuRecord& record)
{
    const auto& sd = record.stdDev();
    Fields fields;
    fields.add(QStringLiteral("northM"), QStringLiteral("North"), number(sd[0]), metres(sd[0], 4));
    fields.add(QStringLiteral("eastM"), QStringLiteral("East"), number(sd[1]), metres(sd[1], 4));
    fields.add(QStringLiteral("downM"), QStringLiteral("Down"), number(sd[2]), metres(sd[2], 4));
    fields.add(QStringLiteral("rollRad"), QStringLiteral("Roll"), number(sd[3]), degrees(sd[3], 5));
    fields.add(QStringLiteral("pitchRad"), QStringLiteral("Pitch"), number(sd[4]), degrees(sd[4], 5));
    fields.add(QStringLiteral("headingRad"), QStringLiteral("Heading"), number(sd[5]), degrees(sd[5], 5));
    return fields;
}

Fields trajectoryRecordFields(const datamodel::ImuRecord& record, bool positions, bool stdDevs)
{
    auto value = [&](double v) { return positions ? number(v) : QJsonValue(); };
    Fields fields;
    fields.add(QStringLiteral("gpsSec"), QStringLiteral("GPS time"), number(record.time), secondsText(record.time, 4));
    fields.add(QStringLiteral("latitudeRad"), positions ? QStringLiteral("Latitude") : QString(), value(record.latitude),
               degrees(record.latitude, 9));
    fields.add(QStringLiteral("longitudeRad"), positions ? QStringLiteral("Longitude") : QString(),
               value(record.longitude), degrees(record.longitude, 9));
    fields.add(QStringLiteral("heightM"), positions ? QStringLiteral("Height") : QString(), value(record.height),
               metres(record.height, 3));
    fields.add(QStringLiteral("rollRad"), positions ? QStringLiteral("Roll") : QString(), value(record.roll),
               degrees(record.roll, 6));
    fields.add(QStringLiteral("pitchRad"), positions ? QStringLiteral("Pitch") : QString(), value(record.pitch),
               degrees(record.pitch, 6));
    fields.add(QStringLiteral("headingRad"), positions ? QStringLiteral("Heading") : QString(), value(record.heading),
               degrees(record.heading, 6));
    fields.add(QStringLiteral("stdDev"), QStringLiteral("Standard deviations"),
               stdDevs ? std::optional<Fields>(stdDevFields(record)) : std::nullopt);
    return fields;
}

Fields trajectoryFileFields(const QString& path, const TrajectoryFile& file)
{
    datamodel::PosFile& reader = file.reader();
    const double intervalSec = reader.frequency();
    Fields fields;
    fields.add(QStringLiteral("name"), QFileInfo(path).fileName());
    fields.add(QStringLiteral("file"), QStringLiteral("File"), path);
    fields.add(QStringLiteral("format"), QStringLiteral("Format"), QString::fromLatin1(file.formatName()));
    fields.add(QStringLiteral("opened"), true);
    fields.add(QStringLiteral("records"), QStringLiteral("Records"), reader.numSets());
    fields.add(QStringLiteral("gpsStartSec"), QStringLiteral("GPS start"), number(reader.startTime().value()),
               secondsText(reader.startTime().value(), 4));
    fields.add(QStringLiteral("gpsEndSec"), QStringLiteral("GPS end"), number(reader.endTime().value()),
               secondsText(reader.endTime().value(), 4));
    fields.add(QStringLiteral("gpsRollover"), QStringLiteral("GPS week rollover"), reader.hasGpsRollover());
    fields.add(QStringLiteral("recordIntervalSec"), QStringLiteral("Record interval"), number(intervalSec),
               intervalText(intervalSec));
    fields.add(QStringLiteral("frequencyHz"), frequencyHz(intervalSec));
    fields.add(QStringLiteral("hasStdDevs"), QStringLiteral("Standard deviations"), reader.hasStdDevs());
    fields.add(QStringLiteral("error"), QJsonValue());
    return fields;
}

} // namespace dataprep
