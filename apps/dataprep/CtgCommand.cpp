#include "CtgCommand.h"

#include "Output.h"
#include "PreparationFields.h"
#include "PrepareCommand.h"

#include <cstdio>
#include <optional>
#include <string>

namespace dataprep {

namespace {

const QString sTakeOption = QStringLiteral("take");

void printBands(const datamodel::PreparationReport& report)
{
    using datamodel::CtgStatus;
    std::printf("Session     %s\n",
                report.sessionDirectory.empty() ? report.input.c_str() : report.sessionDirectory.c_str());
    if (report.timeMarks)
        std::printf("Time marks  %s (%d marks)\n\n", report.timeMarks->file.c_str(), report.timeMarks->records);
    else
        std::printf("Time marks  -\n\n");
    std::printf("%-8s %-10s %8s  %-11s %s\n", "Take", "Band", "Lines", "CTG", "File");
    for (const datamodel::TakePreparation& take : report.takes) {
        for (const datamodel::BandPreparation& band : take.bands) {
            const std::string lines = band.lines ? std::to_string(*band.lines) : "-";
            std::printf("%-8s %-10s %8s  %-11s %s\n", take.name.c_str(), band.band.c_str(), lines.c_str(),
                        datamodel::toString(band.ctg), band.ctgFile.c_str());
        }
    }
    const std::size_t written = report.ctgCount(CtgStatus::Written);
    std::printf("\nWrote %zu CTG file%s; %zu already present; %zu failed.\n", written, written == 1 ? "" : "s",
                report.ctgCount(CtgStatus::Present), report.ctgCount(CtgStatus::Failed));
    printMessages(report.messages);
}

} // namespace

QString CtgCommand::synopsis() const
{
    return QStringLiteral("<session-dir> [--take NAME]... [--json]");
}

QString CtgCommand::description() const
{
    return QStringLiteral(
        "Writes the CTG file (raw/<band>.ctg: the GPS time of every scan line) of\n"
        "every band of the session that has none. Each band's camera times\n"
        "(raw/<band>.ct) are converted to GPS time through the session's time-mark\n"
        "file (gps-imu/<id>/extract/tm*.dat). CTG files that exist are checked and\n"
        "left as they are; a file is written whole or not at all. Trajectories are\n"
        "not looked at (dataprep prepare does that too).\n"
        "\n"
        "Exit code 1 when a band's CTG file could not be written or the session has\n"
        "errors (no takes, no time-mark file, a --take that is not a take of it).");
}

std::vector<Argument> CtgCommand::arguments() const
{
    return {{QStringLiteral("session-dir"), QStringLiteral("The session folder (holding raw/, mm/ and gps-imu/).")}};
}

QList<QCommandLineOption> CtgCommand::options() const
{
    return {QCommandLineOption(sTakeOption, QStringLiteral("Only the bands of this take (repeatable)."),
                               QStringLiteral("NAME"))};
}

int CtgCommand::run(const Invocation& invocation)
{
    const QString directory = invocation.arguments.first();
    datamodel::SessionPreparation::Options options;
    options.writeCtg = true;
    options.checkCoverage = false;
    options.validate = false;
    options.writeEop = false;
    for (const QString& take : invocation.parser.values(sTakeOption))
        options.takes.push_back(take.toStdString());
    const datamodel::PreparationReport report = prepareSession(directory, options, invocation.json);

    if (invocation.json) {
        std::vector<Fields> bands;
        for (const datamodel::TakePreparation& take : report.takes)
            for (const datamodel::BandPreparation& band : take.bands)
                bands.push_back(bandFields(take.name, band));
        Fields payload;
        payload.add(QStringLiteral("sessionDirectory"), textOrNull(report.sessionDirectory));
        payload.add(QStringLiteral("sessionName"), textOrNull(report.sessionName));
        payload.add(QStringLiteral("timeMarks"), QString(),
                    report.timeMarks ? std::optional<Fields>(timeMarksFields(*report.timeMarks)) : std::nullopt);
        payload.add(QStringLiteral("bands"), QString(), std::move(bands));
        payload.add(QStringLiteral("ctgFiles"), QString(), ctgCountFields(report));
        printJson(name(), directory, payload, report.messages);
    } else {
        printBands(report);
    }
    return report.hasErrors() ? 1 : 0;
}

} // namespace dataprep
