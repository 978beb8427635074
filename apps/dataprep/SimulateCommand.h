#pragma once

#include "Command.h"
#include "Fields.h"

namespace flightsim {
struct SimulationReport;
}

namespace dataprep {

/// `dataprep simulate <session-dir> [options] [--json]`: writes a simulated
/// flight (the flight simulator's engine) into a session directory.
class SimulateCommand final : public Command {
public:
    const char* name() const override { return "simulate"; }
    const char* summary() const override { return "write a simulated flight into a session directory"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override;
    QList<QCommandLineOption> options() const override;
    int run(const Invocation& invocation) override;
};

/// What a simulation wrote (the `simulation` object of simulate and demo).
Fields simulationFields(const flightsim::SimulationReport& report);

} // namespace dataprep
