#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep demo [--keep <dir>] [--json]`: simulates a small flight (the
/// embedded default session) and runs the session checks on it.
class DemoCommand final : public Command {
public:
    const char* name() const override { return "demo"; }
    const char* summary() const override { return "simulate a small flight and prepare it"; }
    const char* usage() const override;
    int run(const QStringList& arguments) override;
};

} // namespace dataprep
