#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep prepare <session-dir> [--json]`: the data-preparation job. Opens
/// the session, lists its takes, bands, time-mark file and trajectories,
/// writes every missing CTG file, and reports each take's GPS time range and
/// which trajectories cover it.
class PrepareCommand final : public Command {
public:
    const char* name() const override { return "prepare"; }
    const char* summary() const override { return "prepare a recording session (CTG files, coverage)"; }
    const char* usage() const override;
    int run(const QStringList& arguments) override;
};

/// Runs the preparation on a session directory and prints its report;
/// returns the exit code (0 when everything needed is there).
int prepareSession(const QString& directory, bool json);

} // namespace dataprep
