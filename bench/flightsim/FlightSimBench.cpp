// Flight simulation throughput: whole sessions written to disk (bytes per
// second, the figure that matters for the realistic two-hour flight), and the
// trajectory simulation alone (records per second, no I/O).

#include <flightsim/FlightPlan.h>
#include <flightsim/FlightSimulator.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SimulatedTrajectory.h>
#include <flightsim/SimulationConfig.h>

#include <QDir>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

// A session of `takes` takes of 12 bands and 20 000 lines (25 s) each.
void BM_SimulateSession(benchmark::State& state)
{
    flightsim::SimulationConfig config =
        flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
    config.takes = int(state.range(0));
    config.linesPerTake = 20000;
    QTemporaryDir parent;
    long long bytes = 0;
    long long records = 0;
    int run = 0;
    for (auto _ : state) {
        const QString directory = parent.path() + QStringLiteral("/session%1").arg(run++);
        const flightsim::SimulationReport report = flightsim::FlightSimulator(config).run(directory);
        bytes += report.bytes;
        records += report.trajectoryRecords;
        state.PauseTiming();
        QDir(directory).removeRecursively();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(bytes);
    state.counters["trajectory_records"] = benchmark::Counter(double(records), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_SimulateSession)->Arg(2)->Arg(6)->Unit(benchmark::kMillisecond)->UseRealTime();

// The trajectory of a ten-minute flight at 200 Hz, in memory.
void BM_SimulateTrajectory(benchmark::State& state)
{
    flightsim::SimulationConfig config =
        flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
    config.durationSec = 600.0;
    const flightsim::FlightPlan plan(config);
    const flightsim::LocalPlane plane(config.centerLatDeg, config.centerLonDeg, config.lineAzimuthDeg);
    std::size_t records = 0;
    for (auto _ : state) {
        const flightsim::SimulatedTrajectory trajectory(config, plan, plane, nullptr);
        records += trajectory.size();
        benchmark::DoNotOptimize(trajectory.headingRad().back());
    }
    state.SetItemsProcessed((long long)records);
}
BENCHMARK(BM_SimulateTrajectory)->Unit(benchmark::kMillisecond);

} // namespace
