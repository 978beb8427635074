#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep trajectory <file> --at <gps-seconds>... [--json]`: prints the
/// records of a SOL or SBET trajectory interpolated at GPS times.
class TrajectoryCommand final : public Command {
public:
    const char* name() const override { return "trajectory"; }
    const char* summary() const override { return "print trajectory records interpolated at GPS times"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override;
    QList<QCommandLineOption> options() const override;
    int run(const Invocation& invocation) override;
};

} // namespace dataprep
