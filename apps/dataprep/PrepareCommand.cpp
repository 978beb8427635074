#include "PrepareCommand.h"

#include "Fields.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TmFile.h>
#include <datamodel/trajectory/ImuTrajectory.h>

#include <platform/util/TerminalProgress.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>
#include <exception>
#include <memory>
#include <vector>

namespace dataprep {

namespace {

struct TrajectoryInfo {
    std::string name;
    std::unique_ptr<datamodel::ImuTrajectory> trajectory;
    std::string error;
};

std::string reason(const std::exception& error)
{
    std::string text = error.what();
    try {
        std::rethrow_if_nested(error);
    } catch (const std::exception& inner) {
        text += ": " + reason(inner);
    } catch (...) {
    }
    return text;
}

} // namespace

const char* PrepareCommand::usage() const
{
    return "Usage: dataprep prepare <session-dir> [--json]\n"
           "\n"
           "Prepares a recording session for triangulation:\n"
           "  - finds its takes (strip files, flight data or band .info files), bands,\n"
           "    time-mark file and GNSS/IMU trajectories;\n"
           "  - writes every missing CTG file (the GPS time of every scan line);\n"
           "  - reports each take's GPS time range and which trajectories cover it.\n"
           "\n"
           "Exit code 1 when something needed is missing: no takes, no time-mark file,\n"
           "a CTG file that cannot be written, or a take that no trajectory covers.\n"
           "\n"
           "Options:\n"
           "  --json   print the report as JSON\n";
}

int PrepareCommand::run(const QStringList& arguments)
{
    QString directory;
    bool json = false;
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--json"))
            json = true;
        else if (argument.startsWith(QLatin1String("--")))
            throw UsageError{"unknown option " + argument.toStdString()};
        else if (directory.isEmpty())
            directory = argument;
        else
            throw UsageError{"more than one directory given"};
    }
    if (directory.isEmpty())
        throw UsageError{"no session directory given"};
    return prepareSession(directory, json);
}

