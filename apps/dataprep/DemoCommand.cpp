#include "DemoCommand.h"

#include "PrepareCommand.h"

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <platform/util/TerminalProgress.h>

#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <stdexcept>

namespace dataprep {

const char* DemoCommand::usage() const
{
    return "Usage: dataprep demo [--keep <dir>] [--json]\n"
           "\n"
           "Simulates the embedded default session, a small flight (three flight lines\n"
           "of twelve bands, a dark take, the trajectory and time marks; the simulator's\n"
           "\"small\" preset with seed 1), into a temporary folder, and prepares it as\n"
           "`dataprep prepare` does: finds its takes, time-mark file and trajectories,\n"
           "writes the CTG files and reports which trajectories cover each take. The\n"
           "folder is removed afterwards unless --keep names one (which must not exist\n"
           "or be empty). `dataprep simulate` writes other flights.\n"
           "\n"
           "Options:\n"
           "  --keep <dir>   simulate into <dir> and leave the session there\n"
           "  --json         print the summary as JSON\n";
}

int DemoCommand::run(const QStringList& arguments)
{
    QString keep;
    bool json = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == QLatin1String("--keep")) {
            if (i + 1 >= arguments.size())
                throw UsageError{"--keep needs a directory"};
            keep = arguments[++i];
        } else if (arguments[i] == QLatin1String("--json")) {
            json = true;
        } else {
            throw UsageError{"unknown argument " + arguments[i].toStdString()};
        }
    }

    QTemporaryDir temporary(QDir::tempPath() + QStringLiteral("/dataprep-demo-XXXXXX"));
    if (keep.isEmpty() && !temporary.isValid())
        throw std::runtime_error("Cannot create a temporary folder: " + temporary.errorString().toStdString());
    const QString directory = keep.isEmpty() ? temporary.path() : QDir(keep).absolutePath();

    util::TerminalProgress progress;
    flightsim::SimulationConfig config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
    config.seed = 1;
    const flightsim::SimulationReport report = flightsim::FlightSimulator(config).run(directory, &progress);
    if (!json)
        std::printf("%s\n", qPrintable(report.toText()));
    return prepareSession(directory, json);
}

} // namespace dataprep
