#include "EopFileInspection.h"

#include "TrajectoryFields.h"

#include <platform/sensor/EOPData.h>

#include <QJsonArray>
#include <QStringList>

#include <numbers>

namespace dataprep {

namespace {

constexpr double sRadToDeg = 180.0 / std::numbers::pi;

Fields sampleFields(const sensor::EOP& sample)
{
    Fields fields;
    fields.add(QStringLiteral("gpsSec"), QStringLiteral("GPS time"), number(sample.time), secondsText(sample.time));
    fields.add(QStringLiteral("xM"), QStringLiteral("x (east)"), number(sample.x),
               QString::number(sample.x, 'f', 3) + QStringLiteral(" m"));
    fields.add(QStringLiteral("yM"), QStringLiteral("y (north)"), number(sample.y),
               QString::number(sample.y, 'f', 3) + QStringLiteral(" m"));
    fields.add(QStringLiteral("zM"), QStringLiteral("z (up)"), number(sample.z),
               QString::number(sample.z, 'f', 3) + QStringLiteral(" m"));
    QJsonArray q;
    QStringList text;
    for (const float value : sample.q) {
        q.append(double(value));
        text << QString::number(double(value), 'f', 7);
    }
    fields.add(QStringLiteral("quaternion"), QStringLiteral("Attitude (q0, q1, q2, q3)"), q, text.join(QStringLiteral(", ")));
    return fields;
}

} // namespace

Inspection inspectEopFile(const QString& path)
{
    const sensor::EOPData data(path.toStdString(), true, true);
    Inspection inspection{QStringLiteral("eop"), QStringLiteral("EOP file (exterior orientation of a take)"), {}, {}};
    Fields& fields = inspection.fields;
    fields.add(QStringLiteral("file"), QStringLiteral("File"), path);
    fields.add(QStringLiteral("samples"), QStringLiteral("Samples"), qint64(data.size()));
    fields.add(QStringLiteral("intervalSec"), QStringLiteral("Interval"), number(data.frequency()),
               intervalText(data.frequency()));
    fields.add(QStringLiteral("absTimeSec"), QStringLiteral("GPS week start"), qint64(data.absTime()),
               QString::number(data.absTime()) + QStringLiteral(" s (week ")
                   + QString::number(data.absTime() / 604800 + 1024) + QStringLiteral(")"));
    const geo::XYZPoint& anchor = data.anchorPoint();
    Fields anchorFields;
    anchorFields.add(QStringLiteral("lonDeg"), QStringLiteral("Longitude"), number(anchor.x * sRadToDeg),
                     QString::number(anchor.x * sRadToDeg, 'f', 8) + QStringLiteral(" deg"));
    anchorFields.add(QStringLiteral("latDeg"), QStringLiteral("Latitude"), number(anchor.y * sRadToDeg),
                     QString::number(anchor.y * sRadToDeg, 'f', 8) + QStringLiteral(" deg"));
    anchorFields.add(QStringLiteral("heightM"), QStringLiteral("Height"), number(anchor.z),
                     QString::number(anchor.z, 'f', 3) + QStringLiteral(" m"));
    fields.add(QStringLiteral("anchor"), QStringLiteral("Anchor"), std::move(anchorFields));
    fields.add(QStringLiteral("hasStdDevs"), QStringLiteral("Standard deviations"), data.hasStdDevs());
    fields.add(QStringLiteral("positionSource"), QStringLiteral("Positions from"), QString::fromStdString(data.posSource()));
    fields.add(QStringLiteral("timeSource"), QStringLiteral("Times from"), QString::fromStdString(data.tmSource()));
    fields.add(QStringLiteral("application"), QStringLiteral("Made by"), QString::fromStdString(data.appSource()));
    std::optional<Fields> first;
    std::optional<Fields> last;
    sensor::EOP sample;
    if (data.size() > 0 && data.atIndex(0, sample) == 0)
        first = sampleFields(sample);
    if (data.size() > 0 && data.atIndex(data.size() - 1, sample) == 0)
        last = sampleFields(sample);
    fields.add(QStringLiteral("firstSample"), QStringLiteral("First sample"), std::move(first));
    fields.add(QStringLiteral("lastSample"), QStringLiteral("Last sample"), std::move(last));
    return inspection;
}

} // namespace dataprep
