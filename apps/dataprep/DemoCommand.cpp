#include "DemoCommand.h"

#include "Output.h"
#include "PrepareCommand.h"
#include "SimulateCommand.h"

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <platform/util/TerminalProgress.h>

#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <optional>
#include <stdexcept>

namespace dataprep {

namespace {

const QString sKeepOption = QStringLiteral("keep");

} // namespace

QString DemoCommand::synopsis() const
{
    return QStringLiteral("[--keep <dir>] [--json]");
}

QString DemoCommand::description() const
{
    return QStringLiteral(
        "Simulates the embedded default session, a small flight (three flight lines\n"
        "of twelve bands, a dark take, the trajectory and time marks; the simulator's\n"
        "\"small\" preset with seed 1), into a temporary folder, and prepares it as\n"
        "`dataprep prepare` does: finds its takes, time-mark file and trajectories,\n"
        "writes the CTG files and reports which trajectories cover each take. The\n"
        "folder is removed afterwards unless --keep names one (which must not exist\n"
        "or be empty). `dataprep simulate` writes other flights.\n"
        "\n"
        "The report is prepare's, with what the simulation wrote before it. Exit\n"
        "code 1 when the preparation finds errors.");
}

QList<QCommandLineOption> DemoCommand::options() const
{
    return {QCommandLineOption(sKeepOption, QStringLiteral("Simulate into <dir> and leave the session there."),
                               QStringLiteral("dir"))};
}

int DemoCommand::run(const Invocation& invocation)
{
    const QString keep = invocation.parser.value(sKeepOption);
    QTemporaryDir temporary(QDir::tempPath() + QStringLiteral("/dataprep-demo-XXXXXX"));
    if (keep.isEmpty() && !temporary.isValid())
        throw std::runtime_error("Cannot create a temporary folder: " + temporary.errorString().toStdString());
    const QString directory = keep.isEmpty() ? temporary.path() : QDir(keep).absolutePath();

    flightsim::SimulationConfig config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
    config.seed = 1;
    flightsim::SimulationReport simulation;
    {
        // A progress bar only for people at a terminal (TerminalProgress checks).
        std::optional<util::TerminalProgress> progress;
        if (!invocation.json)
            progress.emplace();
        simulation = flightsim::FlightSimulator(config).run(directory, progress ? &*progress : nullptr);
    }
    const datamodel::PreparationReport report = prepareSession(directory, {}, invocation.json);

    if (invocation.json) {
        Fields payload;
        payload.add(QStringLiteral("simulation"), QString(), simulationFields(simulation));
        payload.append(preparationFields(report));
        printJson(name(), directory, payload, report.messages);
    } else {
        std::printf("Simulated flight\n");
        simulationFields(simulation).print(stdout, 2);
        std::printf("\n");
        printPreparation(report);
    }
    return report.hasErrors() ? 1 : 0;
}

} // namespace dataprep
