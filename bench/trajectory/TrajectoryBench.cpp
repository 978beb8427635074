// GNSS/IMU trajectory reading on the simulator's two-hour flight at 200 Hz
// (1 440 001 SBET records, 196 MB, with its smrmsg file): opening and
// indexing, a million interpolated records at random times (and, for
// comparison, a million bare dependent reads at random places of the file),
// consecutive times at the scan-line rate, and the angular-rate check over
// one hour.
//
// The files are written once per run, by a child process (so that the
// simulation's memory does not count against the reader's), into a
// temporary folder that is removed at exit. Every benchmark reports the
// process's peak resident memory while it ran (`peakRssMB`, reset before
// each benchmark) split into private memory (`anonMB`) and pages of the
// mapped trajectory files (`fileMB`, page cache shared with the system).

#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/PosFile.h>

#include <flightsim/AccuracyModel.h>
#include <flightsim/FlightPlan.h>
#include <flightsim/GpsTime.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SessionLayout.h>
#include <flightsim/SimulatedTrajectory.h>
#include <flightsim/SimulationConfig.h>
#include <flightsim/TrajectoryWriter.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using datamodel::ImuRecord;
using datamodel::ImuTrajectory;
using datamodel::seconds;

struct FlightFiles {
    QTemporaryDir directory;
    std::string sbet;
    std::string sbetAlone; ///< the same file under a name without an accuracy file
    double fileMB = 0.0;
};

void writeTrajectory(const QString& root)
{
    const flightsim::SimulationConfig config =
        flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Realistic);
    const flightsim::FlightPlan plan(config);
    const flightsim::LocalPlane plane(config.centerLatDeg, config.centerLonDeg, config.lineAzimuthDeg);
    const flightsim::SimulatedTrajectory trajectory(config, plan, plane, nullptr);
    const flightsim::AccuracyModel accuracy(trajectory.timeSec(trajectory.size() - 1), 1.0 / config.accuracyRateHz,
                                            config.seed);
    const flightsim::SessionLayout layout(root, QStringLiteral("BENCH"));
    layout.create();
    flightsim::TrajectoryWriter(trajectory, accuracy, flightsim::GpsTime::fromUtc(config.startUtc), config.seed)
        .write(layout, trajectory.size(), false, nullptr);
    // Only the SBET and its accuracy file are read here.
    QFile::remove(layout.solPath());
}

const FlightFiles& flight()
{
    static FlightFiles* files = [] {
        auto* made = new FlightFiles;
        if (!made->directory.isValid())
            throw std::runtime_error("no temporary folder");
        const QString root = made->directory.path() + QStringLiteral("/session");
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            int code = 0;
            try {
                writeTrajectory(root);
            } catch (const std::exception& e) {
                std::fprintf(stderr, "cannot write the trajectory: %s\n", e.what());
                code = 1;
            }
            std::fflush(nullptr);
            _exit(code);
        }
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
            throw std::runtime_error("the trajectory was not written");
        made->sbet = flightsim::SessionLayout(root, QStringLiteral("BENCH")).sbetPath().toStdString();
        made->fileMB = double(QFileInfo(QString::fromStdString(made->sbet)).size()) / 1e6;
        made->sbetAlone = made->directory.path().toStdString() + "/sbet_alone.out";
        if (::link(made->sbet.c_str(), made->sbetAlone.c_str()) != 0)
            throw std::runtime_error("cannot link " + made->sbetAlone);
        // Removed at exit with the temporary folder.
        std::atexit([] { delete files; });
        return made;
    }();
    return *files;
}

/// Resets the peak resident memory of the process (Linux 4.0 and later).
void resetPeakMemory()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

void reportMemory(benchmark::State& state)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    auto megabytes = [&](const char* key) {
        const std::string prefix = std::string(key) + ":";
        if (line.rfind(prefix, 0) == 0)
            return std::strtod(line.c_str() + prefix.size(), nullptr) / 1024.0;
        return -1.0;
    };
    while (std::getline(status, line)) {
        if (double mb = megabytes("VmHWM"); mb >= 0.0)
            state.counters["peakRssMB"] = mb;
        if (double mb = megabytes("RssAnon"); mb >= 0.0)
            state.counters["anonMB"] = mb;
        if (double mb = megabytes("RssFile"); mb >= 0.0)
            state.counters["fileMB"] = mb;
    }
    state.counters["sbetMB"] = flight().fileMB;
}

