#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep demo [--keep <dir>] [--json]`: simulates a small flight (the
/// embedded default session) and prepares it as `dataprep prepare` does.
class DemoCommand final : public Command {
public:
    const char* name() const override { return "demo"; }
    const char* summary() const override { return "simulate a small flight and prepare it"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override { return {}; }
    QList<QCommandLineOption> options() const override;
    int run(const Invocation& invocation) override;
};

} // namespace dataprep
