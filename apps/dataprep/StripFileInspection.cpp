#include "StripFileInspection.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/IntegrationTime.h>
#include <datamodel/timing/TdiData.h>

#include <QDir>
#include <QFileInfo>

namespace dataprep {

namespace {

QJsonValue utcValue(const QDateTime& time)
{
    return time.isNull() ? QJsonValue() : QJsonValue(time.toUTC().toString(Qt::ISODate));
}

Fields positionFields(const QDateTime& time, const geo::XYPoint& position, float heightM)
{
    Fields fields;
    fields.add(QStringLiteral("utc"), QStringLiteral("Time"), utcValue(time));
    fields.add(QStringLiteral("longitudeDeg"), QStringLiteral("Longitude"), position.x,
               QString::number(position.x, 'f', 6) + QStringLiteral(" deg"));
    fields.add(QStringLiteral("latitudeDeg"), QStringLiteral("Latitude"), position.y,
               QString::number(position.y, 'f', 6) + QStringLiteral(" deg"));
    fields.add(QStringLiteral("heightM"), QStringLiteral("Height"), double(heightM),
               QString::number(heightM, 'f', 1) + QStringLiteral(" m"));
    return fields;
}

Fields imageFields(const datamodel::L0Image& image)
{
    Fields fields;
    fields.add(QStringLiteral("index"), QStringLiteral("Index"), int(image.index()));
    fields.add(QStringLiteral("band"), QStringLiteral("Band"), text(image.bandName()));
    fields.add(QStringLiteral("pixelFile"), QStringLiteral("Pixel file"), text(image.filename()));
    fields.add(QStringLiteral("ctFile"), QStringLiteral("CT file"), text(image.ctFilename()));
    fields.add(QStringLiteral("ctgFile"), QStringLiteral("CTG file"), text(image.ctgFilename()));
    fields.add(QStringLiteral("fptFile"), QStringLiteral("FPT file"), text(image.fptFilename()));
    fields.add(QStringLiteral("infoFile"), QStringLiteral("Info file"), text(image.infoFileName()));
    // A band has either one integration time (TDI stage count) or a file of
    // them per scan line.
    const datamodel::IntegrationTime& it = image.integrationTime();
    const bool itValue = it.fileName().empty();
    fields.add(QStringLiteral("integrationTimeSec"), itValue ? QStringLiteral("Integration time") : QString(),
               itValue && it.isValid() ? number(it.value().value()) : QJsonValue(),
               itValue && it.isValid() ? QString::number(it.value().value() * 1000.0, 'f', 3) + QStringLiteral(" ms")
                                       : QStringLiteral("(unknown)"));
    fields.add(QStringLiteral("integrationTimeFile"), itValue ? QString() : QStringLiteral("Integration-time file"),
               itValue ? QJsonValue() : text(it.fileName()));
    const datamodel::TdiData& tdi = image.tdiData();
    const bool tdiValue = tdi.fileName().empty();
    fields.add(QStringLiteral("tdiStages"), tdiValue ? QStringLiteral("TDI stages") : QString(),
               tdiValue ? QJsonValue(double(tdi.value())) : QJsonValue());
    fields.add(QStringLiteral("tdiFile"), tdiValue ? QString() : QStringLiteral("TDI file"),
               tdiValue ? QJsonValue() : text(tdi.fileName()));
    fields.add(QStringLiteral("swathPixels"), QStringLiteral("Swath"), int(image.swathWidth()),
               QStringLiteral("%1 pixels").arg(image.swathWidth()));
    fields.add(QStringLiteral("sampleOffsetPixels"), QStringLiteral("Sample offset"), int(image.sampleOffset()),
               QStringLiteral("%1 pixels").arg(image.sampleOffset()));
    return fields;
}

Fields stripFields(const datamodel::Take& take)
{
    Fields fields;
    fields.add(QStringLiteral("name"), QStringLiteral("Take"), text(take.name()));
    fields.add(QStringLiteral("lineLabel"), QStringLiteral("Line label"), text(take.label()));
    fields.add(QStringLiteral("lineNumber"), QStringLiteral("Line number"),
               take.lineNumber() == datamodel::Take::sUnsetLineNumber ? QJsonValue() : QJsonValue(qint64(take.lineNumber())));
    fields.add(QStringLiteral("meanTerrainHeightM"), QStringLiteral("Mean terrain height"),
               double(take.meanTerrainHeight()), QString::number(take.meanTerrainHeight(), 'f', 1) + QStringLiteral(" m"));
    fields.add(QStringLiteral("rawDataLocation"), QStringLiteral("Raw data"), text(take.rawDataLocation()));
    fields.add(QStringLiteral("imagesLocation"), QStringLiteral("Images"), text(take.imagesLocation()));
    fields.add(QStringLiteral("sensorType"), QStringLiteral("Sensor type"), text(take.sensorType()));
    fields.add(QStringLiteral("sensorId"), QStringLiteral("Sensor"), text(take.sensorId()));
    fields.add(QStringLiteral("calibrationVersion"), QStringLiteral("Calibration version"), take.sensorVersion());
    fields.add(QStringLiteral("eopFile"), QStringLiteral("EOP file"), textOrNull(take.eopFilename()));
    fields.add(QStringLiteral("adjustedEopFile"), QStringLiteral("Adjusted EOP file"),
               textOrNull(take.adjustedEopFilename()));
    const auto* source = take.imuTrajectorySource();
    fields.add(QStringLiteral("trajectorySource"), QStringLiteral("Trajectory"),
               source ? text(source->toString()) : QJsonValue());
    fields.add(QStringLiteral("start"), QStringLiteral("Start"),
               take.hasStartInformation()
                   ? std::optional<Fields>(positionFields(take.startTime(), take.startPosition(), take.startHeight()))
                   : std::nullopt);
    fields.add(QStringLiteral("stop"), QStringLiteral("Stop"),
               take.hasStopInformation()
                   ? std::optional<Fields>(positionFields(take.stopTime(), take.stopPosition(), take.stopHeight()))
                   : std::nullopt);

    std::vector<Fields> images;
    for (const datamodel::L0Image* image : take.imagesL0())
        images.push_back(imageFields(*image));
    fields.add(QStringLiteral("images"), QStringLiteral("Level-0 images"), std::move(images));

    std::vector<Fields> products;
    for (const datamodel::L2Image* image : take.imagesL2()) {
        Fields item;
        item.add(QStringLiteral("element"), QStringLiteral("Element"), image->element().tagName());
        item.add(QStringLiteral("file"), QStringLiteral("File"), text(image->filename()));
        products.push_back(std::move(item));
    }
    fields.add(QStringLiteral("products"), QStringLiteral("Level-2 products"), std::move(products));

    std::vector<Fields> darkStrips;
    for (const datamodel::Take* dark : take.darkTakes())
        darkStrips.push_back(stripFields(*dark));
    fields.add(QStringLiteral("darkStrips"), QStringLiteral("Dark takes"), std::move(darkStrips));
    return fields;
}

} // namespace

Inspection inspectStripFile(const QString& path)
{
    // A strip file lies in the raw folder of its session: the folder above
    // is the session directory that relative names resolve against.
    const QFileInfo file(path);
    QDir sessionDirectory = file.absoluteDir();
    sessionDirectory.cdUp();
    datamodel::RecordingSession session(sessionDirectory.absolutePath().toStdString());
    auto* take = new datamodel::Take(session);
    session.addTake(take);
    take->parseStpFile(file.absoluteFilePath().toStdString());
    Fields fields;
    fields.add(QStringLiteral("file"), QStringLiteral("File"), path);
    fields.append(stripFields(*take));
    return Inspection{QStringLiteral("strip"), QStringLiteral("strip file"), std::move(fields), {}};
}

} // namespace dataprep
