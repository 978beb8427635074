// Preparing a session against the floor: the library's session preparation
// (open the session, check or write every band's CTG file, the coverage of
// every take) and the least a C program can do to write the same CTG files
// with the same durability (bench/prepare/ctg_floor.c), on the same
// simulated flight, CTG files absent, page cache warm. At the end the ratios
// of wall and CPU time (user + system) are printed, and the CPU time per scan
// line of the CTG stage for takes of 30 000 to 120 000 lines (eight takes of
// twelve bands each).
//
// The flight is simulated into a temporary folder first (the realistic
// preset: 20 takes of 12 bands of 60 000 lines), or taken from
// DATAMODEL_BENCH_FLIGHT when that names a session folder.

#include "ctg_floor.h"

#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/session/SessionPreparation.h>
#include <datamodel/trajectory/EopTrajectory.h>
#include <datamodel/trajectory/ImuTrajectory.h>

#include <platform/util/ProgressInterface.h>

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Flight {
    QString directory;
    std::string tmFile;
    long lines = 0;
};

// Simulated flights, made once per process and removed at exit.
class Flights {
public:
    const Flight& realistic()
    {
        if (const char* given = std::getenv("DATAMODEL_BENCH_FLIGHT"))
            return remember(QString::fromLocal8Bit(given), flightsim::SimulationConfig());
        return simulate("realistic", flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Realistic));
    }

    // Eight takes of twelve bands with `lines` scan lines each.
    const Flight& withLines(int lines)
    {
        auto config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Realistic);
        config.takes = 8;
        config.linesPerTake = lines;
        return simulate("lines" + std::to_string(lines), config);
    }

private:
    const Flight& simulate(const std::string& key, const flightsim::SimulationConfig& config)
    {
        auto found = m_flights.find(key);
        if (found != m_flights.end())
            return found->second;
        if (!m_root.isValid())
            throw std::runtime_error("bench set-up: no temporary folder");
        const QString directory = m_root.path() + QLatin1Char('/') + QString::fromStdString(key);
        flightsim::FlightSimulator(config).run(directory, nullptr);
        return remember(directory, config, key);
    }

    const Flight& remember(const QString& directory, const flightsim::SimulationConfig&, const std::string& key = "given")
    {
        Flight flight;
        flight.directory = directory;
        QDirIterator marks(directory + QStringLiteral("/gps-imu"), {QStringLiteral("tm*.dat")}, QDir::Files,
                           QDirIterator::Subdirectories);
        if (!marks.hasNext())
            throw std::runtime_error("bench set-up: no time-mark file in " + directory.toStdString());
        flight.tmFile = marks.next().toStdString();
        return m_flights.emplace(key, flight).first->second;
    }

    QTemporaryDir m_root{QDir::tempPath() + QStringLiteral("/prepare-bench-XXXXXX")};
    std::map<std::string, Flight> m_flights;
};

Flights& flights()
{
    static Flights instance;
    return instance;
}

void removeCtgFiles(const QString& directory)
{
    QDirIterator files(directory + QStringLiteral("/raw"), {QStringLiteral("*.ctg")}, QDir::Files);
    while (files.hasNext())
        QFile::remove(files.next());
}

double wallSec()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return double(now.tv_sec) + 1e-9 * double(now.tv_nsec);
}

double cpuSec()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + 1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

// The best wall and CPU time of each measured job, for the summary, and
// the best CPU time of its CTG stage alone (preparations only).
struct Best {
    double wallSec = std::numeric_limits<double>::infinity();
    double cpuSec = std::numeric_limits<double>::infinity();
    double stageCpuSec = std::numeric_limits<double>::infinity();
    long lines = 0;
};
// The CPU time of the last preparation's CTG stage.
double sLastStageCpuSec = 0.0;
std::map<std::string, Best> sBest;
// EOP samples per CPU second: the library's best, the script's best.
double sEopSamplesPerSec = 0.0;
double sPeerSamplesPerSec = 0.0;

