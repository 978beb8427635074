#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep quality <session-dir> [--take NAME]... [--trajectory FILE]
/// [--dem FILE] [--terrain-height M] [--json]`: the exterior orientation and
/// the trajectory quality of every take a trajectory covers, written as its
/// EOP and EOQ files, and judged (docs/quality-measures.md).
class QualityCommand final : public Command {
public:
    const char* name() const override { return "quality"; }
    const char* summary() const override { return "compute, write and judge the trajectory quality of every take"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override;
    QList<QCommandLineOption> options() const override;
    int run(const Invocation& invocation) override;
};

} // namespace dataprep