int prepareSession(const QString& directory, bool json)
{
    datamodel::RecordingSession session(directory.toStdString());
    std::vector<std::string> problems;
    util::TerminalProgress progress;

    const std::vector<datamodel::Take*> takes = session.takes();
    if (takes.empty())
        problems.push_back("No takes in " + session.directory());

    Fields report;
    report.add(QStringLiteral("session"), session.directory());
    report.add(QStringLiteral("name"), session.name());
    try {
        const datamodel::Sensor& sensor = session.sensor();
        Fields camera;
        camera.add(QStringLiteral("id"), sensor.id());
        camera.add(QStringLiteral("type"), sensor.type());
        camera.add(QStringLiteral("calibrationVersion"), sensor.calibrationVersion());
        camera.add(QStringLiteral("cameraFile"), sensor.cameraFile());
        report.add(QStringLiteral("sensor"), std::move(camera));
    } catch (const std::exception& e) {
        problems.push_back(reason(e));
    }

    // The time-mark file converts camera times to GPS times.
    bool haveMarks = false;
    try {
        const datamodel::TmFile& marks = session.tmFile();
        Fields tm;
        tm.add(QStringLiteral("file"), marks.name());
        tm.add(QStringLiteral("records"), marks.numLoadedSets());
        tm.add(QStringLiteral("gpsRollover"), marks.hasGpsRollover());
        report.add(QStringLiteral("timeMarks"), std::move(tm));
        haveMarks = true;
    } catch (const std::exception& e) {
        problems.push_back(reason(e));
    }

    // Trajectories, opened once for the coverage checks.
    std::vector<TrajectoryInfo> trajectories;
    try {
        for (const auto* id : session.imuTrajectories()) {
            TrajectoryInfo info;
            info.name = id->name();
            try {
                info.trajectory = session.createImuTrajectory(*id);
            } catch (const std::exception& e) {
                info.error = reason(e);
            }
            trajectories.push_back(std::move(info));
        }
    } catch (const std::exception& e) {
        problems.push_back(reason(e));
    }
    std::vector<Fields> trajectoryFields;
    for (const TrajectoryInfo& info : trajectories) {
        Fields item;
        item.add(QStringLiteral("file"), info.name);
        if (info.trajectory) {
            item.add(QStringLiteral("records"), info.trajectory->numSets());
            item.add(QStringLiteral("frequency"), info.trajectory->frequency(),
                     QString::number(info.trajectory->frequency(), 'g', 6) + QStringLiteral(" s"));
            item.add(QStringLiteral("hasStdDevs"), info.trajectory->hasStdDevs());
        } else {
            item.add(QStringLiteral("error"), info.error);
        }
        trajectoryFields.push_back(std::move(item));
    }
    if (trajectories.empty())
        problems.push_back("Cannot find any IMU trajectories (SBET or SOL files).");
    report.add(QStringLiteral("trajectories"), std::move(trajectoryFields));

    // CTG files of every band, then each take's time range and coverage.
    std::size_t bands = 0;
    for (const datamodel::Take* take : takes)
        bands += take->imagesL0().size();
    int written = 0;
    int present = 0;
    std::vector<Fields> takeFields;
    {
        util::ProgressTask task(&progress, "Writing CTG files", 0, static_cast<long long>(bands));
        long long done = 0;
        for (datamodel::Take* take : takes) {
            Fields item;
            item.add(QStringLiteral("name"), take->name());
            item.add(QStringLiteral("lineNumber"), take->lineNumber() == datamodel::Take::sUnsetLineNumber
                                                       ? QJsonValue()
                                                       : QJsonValue(qint64(take->lineNumber())));
            QJsonArray bandNames;
            for (const std::string& band : take->availableBands())
                bandNames.append(QString::fromStdString(band));
            item.add(QStringLiteral("bands"), bandNames,
                     QString::fromStdString(std::to_string(bandNames.size())) + QStringLiteral(" bands"));
            QJsonArray darkNames;
            for (const datamodel::Take* dark : take->darkTakes())
                darkNames.append(QString::fromStdString(dark->name()));
            item.add(QStringLiteral("darkTakes"), darkNames,
                     darkNames.isEmpty() ? QStringLiteral("-") : darkNames.first().toString());

            for (datamodel::L0Image* image : take->imagesL0()) {
                if (haveMarks) {
                    try {
                        datamodel::CameraTime& times = image->cameraTime();
                        if (times.ctgFileCreated()) {
                            ++present;
                        } else {
                            times.createFromCtTmFiles();
                            ++written;
                        }
                    } catch (const std::exception& e) {
                        problems.push_back("CTG file of " + take->name() + " " + image->bandName() + ": " + reason(e));
                    }
                    image->uncache(); // one band's times in memory at a time
                }
                task.report(++done);
            }

            double minSec = 0.0;
            double maxSec = 0.0;
            try {
                take->minMaxGpsTimes(minSec, maxSec);
                item.add(QStringLiteral("gpsStart"), minSec, QString::number(minSec, 'f', 6) + QStringLiteral(" s"));
                item.add(QStringLiteral("gpsEnd"), maxSec, QString::number(maxSec, 'f', 6) + QStringLiteral(" s"));
                QJsonArray covering;
                for (const TrajectoryInfo& info : trajectories) {
                    if (info.trajectory && info.trajectory->containsGpsTime(datamodel::seconds(minSec))
                        && info.trajectory->containsGpsTime(datamodel::seconds(maxSec)))
                        covering.append(QString::fromStdString(info.name));
                }
                QStringList coveringText;
                for (const auto& value : covering)
                    coveringText << value.toString();
                item.add(QStringLiteral("coveredBy"), covering,
                         coveringText.isEmpty() ? QStringLiteral("(no trajectory)") : coveringText.join(QStringLiteral(", ")));
                if (covering.isEmpty() && !trajectories.empty())
                    problems.push_back("No trajectory covers take " + take->name());
            } catch (const std::exception& e) {
                problems.push_back(take->name() + ": " + reason(e));
            }
            takeFields.push_back(std::move(item));
            for (datamodel::L0Image* image : take->imagesL0())
                image->uncache();
        }
    }
    Fields ctg;
    ctg.add(QStringLiteral("written"), written);
    ctg.add(QStringLiteral("present"), present);
    report.add(QStringLiteral("ctgFiles"), std::move(ctg));
    report.add(QStringLiteral("takes"), std::move(takeFields));
    QJsonArray problemList;
    for (const std::string& problem : problems)
        problemList.append(QString::fromStdString(problem));
    report.add(QStringLiteral("problems"), problemList,
               problems.empty() ? QStringLiteral("none") : QString::number(problems.size()));

    if (json)
        std::printf("%s", QJsonDocument(report.toJson()).toJson(QJsonDocument::Indented).constData());
    else
        report.print();
    for (const std::string& problem : problems)
        std::fprintf(stderr, "error: %s\n", problem.c_str());
    return problems.empty() ? 0 : 1;
}

} // namespace dataprep