template <typename Job>
void measure(benchmark::State& state, const std::string& name, const Flight& flight, Job job)
{
    Best& best = sBest[name];
    for (auto _ : state) {
        state.PauseTiming();
        removeCtgFiles(flight.directory);
        state.ResumeTiming();
        const double wall0 = wallSec();
        const double cpu0 = cpuSec();
        const long lines = job();
        const double cpu = cpuSec() - cpu0;
        const double wall = wallSec() - wall0;
        if (lines <= 0) {
            state.SkipWithError("the job failed");
            return;
        }
        best.wallSec = std::min(best.wallSec, wall);
        best.cpuSec = std::min(best.cpuSec, cpu);
        best.lines = lines;
        best.stageCpuSec = std::min(best.stageCpuSec, sLastStageCpuSec);
        state.counters["cpuNsPerLine"] = 1e9 * cpu / double(lines);
        state.counters["ctgStageCpuNsPerLine"] = 1e9 * sLastStageCpuSec / double(lines);
    }
}

// Takes the CPU time of the CTG stage from the progress calls around it.
class StageClock : public util::ProgressInterface {
public:
    void beginTask(const std::string& name) override
    {
        if (name == "Writing CTG files")
            m_startSec = cpuSec();
    }
    void setRange(long long, long long) override {}
    void report(long long) override {}
    void endTask() override
    {
        if (m_startSec >= 0.0)
            m_stageSec = cpuSec() - m_startSec;
        m_startSec = -1.0;
    }
    double stageSec() const { return m_stageSec; }

private:
    double m_startSec = -1.0;
    double m_stageSec = 0.0;
};

// Writing the CTG files, as the floor does: without the data-preparation
// checks (BM_CheckRealistic measures those).
long prepare(const Flight& flight)
{
    datamodel::SessionPreparation::Options options;
    options.validate = false;
    options.writeEop = false;
    StageClock clock;
    const datamodel::PreparationReport report =
        datamodel::SessionPreparation(options).run(flight.directory.toStdString(), &clock);
    sLastStageCpuSec = clock.stageSec();
    if (report.hasErrors()) {
        for (const auto& message : report.messages)
            std::fprintf(stderr, "%s: %s\n", message.subject.c_str(), message.text.c_str());
        return -1;
    }
    long lines = 0;
    for (const auto& take : report.takes)
        for (const auto& band : take.bands)
            lines += long(band.lines.value_or(0));
    return lines;
}

void BM_FloorRealistic(benchmark::State& state)
{
    const Flight& flight = flights().realistic();
    measure(state, "floor", flight, [&] {
        sLastStageCpuSec = 0.0;
        return ctg_floor_run(flight.directory.toLocal8Bit().constData(), flight.tmFile.c_str());
    });
}

void BM_PrepareRealistic(benchmark::State& state)
{
    const Flight& flight = flights().realistic();
    measure(state, "prepare", flight, [&] { return prepare(flight); });
}

void BM_PrepareLinesPerTake(benchmark::State& state)
{
    const Flight& flight = flights().withLines(int(state.range(0)));
    measure(state, "prepare/" + std::to_string(state.range(0)), flight, [&] { return prepare(flight); });
}

// The checks of a prepared flight, CTG files present: the preparation in its
// checking mode (open the session, read and check every CTG file, the
// coverage), with the data-preparation checks (range 1) and without (0).
// The difference is what the checks cost: time marks, trajectories, and per
// band the pixel, info and integration-time files, the camera times and the
// trajectory's coverage of every scan line.
long check(const Flight& flight, bool validate)
{
    datamodel::SessionPreparation::Options options;
    options.writeCtg = false;
    options.validate = validate;
    options.writeEop = false;
    const datamodel::PreparationReport report = datamodel::SessionPreparation(options).run(flight.directory.toStdString());
    long lines = 0;
    for (const auto& take : report.takes)
        for (const auto& band : take.bands)
            lines += long(band.lines.value_or(0));
    static bool told = false;
    if (validate && !told) {
        told = true;
        std::fprintf(stderr, "checks of the realistic flight: %zu errors, %zu warnings, %zu notes\n",
                     report.messageCount(datamodel::PreparationMessage::Severity::Error),
                     report.messageCount(datamodel::PreparationMessage::Severity::Warning),
                     report.messageCount(datamodel::PreparationMessage::Severity::Information));
    }
    return lines;
}

