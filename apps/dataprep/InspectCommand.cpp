#include "InspectCommand.h"

#include "CtgCommand.h"
#include "Fields.h"
#include "TrajectoryCommand.h"

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/IntegrationTime.h>
#include <datamodel/timing/ScanLineData.h>
#include <datamodel/timing/TdiData.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>
#include <stdexcept>

namespace dataprep {

namespace {

QJsonValue dateValue(const QDateTime& time)
{
    return time.isNull() ? QJsonValue() : QJsonValue(time.toUTC().toString(Qt::ISODate));
}

Fields pointFields(const geo::XYPoint& point)
{
    Fields fields;
    fields.add(QStringLiteral("longitude"), point.x, QString::number(point.x, 'f', 8));
    fields.add(QStringLiteral("latitude"), point.y, QString::number(point.y, 'f', 8));
    return fields;
}

QString milliseconds(double valueSec)
{
    return QString::number(valueSec * 1000.0, 'f', 3) + QStringLiteral(" ms");
}

Fields inspectInfoFile(const QString& path)
{
    const datamodel::InfoFile info(path.toStdString(), datamodel::InfoFile::STRIPNAMEREGEX);
    Fields fields;
    fields.add(QStringLiteral("infoFileName"), info.infoFileName())
        .add(QStringLiteral("pixelFilename"), info.pixelFilename())
        .add(QStringLiteral("ctFileName"), info.ctFileName())
        .add(QStringLiteral("sensorType"), info.sensorType())
        .add(QStringLiteral("sensorId"), info.sensorId())
        .add(QStringLiteral("bandId"), info.bandId())
        .add(QStringLiteral("stripName"), info.stripName())
        .add(QStringLiteral("startPos"), pointFields(info.startPos()))
        .add(QStringLiteral("stopPos"), pointFields(info.stopPos()))
        .add(QStringLiteral("centerPoint"), pointFields(info.centerPoint()))
        .add(QStringLiteral("meanFlyingHeight"), double(info.meanFlyingHeight()))
        .add(QStringLiteral("flightStart"), dateValue(info.flightStart()))
        .add(QStringLiteral("lineStart"), dateValue(info.lineStart()))
        .add(QStringLiteral("lineStop"), dateValue(info.lineStop()))
        .add(QStringLiteral("integrationTime"), info.integrationTime().value(),
             info.hasIntegrationTimeSet() ? milliseconds(info.integrationTime().value()) : QStringLiteral("(not set)"))
        .add(QStringLiteral("hasIntegrationTimeSet"), info.hasIntegrationTimeSet())
        .add(QStringLiteral("lineNumber"), info.lineNumber())
        .add(QStringLiteral("lineLabel"), info.lineLabel());
    return fields;
}

Fields positionFields(const QDateTime& time, const geo::XYPoint& position, float heightM)
{
    Fields fields;
    fields.add(QStringLiteral("time"), dateValue(time));
    fields.add(QStringLiteral("longitude"), position.x, QString::number(position.x, 'f', 6));
    fields.add(QStringLiteral("latitude"), position.y, QString::number(position.y, 'f', 6));
    fields.add(QStringLiteral("height"), double(heightM));
    return fields;
}

Fields takeFields(const datamodel::Take& take)
{
    Fields fields;
    fields.add(QStringLiteral("name"), take.name());
    fields.add(QStringLiteral("lineLabel"), take.label());
    fields.add(QStringLiteral("lineNumber"),
               take.lineNumber() == datamodel::Take::sUnsetLineNumber ? QJsonValue() : QJsonValue(qint64(take.lineNumber())));
    fields.add(QStringLiteral("meanTerrainHeight"), double(take.meanTerrainHeight()));
    fields.add(QStringLiteral("rawDataLocation"), take.rawDataLocation());
    fields.add(QStringLiteral("imagesLocation"), take.imagesLocation());
    fields.add(QStringLiteral("sensorType"), take.sensorType());
    fields.add(QStringLiteral("sensorId"), take.sensorId());
    fields.add(QStringLiteral("sensorVersion"), take.sensorVersion());
    fields.add(QStringLiteral("eopFilename"), take.eopFilename());
    fields.add(QStringLiteral("adjustedEopFilename"), take.adjustedEopFilename());
    const auto* source = take.imuTrajectorySource();
    fields.add(QStringLiteral("imuTrajectorySource"),
               source ? QJsonValue(QString::fromStdString(source->toString())) : QJsonValue());
    if (take.hasStartInformation())
        fields.add(QStringLiteral("start"), positionFields(take.startTime(), take.startPosition(), take.startHeight()));
    if (take.hasStopInformation())
        fields.add(QStringLiteral("stop"), positionFields(take.stopTime(), take.stopPosition(), take.stopHeight()));

    std::vector<Fields> images;
    for (const datamodel::L0Image* image : take.imagesL0()) {
        Fields item;
        item.add(QStringLiteral("index"), int(image->index()));
        item.add(QStringLiteral("band"), image->bandName());
        item.add(QStringLiteral("filename"), image->filename());
        item.add(QStringLiteral("ctFilename"), image->ctFilename());
        item.add(QStringLiteral("ctgFilename"), image->ctgFilename());
        item.add(QStringLiteral("fptFilename"), image->fptFilename());
        item.add(QStringLiteral("infoFileName"), image->infoFileName());
        const datamodel::IntegrationTime& it = image->integrationTime();
        if (it.fileName().empty())
            item.add(QStringLiteral("integrationTime"), it.value().value(),
                     it.isValid() ? milliseconds(it.value().value()) : QStringLiteral("(unknown)"));
        else
            item.add(QStringLiteral("integrationTimeFile"), it.fileName());
        const datamodel::TdiData& tdi = image->tdiData();
        if (tdi.fileName().empty())
            item.add(QStringLiteral("tdiStages"), double(tdi.value()));
        else
            item.add(QStringLiteral("tdiFile"), tdi.fileName());
        item.add(QStringLiteral("swath"), int(image->swathWidth()));
        item.add(QStringLiteral("offset"), int(image->sampleOffset()));
        images.push_back(std::move(item));
    }
    fields.add(QStringLiteral("imagesL0"), std::move(images));

    std::vector<Fields> products;
    for (const datamodel::L2Image* image : take.imagesL2()) {
        Fields item;
        item.add(QStringLiteral("element"), image->element().tagName());
        item.add(QStringLiteral("filename"), image->filename());
        products.push_back(std::move(item));
    }
    fields.add(QStringLiteral("imagesL2"), std::move(products));

    std::vector<Fields> darkTakes;
    for (const datamodel::Take* dark : take.darkTakes())
        darkTakes.push_back(takeFields(*dark));
    fields.add(QStringLiteral("darkTakes"), std::move(darkTakes));
    return fields;
}

Fields inspectStripFile(const QString& path)
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
    return takeFields(*take);
}

Fields inspectScanLineData(const QString& path, bool integrationTimes)
{
    // Integration times are stored in microseconds and shown in milliseconds;
    // TDI files hold stage counts.
    const double scale = integrationTimes ? 1e-6 : 1.0;
    const datamodel::ScanLineData data = datamodel::ScanLineData::read(path.toStdString(), scale);
    auto shown = [&](float value) {
        return integrationTimes ? milliseconds(value) : QString::number(double(value), 'g', 6);
    };
    Fields fields;
    fields.add(QStringLiteral("file"), path);
    fields.add(QStringLiteral("kind"), integrationTimes ? "integration time (s)" : "TDI stages");
    fields.add(QStringLiteral("records"), int(QFileInfo(path).size() / 8));
    if (data.empty()) {
        fields.add(QStringLiteral("runs"), std::vector<Fields>{});
        return fields;
    }
    fields.add(QStringLiteral("firstLine"), qint64(data.values().begin()->first));
    fields.add(QStringLiteral("lastLine"), qint64(std::prev(data.values().end())->first));
    fields.add(QStringLiteral("minValue"), double(data.minValue()), shown(data.minValue()));
    fields.add(QStringLiteral("maxValue"), double(data.maxValue()), shown(data.maxValue()));
    fields.add(QStringLiteral("nominalValue"), double(data.nominalValue()), shown(data.nominalValue()));

    // Runs as the file holds them: first line, last line and value.
    std::vector<Fields> runs;
    auto it = data.values().begin();
    while (it != data.values().end()) {
        auto last = it;
        auto next = std::next(it);
        if (next != data.values().end() && next->second == it->second) {
            last = next;
            ++next;
        }
        Fields run;
        run.add(QStringLiteral("firstLine"), qint64(it->first));
        run.add(QStringLiteral("lastLine"), qint64(last->first));
        run.add(QStringLiteral("value"), double(it->second), shown(it->second));
        runs.push_back(std::move(run));
        it = next;
    }
    fields.add(QStringLiteral("runs"), std::move(runs));
    return fields;
}

} // namespace

