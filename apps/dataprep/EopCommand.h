#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep eop <session-dir> [--take NAME]... [--trajectory FILE] [--json]`:
/// the exterior orientation of every take a trajectory covers, written as
/// its EOP file (raw/<take>.eop): the session preparation without its
/// checks, with the EOP stage. Says which trajectory each take's EOPs come
/// from.
class EopCommand final : public Command {
public:
    const char* name() const override { return "eop"; }
    const char* summary() const override { return "generate and write the EOP file of every take"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override;
    QList<QCommandLineOption> options() const override;
    int run(const Invocation& invocation) override;
};

} // namespace dataprep