void BM_OpenAndIndex(benchmark::State& state)
{
    const std::string& path = flight().sbet;
    resetPeakMemory();
    for (auto _ : state) {
        const ImuTrajectory trajectory(path);
        benchmark::DoNotOptimize(trajectory.numSets());
    }
    reportMemory(state);
}
BENCHMARK(BM_OpenAndIndex)->Unit(benchmark::kMicrosecond);

// A million records at random times; with the accuracy file (argument 1)
// every record read also interpolates its standard deviations.
void BM_RandomInterpolatedRecord(benchmark::State& state)
{
    const ImuTrajectory trajectory(state.range(0) ? flight().sbet : flight().sbetAlone);
    const datamodel::PosFile& reader = *trajectory.reader();
    const double start = reader.startTime().value();
    const double end = reader.endTime().value();
    constexpr std::size_t sLookups = 1000000;
    std::vector<double> times(sLookups);
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> uniform(start, end);
    for (double& t : times)
        t = uniform(random);
    resetPeakMemory();
    ImuRecord record;
    for (auto _ : state) {
        double sum = 0.0;
        for (double t : times) {
            trajectory.getPosRecord(seconds(t), record);
            sum += record.latitude;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * (long long)sLookups);
    // Seconds per lookup (shown with an SI prefix: "180n" is 180 ns).
    state.counters["perLookup"] = benchmark::Counter(double(state.iterations() * (long long)sLookups),
                                                     benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    reportMemory(state);
}
BENCHMARK(BM_RandomInterpolatedRecord)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

// The floor under a random lookup on this machine: one read of a record
// time at a random place of the mapped SBET file, each read waiting for the
// one before (as one lookup's miss waits for the work of the lookup before
// it). No index, no interpolation, no accuracy file.
void BM_DependentRandomRead(benchmark::State& state)
{
    QFile file(QString::fromStdString(flight().sbet));
    if (!file.open(QIODevice::ReadOnly)) {
        state.SkipWithError("cannot open the SBET file");
        return;
    }
    const qint64 size = file.size();
    const uchar* map = file.map(0, size);
    if (!map) {
        state.SkipWithError("cannot map the SBET file");
        return;
    }
    const long long records = size / 136;
    constexpr std::size_t sLookups = 1000000;
    std::vector<long long> indexes(sLookups);
    std::mt19937_64 random(5);
    std::uniform_int_distribution<long long> uniform(0, records - 1);
    for (long long& index : indexes)
        index = uniform(random);
    resetPeakMemory();
    for (auto _ : state) {
        double time = 0.0;
        for (long long index : indexes) {
            // Adds nothing, but makes the address wait for the previous read.
            index += time < 0.0 ? 1 : 0;
            std::memcpy(&time, map + index * 136, sizeof time);
        }
        benchmark::DoNotOptimize(time);
    }
    state.SetItemsProcessed(state.iterations() * (long long)sLookups);
    state.counters["perRead"] = benchmark::Counter(double(state.iterations() * (long long)sLookups),
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    reportMemory(state);
}
BENCHMARK(BM_DependentRandomRead)->Unit(benchmark::kMillisecond);

// EOP generation and coverage checks ask for consecutive times: here one
// record per scan line at 800 lines per second over ten minutes.
void BM_ConsecutiveInterpolatedRecords(benchmark::State& state)
{
    const ImuTrajectory trajectory(flight().sbet);
    const double start = trajectory.reader()->startTime().value() + 3000.0;
    constexpr int sLines = 480000;
    resetPeakMemory();
    ImuRecord record;
    for (auto _ : state) {
        double sum = 0.0;
        for (int line = 0; line < sLines; ++line) {
            trajectory.getPosRecord(seconds(start + line / 800.0), record);
            sum += record.heading;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * sLines);
    reportMemory(state);
}
BENCHMARK(BM_ConsecutiveInterpolatedRecords)->Unit(benchmark::kMillisecond);

void BM_AngularRateCheckOneHour(benchmark::State& state)
{
    const ImuTrajectory trajectory(flight().sbet);
    const double start = trajectory.reader()->startTime().value() + 1800.0;
    const double end = start + 3600.0;
    const long long records = std::llround(3600.0 / trajectory.frequency()) + 1;
    resetPeakMemory();
    for (auto _ : state)
        trajectory.checkAngularRates(seconds(start), seconds(end), 50.0);
    state.SetItemsProcessed(state.iterations() * records);
    reportMemory(state);
}
BENCHMARK(BM_AngularRateCheckOneHour)->Unit(benchmark::kMillisecond);

} // namespace
