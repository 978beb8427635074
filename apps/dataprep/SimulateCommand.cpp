#include "SimulateCommand.h"

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationOptions.h>

#include <platform/util/TerminalProgress.h>

#include <QJsonDocument>

#include <cstdio>
#include <string>

namespace dataprep {

const char* SimulateCommand::usage() const
{
    static const std::string text =
        ("Usage: dataprep simulate <session-dir> [options] [--json]\n"
         "\n"
         "Simulates a flight of the push-broom camera over a block of parallel lines\n"
         "and writes its recording session into <session-dir>, which must not exist or\n"
         "be empty: band .info, CT, integration-time, TDI and pixel files, the time-mark\n"
         "file, the SBET, smrmsg and SOL trajectories, the flight data and camera files,\n"
         "a DEM, and truth.json with the true values. The same seed gives the same\n"
         "bytes; see docs/flightsim.md.\n"
         "\n"
         "Options:\n"
         "  --json                     print the summary as JSON\n")
        + flightsim::SimulationOptions::help().toStdString();
    return text.c_str();
}

int SimulateCommand::run(const QStringList& arguments)
{
    QStringList rest = arguments;
    const bool json = rest.removeAll(QStringLiteral("--json")) > 0;
    flightsim::SimulationOptions::Parsed parsed;
    try {
        parsed = flightsim::SimulationOptions::parse(rest);
        parsed.config.validate();
    } catch (const flightsim::ConfigError& e) {
        throw UsageError{e.what()};
    }
    util::TerminalProgress progress;
    flightsim::SimulationReport report;
    try {
        report = flightsim::FlightSimulator(parsed.config).run(parsed.directory, &progress);
    } catch (const flightsim::ConfigError& e) {
        // Parameters that fit together only when the flight is planned.
        throw UsageError{e.what()};
    }
    if (json)
        std::printf("%s", QJsonDocument(report.toJson()).toJson(QJsonDocument::Indented).constData());
    else
        std::printf("%s", qPrintable(report.toText()));
    return 0;
}

} // namespace dataprep
