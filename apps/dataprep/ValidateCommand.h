#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep validate <session-dir> [--take NAME]... [--json]`: the checks of
/// a recording session without writing anything: the time-mark file, the
/// trajectories, and per take and band the pixel, CTG, info and
/// integration-time files, the camera times and the trajectory's coverage of
/// every scan line. Prints the findings grouped by take and band, errors
/// first; exit code 1 when there is an error.
class ValidateCommand final : public Command {
public:
    const char* name() const override { return "validate"; }
    const char* summary() const override { return "check a recording session and list what is wrong"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override;
    QList<QCommandLineOption> options() const override;
    int run(const Invocation& invocation) override;
};

} // namespace dataprep
