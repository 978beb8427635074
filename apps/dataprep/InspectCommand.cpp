#include "InspectCommand.h"

#include <datamodel/model/InfoFile.h>

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <cstdio>
#include <stdexcept>

namespace dataprep {

namespace {

QJsonValue dateValue(const QDateTime& time)
{
    return time.isNull() ? QJsonValue() : QJsonValue(time.toUTC().toString(Qt::ISODate));
}

QJsonObject pointValue(const geo::XYPoint& point)
{
    return QJsonObject{{QStringLiteral("longitude"), point.x}, {QStringLiteral("latitude"), point.y}};
}

QJsonObject infoFileJson(const datamodel::InfoFile& info)
{
    auto text = [](const std::string& s) { return QJsonValue(QString::fromStdString(s)); };
    return QJsonObject{
        {QStringLiteral("infoFileName"), text(info.infoFileName())},
        {QStringLiteral("pixelFilename"), text(info.pixelFilename())},
        {QStringLiteral("ctFileName"), text(info.ctFileName())},
        {QStringLiteral("sensorType"), text(info.sensorType())},
        {QStringLiteral("sensorId"), text(info.sensorId())},
        {QStringLiteral("bandId"), text(info.bandId())},
        {QStringLiteral("stripName"), text(info.stripName())},
        {QStringLiteral("startPos"), pointValue(info.startPos())},
        {QStringLiteral("stopPos"), pointValue(info.stopPos())},
        {QStringLiteral("centerPoint"), pointValue(info.centerPoint())},
        {QStringLiteral("meanFlyingHeight"), double(info.meanFlyingHeight())},
        {QStringLiteral("flightStart"), dateValue(info.flightStart())},
        {QStringLiteral("lineStart"), dateValue(info.lineStart())},
        {QStringLiteral("lineStop"), dateValue(info.lineStop())},
        {QStringLiteral("integrationTime"), info.integrationTime().value()},
        {QStringLiteral("hasIntegrationTimeSet"), info.hasIntegrationTimeSet()},
        {QStringLiteral("lineNumber"), info.lineNumber()},
        {QStringLiteral("lineLabel"), text(info.lineLabel())},
    };
}

std::string dateText(const QDateTime& time)
{
    return time.isNull() ? std::string("(none)") : time.toUTC().toString(Qt::ISODate).toStdString();
}

void printInfoFile(const datamodel::InfoFile& info)
{
    auto row = [](const char* key, const std::string& value) { std::printf("%-22s %s\n", key, value.c_str()); };
    auto point = [](const geo::XYPoint& p) {
        char buffer[96];
        std::snprintf(buffer, sizeof buffer, "lon %.8f  lat %.8f", p.x, p.y);
        return std::string(buffer);
    };
    row("infoFileName", info.infoFileName());
    row("pixelFilename", info.pixelFilename());
    row("ctFileName", info.ctFileName());
    row("sensorType", info.sensorType());
    row("sensorId", info.sensorId());
    row("bandId", info.bandId());
    row("stripName", info.stripName());
    row("startPos", point(info.startPos()));
    row("stopPos", point(info.stopPos()));
    row("centerPoint", point(info.centerPoint()));
    row("meanFlyingHeight", std::to_string(info.meanFlyingHeight()) + " m");
    row("flightStart", dateText(info.flightStart()));
    row("lineStart", dateText(info.lineStart()));
    row("lineStop", dateText(info.lineStop()));
    char intTime[64];
    if (info.hasIntegrationTimeSet())
        std::snprintf(intTime, sizeof intTime, "%.1f ms", info.integrationTime().value() * 1000.0);
    else
        std::snprintf(intTime, sizeof intTime, "(not set)");
    row("integrationTime", intTime);
    row("lineNumber", std::to_string(info.lineNumber()));
    row("lineLabel", info.lineLabel());
}

} // namespace

const char* InspectCommand::usage() const
{
    return "Usage: dataprep inspect <file> [--json]\n"
           "\n"
           "Prints every field of a file the library reads. Understood files:\n"
           "  *.info   band info file\n"
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
    if (file.suffix().compare(QLatin1String("info"), Qt::CaseInsensitive) != 0)
        throw std::runtime_error("Cannot inspect this kind of file (known: .info): " + path.toStdString());

    const datamodel::InfoFile info(path.toStdString(), datamodel::InfoFile::STRIPNAMEREGEX);
    if (json)
        std::printf("%s", QJsonDocument(infoFileJson(info)).toJson(QJsonDocument::Indented).constData());
    else
        printInfoFile(info);
    return 0;
}

} // namespace dataprep
