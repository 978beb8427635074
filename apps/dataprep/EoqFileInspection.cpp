#include "EoqFileInspection.h"

#include <datamodel/trajectory/EoqFile.h>

#include <charconv>
#include <optional>

namespace dataprep {

namespace {

/// The float as the shortest decimal that reads back as it (0.1, not
/// 0.10000000149011612).
QJsonValue measure(float value)
{
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return number(QByteArray(text, result.ptr - text).toDouble());
}

QString measureText(float value)
{
    return QString::number(double(value), 'g', 6);
}

} // namespace

Inspection inspectEoqFile(const QString& path)
{
    datamodel::EoqFile::Header header;
    const std::vector<datamodel::EoqFile::Record> records = datamodel::EoqFile::read(path.toStdString(), header);
    const datamodel::EoqFile::Statistics& statistics = header.statistics;
    Inspection inspection{QStringLiteral("eoq"), QStringLiteral("EOQ file (trajectory quality of a take)"), {}, {}};
    Fields& fields = inspection.fields;
    fields.add(QStringLiteral("file"), QStringLiteral("File"), path);
    fields.add(QStringLiteral("records"), QStringLiteral("Records"), qint64(records.size()));
    std::optional<double> start;
    std::optional<double> end;
    if (!records.empty()) {
        start = records.front().time;
        end = records.back().time;
    }
    fields.add(QStringLiteral("gpsStartSec"), QStringLiteral("GPS start"), number(start), secondsText(start));
    fields.add(QStringLiteral("gpsEndSec"), QStringLiteral("GPS end"), number(end), secondsText(end));

    const auto add = [](Fields& to, const char* key, const char* label, float value) {
        to.add(QLatin1String(key), QLatin1String(label), measure(value), measureText(value));
    };
    Fields ncs;
    add(ncs, "min", "Minimum", statistics.minNcs);
    add(ncs, "max", "Maximum", statistics.maxNcs);
    add(ncs, "rms", "RMS (against 1)", statistics.rmsNcs);
    fields.add(QStringLiteral("ncs"), QStringLiteral("Normalized Coverage Speed (NCS)"), std::move(ncs));
    Fields rpe;
    add(rpe, "min", "Minimum", statistics.minRpe);
    add(rpe, "max", "Maximum", statistics.maxRpe);
    add(rpe, "rms", "RMS", statistics.rmsRpe);
    fields.add(QStringLiteral("rpe"), QStringLiteral("Relative L1 Pixel Error (RPE)"), std::move(rpe));
    Fields psr;
    add(psr, "max", "Maximum", statistics.maxPsr);
    add(psr, "rms", "RMS", statistics.rmsPsr);
    fields.add(QStringLiteral("psr"), QStringLiteral("Pixel Smearing Ratio (PSR)"), std::move(psr));
    return inspection;
}

} // namespace dataprep
