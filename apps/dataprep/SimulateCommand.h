#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep simulate <session-dir> [options] [--json]`: writes a simulated
/// flight (the flight simulator's engine) into a session directory.
class SimulateCommand final : public Command {
public:
    const char* name() const override { return "simulate"; }
    const char* summary() const override { return "write a simulated flight into a session directory"; }
    const char* usage() const override;
    int run(const QStringList& arguments) override;
};

} // namespace dataprep
