#include "PrepareCommand.h"

#include "Output.h"
#include "PreparationFields.h"
#include "TrajectoryFields.h"

#include <platform/util/TerminalProgress.h>

#include <cstdio>
#include <optional>
#include <string>

namespace dataprep {

namespace {

const QString sTakeOption = QStringLiteral("take");
const QString sTrajectoryOption = QStringLiteral("trajectory");

std::string joined(const std::vector<std::string>& values, const char* none)
{
    if (values.empty())
        return none;
    std::string text;
    for (const std::string& value : values)
        text += (text.empty() ? "" : ", ") + value;
    return text;
}

std::string plural(std::size_t count, const char* singular, const char* pluralText)
{
    return std::to_string(count) + " " + (count == 1 ? singular : pluralText);
}

void printTrajectory(const datamodel::TrajectorySummary& trajectory, int width)
{
    if (!trajectory.opened) {
        std::printf("  %-*s  not opened: %s\n", width, trajectory.name.c_str(), trajectory.error.c_str());
        return;
    }
    std::printf("  %-*s  %d records every %s, GPS %s to %s, %s\n", width, trajectory.name.c_str(), trajectory.records,
                qPrintable(intervalText(trajectory.recordIntervalSec)), qPrintable(secondsText(trajectory.gpsStartSec, 4)),
                qPrintable(secondsText(trajectory.gpsEndSec, 4)),
                trajectory.hasStdDevs ? "with standard deviations" : "without standard deviations");
}

void printTake(const datamodel::TakePreparation& take)
{
    std::printf("  Take %s", take.name.c_str());
    if (take.lineNumber)
        std::printf(" (line %d)", *take.lineNumber);
    std::printf("\n    GPS start   %s\n    GPS end     %s\n    Covered by  %s\n    Dark takes  %s\n",
                qPrintable(secondsText(take.gpsStartSec)), qPrintable(secondsText(take.gpsEndSec)),
                joined(take.coveredBy, "(no trajectory)").c_str(), joined(take.darkTakes, "none").c_str());
    if (take.eop)
        std::printf("    EOP file    %s (%d samples every %s from %s)\n", take.eop->file.c_str(), take.eop->samples,
                    qPrintable(intervalText(take.eop->intervalSec)), take.eop->trajectory.c_str());
    std::printf("    %-10s %8s  %-11s %s\n", "Band", "Lines", "CTG", "CTG file");
    for (const datamodel::BandPreparation& band : take.bands) {
        const std::string lines = band.lines ? std::to_string(*band.lines) : "-";
        std::printf("    %-10s %8s  %-11s %s\n", band.band.c_str(), lines.c_str(), datamodel::toString(band.ctg),
                    band.ctgFile.c_str());
    }
}

void printProblemCount(const datamodel::PreparationReport& report)
{
    using Severity = datamodel::PreparationMessage::Severity;
    const std::size_t errors = report.messageCount(Severity::Error);
    const std::size_t warnings = report.messageCount(Severity::Warning);
    if (errors + warnings == 0)
        std::printf("Problems     none\n");
    else
        std::printf("Problems     %s, %s (on stderr)\n", plural(errors, "error", "errors").c_str(),
                    plural(warnings, "warning", "warnings").c_str());
}

} // namespace

Argument sessionDirArgument()
{
    return {QStringLiteral("session-dir"), QStringLiteral("The session folder (holding raw/, mm/ and gps-imu/).")};
}

QCommandLineOption takeOption()
{
    return QCommandLineOption(sTakeOption, QStringLiteral("Only this take (repeatable)."), QStringLiteral("NAME"));
}

QCommandLineOption trajectoryOption()
{
    return QCommandLineOption(sTrajectoryOption, QStringLiteral("The trajectory file to use (name or path)."),
                              QStringLiteral("FILE"));
}

void setTrajectoryAsked(const Invocation& invocation, datamodel::SessionPreparation::Options& options)
{
    options.eopTrajectory = invocation.parser.value(sTrajectoryOption).toStdString();
}

Fields takesPayload(const datamodel::PreparationReport& report)
{
    std::vector<Fields> takes;
    for (const datamodel::TakePreparation& take : report.takes)
        takes.push_back(takeFields(take, true));
    Fields payload;
    payload.add(QStringLiteral("sessionDirectory"), textOrNull(report.sessionDirectory));
    payload.add(QStringLiteral("sessionName"), textOrNull(report.sessionName));
    payload.add(QStringLiteral("takes"), QString(), std::move(takes));
    return payload;
}

void addTakesAsked(const Invocation& invocation, datamodel::SessionPreparation::Options& options)
{
    for (const QString& take : invocation.parser.values(sTakeOption))
        options.takes.push_back(take.toStdString());
}

datamodel::PreparationReport prepareSession(const QString& directory,
                                            const datamodel::SessionPreparation::Options& options, bool json)
{
    // A progress bar only for people at a terminal (TerminalProgress checks).
    std::optional<util::TerminalProgress> progress;
    if (!json)
        progress.emplace();
    return datamodel::SessionPreparation(options).run(directory.toStdString(), progress ? &*progress : nullptr);
}

Fields preparationFields(const datamodel::PreparationReport& report)
{
    std::vector<Fields> trajectories;
    for (const datamodel::TrajectorySummary& trajectory : report.trajectories)
        trajectories.push_back(trajectorySummaryFields(trajectory));
    std::vector<Fields> takes;
    for (const datamodel::TakePreparation& take : report.takes)
        takes.push_back(takeFields(take, true));
    Fields fields;
    fields.add(QStringLiteral("sessionDirectory"), textOrNull(report.sessionDirectory));
    fields.add(QStringLiteral("sessionName"), textOrNull(report.sessionName));
    fields.add(QStringLiteral("sensor"), QString(),
               report.sensor ? std::optional<Fields>(sensorFields(*report.sensor)) : std::nullopt);
    fields.add(QStringLiteral("timeMarks"), QString(),
               report.timeMarks ? std::optional<Fields>(timeMarksFields(*report.timeMarks)) : std::nullopt);
    fields.add(QStringLiteral("trajectories"), QString(), std::move(trajectories));
    fields.add(QStringLiteral("takes"), QString(), std::move(takes));
    fields.add(QStringLiteral("ctgFiles"), QString(), ctgCountFields(report));
    return fields;
}

void printPreparation(const datamodel::PreparationReport& report)
{
    using datamodel::CtgStatus;
    if (report.sessionDirectory.empty()) {
        // The folder could not be opened as a session: only the reasons.
        std::printf("Session      %s (not opened)\n", report.input.c_str());
        printProblemCount(report);
        printMessages(report.messages);
        return;
    }
    std::printf("Session      %s", report.sessionDirectory.c_str());
    if (!report.sessionName.empty())
        std::printf(" (%s)", report.sessionName.c_str());
    std::printf("\n");
    if (report.sensor)
        std::printf("Sensor       %s %s, calibration version %d\nCamera file  %s\n", report.sensor->type.c_str(),
                    report.sensor->id.c_str(), report.sensor->calibrationVersion, report.sensor->cameraFile.c_str());
    else
        std::printf("Sensor       -\n");
    if (report.timeMarks)
        std::printf("Time marks   %s (%d marks, %s)\n", report.timeMarks->file.c_str(), report.timeMarks->records,
                    report.timeMarks->gpsRollover ? "across a GPS week rollover" : "no GPS week rollover");
    else
        std::printf("Time marks   -\n");

    std::printf("\nTrajectories (%zu)\n", report.trajectories.size());
    int width = 0;
    for (const datamodel::TrajectorySummary& trajectory : report.trajectories)
        width = std::max(width, int(trajectory.name.size()));
    for (const datamodel::TrajectorySummary& trajectory : report.trajectories)
        printTrajectory(trajectory, width);

    std::printf("\nTakes (%zu)\n", report.takes.size());
    for (const datamodel::TakePreparation& take : report.takes)
        printTake(take);

    std::printf("\nCTG files    %zu written, %zu present, %zu failed, %zu not checked\n",
                report.ctgCount(CtgStatus::Written), report.ctgCount(CtgStatus::Present),
                report.ctgCount(CtgStatus::Failed), report.ctgCount(CtgStatus::NotChecked));
    printProblemCount(report);
    printMessages(report.messages);
}

QString PrepareCommand::synopsis() const
{
    return QStringLiteral("<session-dir> [--take NAME]... [--json]");
}

QString PrepareCommand::description() const
{
    return QStringLiteral(
        "Prepares a recording session for triangulation:\n"
        "  - finds its sensor, takes (strip files, flight data or band .info files),\n"
        "    bands, dark takes, time-mark file and GNSS/IMU trajectories;\n"
        "  - writes every missing CTG file (the GPS time of every scan line) and\n"
        "    checks those present;\n"
        "  - reports each take's GPS time range and the trajectories that cover it.\n"
        "\n"
        "Errors and warnings are printed on stderr (\"error: <subject>: <text>\"), or\n"
        "listed in \"messages\" with --json. Exit code 1 when there are errors: no\n"
        "takes, no time-mark file, a CTG file that cannot be written, a take that no\n"
        "trajectory covers, a --take that is not a take of the session.");
}

std::vector<Argument> PrepareCommand::arguments() const
{
    return {sessionDirArgument()};
}

QList<QCommandLineOption> PrepareCommand::options() const
{
    return {takeOption()};
}

int PrepareCommand::run(const Invocation& invocation)
{
    const QString directory = invocation.arguments.first();
    datamodel::SessionPreparation::Options options;
    addTakesAsked(invocation, options);
    const datamodel::PreparationReport report = prepareSession(directory, options, invocation.json);
    if (invocation.json)
        printJson(name(), directory, preparationFields(report), report.messages);
    else
        printPreparation(report);
    return report.hasErrors() ? 1 : 0;
}

} // namespace dataprep
