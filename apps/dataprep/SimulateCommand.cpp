#include "SimulateCommand.h"

#include "Output.h"

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationOptions.h>

#include <platform/util/TerminalProgress.h>

#include <QJsonArray>

#include <cstdio>
#include <optional>

namespace dataprep {

Fields simulationFields(const flightsim::SimulationReport& report)
{
    Fields phases;
    for (const auto& [phase, sec] : report.phaseSeconds)
        phases.add(phase, number(sec));
    Fields fields;
    fields.add(QStringLiteral("sessionDirectory"), QStringLiteral("Session folder"), report.directory);
    fields.add(QStringLiteral("sessionId"), QStringLiteral("Session"), report.sessionId);
    fields.add(QStringLiteral("startUtc"), QStringLiteral("Start (UTC)"), report.startUtc);
    fields.add(QStringLiteral("gpsWeek"), QStringLiteral("GPS week"), report.gpsWeek);
    fields.add(QStringLiteral("takeCount"), QStringLiteral("Takes"), report.takes);
    fields.add(QStringLiteral("darkTakeCount"), QStringLiteral("Dark takes"), report.darkTakes);
    fields.add(QStringLiteral("bandCount"), QStringLiteral("Bands"), report.bands);
    fields.add(QStringLiteral("linesPerTake"), QStringLiteral("Lines per band and take"), report.linesPerTake);
    fields.add(QStringLiteral("flightSec"), QStringLiteral("Flight"), number(report.flightSec),
               QString::number(report.flightSec, 'f', 1) + QStringLiteral(" s"));
    fields.add(QStringLiteral("trajectoryRecords"), QStringLiteral("Trajectory records"), report.trajectoryRecords);
    fields.add(QStringLiteral("accuracyRecords"), QStringLiteral("Accuracy records"), report.accuracyRecords);
    fields.add(QStringLiteral("timeMarkRecords"), QStringLiteral("Time marks"), report.timeMarks);
    fields.add(QStringLiteral("faults"), QStringLiteral("Faults"), QJsonArray::fromStringList(report.faults),
               report.faults.isEmpty() ? QStringLiteral("none") : report.faults.join(QStringLiteral(", ")));
    fields.add(QStringLiteral("fileCount"), QStringLiteral("Files written"), report.files);
    fields.add(QStringLiteral("sizeBytes"), QStringLiteral("Size"), report.bytes,
               QString::number(double(report.bytes) / 1e6, 'f', 1) + QStringLiteral(" MB"));
    fields.add(QStringLiteral("runSec"), QStringLiteral("Run time"), number(report.seconds),
               QString::number(report.seconds, 'f', 2) + QStringLiteral(" s"));
    fields.add(QStringLiteral("phaseSec"), QString(), std::move(phases));
    return fields;
}

QString SimulateCommand::synopsis() const
{
    return QStringLiteral("<session-dir> [options] [--json]");
}

QString SimulateCommand::description() const
{
    return QStringLiteral(
               "Simulates a flight of the push-broom camera over a block of parallel lines\n"
               "and writes its recording session into <session-dir>, which must not exist or\n"
               "be empty: band .info, CT, integration-time, TDI and pixel files, the time-mark\n"
               "file, the SBET, smrmsg and SOL trajectories, the flight data and camera files,\n"
               "a DEM, and truth.json with the true values. The same seed gives the same\n"
               "bytes; see docs/flightsim.md. A preset is applied first; the other options\n"
               "override its values.\n\n")
        + flightsim::SimulationOptions::faultHelp();
}

std::vector<Argument> SimulateCommand::arguments() const
{
    return {{QStringLiteral("session-dir"), QStringLiteral("The folder to write the session into (new or empty).")}};
}

QList<QCommandLineOption> SimulateCommand::options() const
{
    return flightsim::SimulationOptions::commandLineOptions();
}

int SimulateCommand::run(const Invocation& invocation)
{
    const QString directory = invocation.arguments.first();
    flightsim::SimulationConfig config;
    try {
        config = flightsim::SimulationOptions::config(invocation.parser);
        config.validate();
    } catch (const flightsim::ConfigError& e) {
        throw UsageError{e.what()};
    }
    // A progress bar only for people at a terminal (TerminalProgress checks).
    std::optional<util::TerminalProgress> progress;
    if (!invocation.json)
        progress.emplace();
    flightsim::SimulationReport report;
    try {
        report = flightsim::FlightSimulator(config).run(directory, progress ? &*progress : nullptr);
    } catch (const flightsim::ConfigError& e) {
        // Parameters that fit together only when the flight is planned.
        throw UsageError{e.what()};
    }
    progress.reset();
    const Fields fields = simulationFields(report);
    if (invocation.json) {
        Fields payload;
        payload.add(QStringLiteral("simulation"), QString(), fields);
        printJson(name(), directory, payload, {});
    } else {
        std::printf("Simulated flight\n");
        fields.print(stdout, 2);
    }
    return 0;
}

} // namespace dataprep
