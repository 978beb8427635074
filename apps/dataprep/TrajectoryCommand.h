#pragma once

#include "Command.h"
#include "Fields.h"

#include <QString>

namespace dataprep {

/// `dataprep trajectory <file> --at <gps-seconds>... [--json]`: prints the
/// records of a SOL or SBET trajectory interpolated at GPS times.
class TrajectoryCommand final : public Command {
public:
    const char* name() const override { return "trajectory"; }
    const char* summary() const override { return "print trajectory records interpolated at GPS times"; }
    const char* usage() const override;
    int run(const QStringList& arguments) override;
};

/// Whether `inspect` reads `path` as a trajectory file: *.sbet, *.out whose
/// name holds "sbet", *.sol, and smrmsg accuracy files.
bool isTrajectoryFile(const QString& path);
/// The fields `inspect` prints for a trajectory file: record count, time
/// range, rollover, ordering, record interval, standard deviations, and the
/// first and last record.
Fields inspectTrajectoryFile(const QString& path);

} // namespace dataprep