const char* InspectCommand::usage() const
{
    return "Usage: dataprep inspect <file> [--json]\n"
           "\n"
           "Prints every field of a file the library reads. Understood files:\n"
           "  *.info   band info file\n"
           "  *.stp    strip file (a take with its images, positions and dark takes)\n"
           "  *.it     per-scan-line integration times\n"
           "  *.tdi    per-scan-line TDI stages\n"
           "  *.tm, tm*.dat\n"
           "           time-mark file: records, periods, first and last mark, GPS week\n"
           "           rollover, regularity and the irregular steps\n"
           "  *.ct     camera time of every scan line: lines, first and last, steps\n"
           "  *.ctg    GPS time of every scan line: lines, first and last, steps, line rate\n"
           "  *.sbet, sbet*.out, smrmsg*.out, *.sol\n"
           "           trajectory files: records, time range, GPS week rollover,\n"
           "           order, record interval, standard deviations\n"
           "\n"
           "Options:\n"
           "  --json   print one JSON object whose keys are the accessor names\n";
}

int InspectCommand::run(const QStringList& arguments)
{
    bool json = false;
    QString path;
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--json"))
            json = true;
        else if (argument.startsWith(QLatin1String("--")))
            throw UsageError{"unknown option " + argument.toStdString()};
        else if (path.isEmpty())
            path = argument;
        else
            throw UsageError{"more than one file given"};
    }
    if (path.isEmpty())
        throw UsageError{"no file given"};

    const QFileInfo file(path);
    if (!file.exists())
        throw std::runtime_error("File not found: " + path.toStdString());
    const QString suffix = file.suffix().toLower();
    Fields fields;
    if (suffix == QLatin1String("info"))
        fields = inspectInfoFile(path);
    else if (suffix == QLatin1String("stp"))
        fields = inspectStripFile(path);
    else if (suffix == QLatin1String("it"))
        fields = inspectScanLineData(path, true);
    else if (suffix == QLatin1String("tdi"))
        fields = inspectScanLineData(path, false);
    else if (isTrajectoryFile(path))
        fields = inspectTrajectoryFile(path);
    else if (isTimingFile(path))
        fields = inspectTimingFile(path);
    else
        throw std::runtime_error("Cannot inspect this kind of file (known: .info, .stp, .it, .tdi, .sbet, .sol, smrmsg, .tm, tm*.dat, .ct, .ctg): "
                                 + path.toStdString());

    if (json)
        std::printf("%s", QJsonDocument(fields.toJson()).toJson(QJsonDocument::Indented).constData());
    else
        fields.print();
    return 0;
}

} // namespace dataprep