void BM_CheckRealistic(benchmark::State& state)
{
    const Flight& flight = flights().realistic();
    static const bool prepared = prepare(flight) > 0;
    if (!prepared) {
        state.SkipWithError("the flight could not be prepared");
        return;
    }
    const bool validate = state.range(0) != 0;
    Best& best = sBest[validate ? "check+validate" : "check"];
    for (auto _ : state) {
        const double wall0 = wallSec();
        const double cpu0 = cpuSec();
        const long lines = check(flight, validate);
        best.wallSec = std::min(best.wallSec, wallSec() - wall0);
        best.cpuSec = std::min(best.cpuSec, cpuSec() - cpu0);
        best.lines = lines;
        state.counters["lines"] = double(lines);
    }
}

// The exterior orientation of every take of the realistic flight from its
// SBET file (opened once), at the trajectory's record rate over the take's
// scan lines: the generation alone, without writing.
void BM_EopRealistic(benchmark::State& state)
{
    const Flight& flight = flights().realistic();
    static const bool prepared = prepare(flight) > 0;
    if (!prepared) {
        state.SkipWithError("the flight could not be prepared");
        return;
    }
    datamodel::RecordingSession session(flight.directory.toStdString());
    const datamodel::RecordingSession::ImuTrajectoryId* sbet = nullptr;
    for (const auto* id : session.imuTrajectories())
        if (id->name().rfind("sbet", 0) == 0)
            sbet = id;
    if (!sbet) {
        state.SkipWithError("no SBET file");
        return;
    }
    const std::unique_ptr<datamodel::ImuTrajectory> imu = session.createImuTrajectory(*sbet);
    struct Span {
        double first, last;
        geo::XYZPoint anchor;
    };
    std::vector<Span> spans;
    for (datamodel::Take* take : session.takes()) {
        double first = 0.0, last = 0.0;
        take->minMaxGpsTimes(first, last);
        const geo::XYPoint start = take->computeAnchorPoint(sbet, false);
        spans.push_back({first, last, geo::XYZPoint(start.x, start.y, 0.0)});
    }
    const geo::XYZPoint misalignment = session.sensor().misalignment();
    const double zOffset = session.sensor().nominalZOffsetM();
    long samples = 0;
    for (auto _ : state) {
        samples = 0;
        const double cpu0 = cpuSec();
        for (const Span& span : spans) {
            const datamodel::EopTrajectory eop(*imu, datamodel::seconds(span.first), datamodel::seconds(span.last),
                                               span.anchor, misalignment, zOffset, session.flightDate(), nullptr);
            samples += eop.numSets();
        }
        sEopSamplesPerSec = std::max(sEopSamplesPerSec, double(samples) / (cpuSec() - cpu0));
    }
    state.counters["samples"] = double(samples);
    state.counters["samplesPerSec"] = benchmark::Counter(double(samples), benchmark::Counter::kIsIterationInvariantRate);

    // The same with the script a user would write (bench/peers/eop_numpy.py).
    QTemporaryDir scratch;
    const QString spansFile = scratch.path() + QStringLiteral("/spans.json");
    QFile out(spansFile);
    if (!out.open(QIODevice::WriteOnly))
        return;
    QJsonArray takes;
    for (const Span& span : spans)
        takes.append(QJsonObject{{QStringLiteral("startSec"), span.first}, {QStringLiteral("endSec"), span.last},
                                 {QStringLiteral("anchorLonRad"), span.anchor.x},
                                 {QStringLiteral("anchorLatRad"), span.anchor.y}});
    out.write(QJsonDocument(QJsonObject{
                                {QStringLiteral("sbet"), QString::fromStdString(session.imuTrajectoryPath(*sbet))},
                                {QStringLiteral("misalignmentRad"),
                                 QJsonArray{misalignment.x, misalignment.y, misalignment.z}},
                                {QStringLiteral("zOffsetM"), zOffset},
                                {QStringLiteral("intervalSec"), imu->frequency()},
                                {QStringLiteral("takes"), takes}})
                  .toJson());
    out.close();
    const std::string command = "/usr/bin/python3 " DATAMODEL_BENCH_PEERS_DIR "/eop_numpy.py " + spansFile.toStdString();
    for (int run = 0; run < 3; ++run) {
        FILE* pipe = popen(command.c_str(), "r");
        if (!pipe)
            return;
        char buffer[256] = {};
        const std::size_t got = std::fread(buffer, 1, sizeof buffer - 1, pipe);
        if (pclose(pipe) != 0 || got == 0) {
            std::fprintf(stderr, "the NumPy/pyproj script did not run (python3-numpy, python3-pyproj)\n");
            return;
        }
        const QJsonObject result = QJsonDocument::fromJson(QByteArray(buffer, qsizetype(got))).object();
        const double seconds = result[QStringLiteral("seconds")].toDouble();
        if (seconds > 0.0)
            sPeerSamplesPerSec = std::max(sPeerSamplesPerSec, result[QStringLiteral("samples")].toDouble() / seconds);
    }
}

