#pragma once

#include "Command.h"
#include "Fields.h"

#include <datamodel/session/PreparationReport.h>
#include <datamodel/session/SessionPreparation.h>

namespace dataprep {

/// `dataprep prepare <session-dir> [--take NAME]... [--json]`: the
/// data-preparation job, a rendering of the library's session preparation
/// (SessionPreparation): the session's sensor, time-mark file,
/// trajectories, takes with their bands' CTG files, each take's GPS time
/// range and the trajectories that cover it, and every finding.
class PrepareCommand final : public Command {
public:
    const char* name() const override { return "prepare"; }
    const char* summary() const override { return "prepare a recording session (CTG files, coverage)"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override;
    QList<QCommandLineOption> options() const override;
    int run(const Invocation& invocation) override;
};

/// The session folder argument of the commands that prepare a session.
Argument sessionDirArgument();
/// --take NAME (repeatable), and the takes it names in `options`.
QCommandLineOption takeOption();
void addTakesAsked(const Invocation& invocation, datamodel::SessionPreparation::Options& options);
/// --trajectory FILE, and the trajectory it names in `options`.
QCommandLineOption trajectoryOption();
void setTrajectoryAsked(const Invocation& invocation, datamodel::SessionPreparation::Options& options);

/// Runs the session preparation on the folder `directory`, with a progress
/// bar for people at a terminal unless `json` (prepare, ctg and demo).
datamodel::PreparationReport prepareSession(const QString& directory,
                                            const datamodel::SessionPreparation::Options& options, bool json);
/// The JSON payload of the commands that report per take (eop, quality):
/// the session and its takes.
Fields takesPayload(const datamodel::PreparationReport& report);
/// The JSON payload of a preparation report (prepare and demo).
Fields preparationFields(const datamodel::PreparationReport& report);
/// The report as text for people on stdout, its errors and warnings on stderr.
void printPreparation(const datamodel::PreparationReport& report);

} // namespace dataprep
