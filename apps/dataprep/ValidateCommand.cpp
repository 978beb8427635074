#include "ValidateCommand.h"

#include "Output.h"
#include "PrepareCommand.h"

#include <datamodel/session/PreparationReport.h>
#include <datamodel/session/SessionPreparation.h>

#include <cstdio>
#include <string>

namespace dataprep {

namespace {


std::string countText(std::size_t count, const char* singular, const char* plural)
{
    return std::to_string(count) + " " + (count == 1 ? singular : plural);
}

/// One finding under its take or band heading: the subject only where it
/// says more than the heading (a file).
void printFinding(const datamodel::PreparationMessage& message, const char* indent)
{
    const bool headed = !message.take.empty() && message.subject.rfind("take ", 0) == 0;
    const char* severity = message.severity == datamodel::PreparationMessage::Severity::Information
                               ? "note"
                               : datamodel::toString(message.severity);
    if (headed)
        std::printf("%s%s: %s\n", indent, severity, message.text.c_str());
    else
        std::printf("%s%s: %s: %s\n", indent, severity, message.subject.c_str(), message.text.c_str());
}

void printValidation(const datamodel::PreparationReport& report, const std::vector<datamodel::PreparationMessage>& grouped)
{
    using Severity = datamodel::PreparationMessage::Severity;
    if (report.sessionDirectory.empty())
        std::printf("Session      %s (not opened)\n", report.input.c_str());
    else if (report.sessionName.empty())
        std::printf("Session      %s\n", report.sessionDirectory.c_str());
    else
        std::printf("Session      %s (%s)\n", report.sessionDirectory.c_str(), report.sessionName.c_str());
    std::size_t bands = 0;
    for (const datamodel::TakePreparation& take : report.takes)
        bands += take.bands.size();
    std::printf("Checked      %s, %s\n", countText(report.takes.size(), "take", "takes").c_str(),
                countText(bands, "band", "bands").c_str());
    std::printf("Problems     %s, %s\n", countText(report.messageCount(Severity::Error), "error", "errors").c_str(),
                countText(report.messageCount(Severity::Warning), "warning", "warnings").c_str());

    const std::string none = "\x01"; // no heading printed yet
    std::string take = none;
    std::string band = none;
    for (const datamodel::PreparationMessage& message : grouped) {
        if (message.take != take) {
            take = message.take;
            band = none;
            if (take.empty())
                std::printf("\nSession\n");
            else
                std::printf("\nTake %s\n", take.c_str());
        }
        if (message.band != band) {
            band = message.band;
            if (!band.empty())
                std::printf("  Band %s\n", band.c_str());
        }
        printFinding(message, band.empty() ? "  " : "    ");
    }
}

} // namespace

QString ValidateCommand::synopsis() const
{
    return QStringLiteral("<session-dir> [--take NAME]... [--json]");
}

QString ValidateCommand::description() const
{
    return QStringLiteral(
        "Checks a recording session and writes nothing:\n"
        "  - the time-mark file: regular steps, rising camera times, marks off the\n"
        "    camera clock's course;\n"
        "  - the GNSS/IMU trajectories: accuracy data, week rollover, and the angular\n"
        "    rates over each take;\n"
        "  - per take and band: dark takes, calibration, start and stop positions,\n"
        "    pixel, CTG and info files, integration times, camera times that fall or\n"
        "    step unevenly, and scan lines outside the trajectory.\n"
        "Bands without a CTG file are checked as far as they can be: run `dataprep\n"
        "prepare` to write them.\n"
        "\n"
        "The findings are listed by take and band, errors first. Exit code 1 when\n"
        "there is an error; warnings and notes alone give 0.");
}

std::vector<Argument> ValidateCommand::arguments() const
{
    return {sessionDirArgument()};
}

QList<QCommandLineOption> ValidateCommand::options() const
{
    return {takeOption()};
}

int ValidateCommand::run(const Invocation& invocation)
{
    const QString directory = invocation.arguments.first();
    datamodel::SessionPreparation::Options options;
    options.writeCtg = false;
    options.writeEop = false;
    addTakesAsked(invocation, options);
    const datamodel::PreparationReport report = prepareSession(directory, options, invocation.json);
    const std::vector<datamodel::PreparationMessage> grouped = report.groupedMessages();
    if (invocation.json) {
        using Severity = datamodel::PreparationMessage::Severity;
        Fields payload;
        payload.add(QStringLiteral("sessionDirectory"), textOrNull(report.sessionDirectory));
        payload.add(QStringLiteral("sessionName"), textOrNull(report.sessionName));
        payload.add(QStringLiteral("takeCount"), qint64(report.takes.size()));
        payload.add(QStringLiteral("errorCount"), qint64(report.messageCount(Severity::Error)));
        payload.add(QStringLiteral("warningCount"), qint64(report.messageCount(Severity::Warning)));
        payload.add(QStringLiteral("informationCount"), qint64(report.messageCount(Severity::Information)));
        printJson(name(), directory, payload, grouped);
    } else {
        printValidation(report, grouped);
    }
    return report.hasErrors() ? 1 : 0;
}

} // namespace dataprep
