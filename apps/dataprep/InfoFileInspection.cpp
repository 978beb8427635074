#include "InfoFileInspection.h"

#include <datamodel/model/InfoFile.h>

#include <QDateTime>

namespace dataprep {

namespace {

QJsonValue utcValue(const QDateTime& time)
{
    return time.isNull() ? QJsonValue() : QJsonValue(time.toUTC().toString(Qt::ISODate));
}

Fields pointFields(const geo::XYPoint& point)
{
    Fields fields;
    fields.add(QStringLiteral("longitudeDeg"), QStringLiteral("Longitude"), point.x,
               QString::number(point.x, 'f', 8) + QStringLiteral(" deg"));
    fields.add(QStringLiteral("latitudeDeg"), QStringLiteral("Latitude"), point.y,
               QString::number(point.y, 'f', 8) + QStringLiteral(" deg"));
    return fields;
}

} // namespace

Inspection inspectInfoFile(const QString& path)
{
    const datamodel::InfoFile info(path.toStdString(), datamodel::InfoFile::STRIPNAMEREGEX);
    const double integrationTimeSec = info.integrationTime().value();
    Inspection inspection{QStringLiteral("info"), QStringLiteral("band info file"), {}, {}};
    inspection.fields.add(QStringLiteral("file"), QStringLiteral("File"), text(info.infoFileName()))
        .add(QStringLiteral("pixelFile"), QStringLiteral("Pixel file"), text(info.pixelFilename()))
        .add(QStringLiteral("ctFile"), QStringLiteral("CT file"), text(info.ctFileName()))
        .add(QStringLiteral("sensorType"), QStringLiteral("Sensor type"), text(info.sensorType()))
        .add(QStringLiteral("sensorId"), QStringLiteral("Sensor"), text(info.sensorId()))
        .add(QStringLiteral("band"), QStringLiteral("Band"), text(info.bandId()))
        .add(QStringLiteral("stripName"), QStringLiteral("Strip name"), text(info.stripName()))
        .add(QStringLiteral("startPosition"), QStringLiteral("Start position"), pointFields(info.startPos()))
        .add(QStringLiteral("stopPosition"), QStringLiteral("Stop position"), pointFields(info.stopPos()))
        .add(QStringLiteral("centerPosition"), QStringLiteral("Centre"), pointFields(info.centerPoint()))
        .add(QStringLiteral("meanFlyingHeightM"), QStringLiteral("Mean flying height"), double(info.meanFlyingHeight()),
             QString::number(info.meanFlyingHeight(), 'f', 1) + QStringLiteral(" m"))
        .add(QStringLiteral("flightStartUtc"), QStringLiteral("Flight start"), utcValue(info.flightStart()))
        .add(QStringLiteral("lineStartUtc"), QStringLiteral("Line start"), utcValue(info.lineStart()))
        .add(QStringLiteral("lineStopUtc"), QStringLiteral("Line stop"), utcValue(info.lineStop()))
        .add(QStringLiteral("integrationTimeSec"), QStringLiteral("Integration time"),
             info.hasIntegrationTimeSet() ? number(integrationTimeSec) : QJsonValue(),
             info.hasIntegrationTimeSet() ? QString::number(integrationTimeSec * 1000.0, 'f', 3) + QStringLiteral(" ms")
                                          : QStringLiteral("(not set)"))
        .add(QStringLiteral("lineNumber"), QStringLiteral("Line number"), info.lineNumber())
        .add(QStringLiteral("lineLabel"), QStringLiteral("Line label"), text(info.lineLabel()));
    return inspection;
}

} // namespace dataprep