BENCHMARK(BM_EopRealistic)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->Iterations(10);
BENCHMARK(BM_CheckRealistic)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime()->Iterations(5);
BENCHMARK(BM_FloorRealistic)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime()->Iterations(5);
BENCHMARK(BM_PrepareRealistic)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime()->Iterations(5);
BENCHMARK(BM_PrepareLinesPerTake)
    ->Arg(30000)->Arg(60000)->Arg(120000)
    ->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime()->Iterations(5);

void printSummary()
{
    const auto floor = sBest.find("floor");
    const auto prepared = sBest.find("prepare");
    std::printf("\nBest of the iterations (wall / CPU = user + system):\n");
    for (const auto& [name, best] : sBest)
        std::printf("  %-16s %8.1f ms wall %8.1f ms CPU  %6.1f ns CPU per scan line (CTG stage alone %4.1f)\n",
                    name.c_str(), 1e3 * best.wallSec, 1e3 * best.cpuSec,
                    1e9 * best.cpuSec / double(std::max(1L, best.lines)),
                    1e9 * best.stageCpuSec / double(std::max(1L, best.lines)));
    if (sEopSamplesPerSec > 0.0) {
        std::printf("EOP generation: %.2f million samples per CPU second (target 2)", 1e-6 * sEopSamplesPerSec);
        if (sPeerSamplesPerSec > 0.0)
            std::printf("; NumPy/pyproj script %.2f million per second: %.1fx", 1e-6 * sPeerSamplesPerSec,
                        sEopSamplesPerSec / sPeerSamplesPerSec);
        std::printf("\n");
    }
    const auto checked = sBest.find("check");
    const auto validated = sBest.find("check+validate");
    if (checked != sBest.end() && validated != sBest.end())
        std::printf("data-preparation checks of %ld scan lines: %.1f ms wall, %.1f ms CPU (target 500 ms), "
                    "%.1f ns CPU per scan line\n",
                    validated->second.lines, 1e3 * (validated->second.wallSec - checked->second.wallSec),
                    1e3 * (validated->second.cpuSec - checked->second.cpuSec),
                    1e9 * (validated->second.cpuSec - checked->second.cpuSec)
                        / double(std::max(1L, validated->second.lines)));
    if (floor != sBest.end() && prepared != sBest.end())
        std::printf("prepare / floor: wall %.2fx (target 1.5x), CPU %.2fx (target 2x)\n",
                    prepared->second.wallSec / floor->second.wallSec, prepared->second.cpuSec / floor->second.cpuSec);
    // The CTG stage of flights that differ only in their lines per take:
    // its CPU time is a cost per band (opening, syncing and renaming files)
    // plus a cost per scan line, which is the slope from one flight to the
    // next. Much of it is system time of writing back and syncing, which
    // the kernel shares between the process and its flusher threads as the
    // amount of dirty data pleases it, so the slopes are noisy.
    std::vector<std::pair<long, double>> stages;
    for (const auto& [name, best] : sBest)
        if (name.rfind("prepare/", 0) == 0)
            stages.emplace_back(best.lines, best.stageCpuSec);
    std::sort(stages.begin(), stages.end());
    std::vector<double> slopes;
    for (std::size_t i = 1; i < stages.size(); ++i) {
        const double slope = (stages[i].second - stages[i - 1].second) / double(stages[i].first - stages[i - 1].first);
        slopes.push_back(slope);
        std::printf("CTG stage CPU per added scan line from %ld to %ld lines: %.2f ns\n", stages[i - 1].first,
                    stages[i].first, 1e9 * slope);
    }
    if (slopes.size() >= 2) {
        const auto [low, high] = std::minmax_element(slopes.begin(), slopes.end());
        std::printf("CPU per scan line from 30 000 to 120 000 lines per take varies by %.0f %% (target 15 %%)\n",
                    100.0 * (*high / *low - 1.0));
    }
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    printSummary();
    return 0;
}
