// flightsim: writes a simulated recording session (a push-broom camera
// flight with its trajectory, time marks and band files) whose truth is
// known, for tests, benchmarks and demonstrations.

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationOptions.h>

#include <platform/util/TerminalProgress.h>

#include <QCoreApplication>
#include <QJsonDocument>

#include <cstdio>
#include <exception>

namespace {

void printUsage(std::FILE* stream)
{
    std::fprintf(stream, "%s",
                 qPrintable(QStringLiteral(
                                "Usage: flightsim <session-dir> [options]\n"
                                "\n"
                                "Simulates a flight of a push-broom camera over a block of parallel lines and\n"
                                "writes its recording session into <session-dir> (which must not exist or be\n"
                                "empty): band .info, CT, integration-time, TDI and pixel files, the time-mark\n"
                                "file, the SBET, smrmsg and SOL trajectories, the flight-data and camera files,\n"
                                "a DEM and truth.json with the true values. The same seed gives the same bytes.\n"
                                "\n"
                                "Options:\n"
                                "  --json                     print the summary as JSON\n"
                                "  --quiet                    print nothing on success\n"
                                "  -h, --help                 show this help\n")
                            + flightsim::SimulationOptions::help()
                            + QStringLiteral("\nExit codes: 0 success, 1 failure, 2 wrong usage.\n")));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    if (arguments.contains(QLatin1String("-h")) || arguments.contains(QLatin1String("--help"))) {
        printUsage(stdout);
        return 0;
    }
    const bool json = arguments.removeAll(QStringLiteral("--json")) > 0;
    const bool quiet = arguments.removeAll(QStringLiteral("--quiet")) > 0;

    flightsim::SimulationOptions::Parsed parsed;
    try {
        parsed = flightsim::SimulationOptions::parse(arguments);
        parsed.config.validate();
    } catch (const flightsim::ConfigError& e) {
        std::fprintf(stderr, "flightsim: %s\n\n", e.what());
        printUsage(stderr);
        return 2;
    }
    try {
        util::TerminalProgress progress;
        const flightsim::SimulationReport report =
            flightsim::FlightSimulator(parsed.config).run(parsed.directory, quiet ? nullptr : &progress);
        if (json)
            std::printf("%s", QJsonDocument(report.toJson()).toJson(QJsonDocument::Indented).constData());
        else if (!quiet)
            std::printf("%s", qPrintable(report.toText()));
        return 0;
    } catch (const flightsim::ConfigError& e) {
        // Parameters that fit together only when the flight is planned.
        std::fprintf(stderr, "flightsim: %s\n", e.what());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "flightsim: %s\n", e.what());
        return 1;
    }
}
