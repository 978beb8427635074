#include "EopCommand.h"

#include "Output.h"
#include "PreparationFields.h"
#include "PrepareCommand.h"
#include "TrajectoryFields.h"

#include <datamodel/session/PreparationReport.h>
#include <datamodel/session/SessionPreparation.h>

#include <cstdio>

namespace dataprep {

namespace {


} // namespace

QString EopCommand::synopsis() const
{
    return QStringLiteral("<session-dir> [--take NAME]... [--trajectory FILE] [--json]");
}

QString EopCommand::description() const
{
    return QStringLiteral(
        "Generates the exterior orientation (position and attitude of the camera)\n"
        "of every take from a GNSS/IMU trajectory, at the trajectory's record\n"
        "interval over the GPS time of the take's scan lines, in the local system\n"
        "(east, north, up) anchored where the take begins, and writes it as the\n"
        "take's EOP file, raw/<take>.eop. Missing CTG files are written first.\n"
        "\n"
        "Each take's EOPs come from the trajectory given with --trajectory (its\n"
        "name or path), else from a trajectory that covers every scan line of the\n"
        "take: an SBET file before a SOL file. Exit code 1 when a take gets none.");
}

std::vector<Argument> EopCommand::arguments() const
{
    return {sessionDirArgument()};
}

QList<QCommandLineOption> EopCommand::options() const
{
    return {takeOption(),
            trajectoryOption()};
}

int EopCommand::run(const Invocation& invocation)
{
    const QString directory = invocation.arguments.first();
    datamodel::SessionPreparation::Options options;
    options.validate = false;
    options.writeEop = true;
    options.computeQuality = false;
    setTrajectoryAsked(invocation, options);
    addTakesAsked(invocation, options);
    const datamodel::PreparationReport report = prepareSession(directory, options, invocation.json);
    if (invocation.json) {
        const Fields payload = takesPayload(report);
        printJson(name(), directory, payload, report.messages);
    } else {
        std::printf("Session      %s\n", report.sessionDirectory.empty() ? report.input.c_str()
                                                                        : report.sessionDirectory.c_str());
        for (const datamodel::TakePreparation& take : report.takes) {
            if (take.eop)
                std::printf("  %-8s %s: %d samples every %s from %s\n", take.name.c_str(), take.eop->file.c_str(),
                            take.eop->samples, qPrintable(intervalText(take.eop->intervalSec)),
                            take.eop->trajectory.c_str());
            else
                std::printf("  %-8s no EOPs\n", take.name.c_str());
        }
        printMessages(report.messages);
    }
    return report.hasErrors() ? 1 : 0;
}

} // namespace dataprep
