#include <flightsim/FlightSimulator.h>

#include <flightsim/AccuracyModel.h>
#include <flightsim/BandWriter.h>
#include <flightsim/CameraClock.h>
#include <flightsim/CameraModel.h>
#include <flightsim/DemWriter.h>
#include <flightsim/FlightDataWriter.h>
#include <flightsim/FlightPlan.h>
#include <flightsim/GpsTime.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SessionLayout.h>
#include <flightsim/SimulatedTrajectory.h>
#include <flightsim/QualityTruth.h>
#include <flightsim/Terrain.h>
#include <flightsim/TimeMarkWriter.h>
#include <flightsim/TrajectoryWriter.h>
#include <flightsim/TruthWriter.h>

#include <platform/util/ProgressInterface.h>

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHashSeed>
#include <QJsonArray>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <thread>

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace flightsim {

namespace {

constexpr const char* sVersion = "1.0";

// Set by SIGINT and SIGTERM while a simulation runs.
volatile std::sig_atomic_t sInterrupted = 0;

extern "C" void onInterrupt(int signal)
{
    sInterrupted = signal;
}

// Throws when the run was interrupted; the staging folder is then removed
// on the way out and the signal raised again.
void checkInterrupted()
{
    if (sInterrupted)
        throw std::runtime_error("Interrupted");
}

// Catches SIGINT and SIGTERM for the length of a run, so that an interrupted
// run can remove its working folder, and restores the handlers before.
class InterruptGuard {
public:
    InterruptGuard()
    {
        sInterrupted = 0;
        struct sigaction action {};
        action.sa_handler = onInterrupt;
        sigemptyset(&action.sa_mask);
        // A signal the process ignores (SIGINT of a background job) stays ignored.
        sigaction(SIGINT, nullptr, &m_previousInt);
        sigaction(SIGTERM, nullptr, &m_previousTerm);
        if (m_previousInt.sa_handler != SIG_IGN)
            sigaction(SIGINT, &action, nullptr);
        if (m_previousTerm.sa_handler != SIG_IGN)
            sigaction(SIGTERM, &action, nullptr);
    }
    ~InterruptGuard()
    {
        sigaction(SIGINT, &m_previousInt, nullptr);
        sigaction(SIGTERM, &m_previousTerm, nullptr);
        // Delivered again now that the working folder is gone.
        if (const int signal = sInterrupted) {
            sInterrupted = 0;
            std::raise(signal);
        }
    }
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
    struct sigaction m_previousInt {};
    struct sigaction m_previousTerm {};
};

// A hidden folder beside the target, ".<name>.flightsim-<pid>-XXXXXX",
// removed again unless released. Folders of this kind left by a process that
// no longer runs (killed outright) are removed first.
class StagingFolder {
public:
    explicit StagingFolder(const QFileInfo& target)
    {
        const QString parent = target.absolutePath();
        if (!QDir().mkpath(parent))
            throw std::runtime_error("Failed to create: " + parent.toStdString());
        const QString prefix = QStringLiteral(".") + target.fileName() + QStringLiteral(".flightsim-");
        removeStale(parent, prefix);
        QByteArray pattern = QFile::encodeName(parent + QLatin1Char('/') + prefix
                                               + QString::number(::getpid()) + QStringLiteral("-XXXXXX"));
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("Failed to create a working folder in: " + parent.toStdString());
        m_path = QFile::decodeName(pattern);
        // mkdtemp makes the folder private; give it the usual permissions.
        const mode_t mask = ::umask(0);
        ::umask(mask);
        ::chmod(pattern.constData(), 0777 & ~mask);
    }
    ~StagingFolder()
    {
        if (!m_path.isEmpty())
            QDir(m_path).removeRecursively();
    }
    const QString& path() const { return m_path; }
    void moveTo(const QString& target)
    {
        if (std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(target).constData()) != 0)
            throw std::runtime_error("Cannot move the simulated session into place: " + target.toStdString());
        m_path.clear();
    }

private:
    static void removeStale(const QString& parent, const QString& prefix)
    {
        const QStringList found = QDir(parent).entryList({prefix + QLatin1Char('*')},
                                                         QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QString& name : found) {
            bool isNumber = false;
            const qint64 pid = name.mid(prefix.size()).section(QLatin1Char('-'), 0, 0).toLongLong(&isNumber);
            if (isNumber && pid > 0 && ::kill(pid_t(pid), 0) != 0 && errno == ESRCH)
                QDir(parent + QLatin1Char('/') + name).removeRecursively();
        }
    }

    QString m_path;
};

// Collects the progress of the worker thread's tasks as one running count
// that the main thread reads and shows.
class WorkerProgress final : public util::ProgressInterface {
public:
    void beginTask(const std::string&) override {}
    void setRange(long long min, long long max) override
    {
        m_min = min;
        m_max = max;
    }
    void report(long long value) override
    {
        checkInterrupted();
        m_done.store(m_finishedUnits + (value - m_min));
    }
    void endTask() override
    {
        m_finishedUnits += m_max - m_min;
        m_done.store(m_finishedUnits);
        m_min = m_max = 0;
    }
    long long done() const { return m_done.load(); }
    void finish()
    {
        std::lock_guard lock(m_mutex);
        m_finished = true;
        m_condition.notify_all();
    }
    bool waitFinished(std::chrono::milliseconds timeout)
    {
        std::unique_lock lock(m_mutex);
        return m_condition.wait_for(lock, timeout, [this] { return m_finished; });
    }

private:
    // Written by the worker only.
    long long m_min = 0;
    long long m_max = 0;
    long long m_finishedUnits = 0;
    std::atomic<long long> m_done{0};
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_finished = false;
};

QJsonObject configJson(const SimulationConfig& c)
{
    return QJsonObject{
        {QStringLiteral("seed"), QString::number(c.seed)},
        {QStringLiteral("sensorSerial"), c.sensorSerial},
        {QStringLiteral("sensorType"), c.sensorType},
        {QStringLiteral("sensorGeneration"), c.sensorGeneration},
        {QStringLiteral("sensorHead"), c.sensorHead},
        {QStringLiteral("calibrationVersion"), c.calibrationVersion},
        {QStringLiteral("requestedStartUtc"), c.startUtc.toUTC().toString(Qt::ISODate)},
        {QStringLiteral("centerLonDeg"), c.centerLonDeg},
        {QStringLiteral("centerLatDeg"), c.centerLatDeg},
        {QStringLiteral("lineAzimuthDeg"), c.lineAzimuthDeg},
        {QStringLiteral("takes"), c.takes},
        {QStringLiteral("lineSpacingM"), c.lineSpacingM},
        {QStringLiteral("speedMps"), c.speedMps},
        {QStringLiteral("heightAboveTerrainM"), c.heightAboveTerrainM},
        {QStringLiteral("terrainHeightM"), c.terrainHeightM},
        {QStringLiteral("terrainReliefM"), c.terrainReliefM},
        {QStringLiteral("maxBankDeg"), c.maxBankDeg},
        {QStringLiteral("rollRateDegPerSec"), c.rollRateDegPerSec},
        {QStringLiteral("pitchTrimDeg"), c.pitchTrimDeg},
        {QStringLiteral("runMarginSec"), c.runMarginSec},
        {QStringLiteral("bands"), QJsonArray::fromStringList(c.bands)},
        {QStringLiteral("linesPerTake"), c.linesPerTake},
        {QStringLiteral("lineRateHz"), c.lineRateHz},
        {QStringLiteral("samplesPerLine"), c.samplesPerLine},
        {QStringLiteral("focalLengthMm"), c.focalLengthMm},
        {QStringLiteral("pixelSizeMm"), c.pixelSizeMm},
        {QStringLiteral("ccdPixels"), c.ccdPixels},
        {QStringLiteral("misalignmentDeg"),
         QJsonArray{c.misalignmentDeg[0], c.misalignmentDeg[1], c.misalignmentDeg[2]}},
        {QStringLiteral("nominalZOffsetM"), c.nominalZOffsetM},
        {QStringLiteral("integrationTimeMs"), c.integrationTimeUs() / 1000.0},
        {QStringLiteral("darkTakes"), c.darkTakes},
        {QStringLiteral("darkLines"), c.darkLines},
        {QStringLiteral("imuRateHz"), c.imuRateHz},
        {QStringLiteral("accuracyRateHz"), c.accuracyRateHz},
        {QStringLiteral("turbulence"), c.turbulence},
        {QStringLiteral("demSpacingM"), c.demSpacingM},
        {QStringLiteral("sessionData"), c.writeSessionData},
        {QStringLiteral("faultTake"), c.faultTakeIndex() + 1},
    };
}

} // namespace

QJsonObject SimulationReport::toJson() const
{
    QJsonObject phases;
    for (const auto& [name, sec] : phaseSeconds)
        phases.insert(name, sec);
    return QJsonObject{
        {QStringLiteral("directory"), directory},
        {QStringLiteral("sessionId"), sessionId},
        {QStringLiteral("startUtc"), startUtc},
        {QStringLiteral("gpsWeek"), gpsWeek},
        {QStringLiteral("takes"), takes},
        {QStringLiteral("darkTakes"), darkTakes},
        {QStringLiteral("bands"), bands},
        {QStringLiteral("linesPerTake"), linesPerTake},
        {QStringLiteral("flightSec"), flightSec},
        {QStringLiteral("trajectoryRecords"), trajectoryRecords},
        {QStringLiteral("accuracyRecords"), accuracyRecords},
        {QStringLiteral("timeMarks"), timeMarks},
        {QStringLiteral("faults"), QJsonArray::fromStringList(faults)},
        {QStringLiteral("files"), files},
        {QStringLiteral("bytes"), bytes},
        {QStringLiteral("seconds"), seconds},
        {QStringLiteral("phaseSeconds"), phases},
    };
}

QString SimulationReport::toText() const
{
    QString text;
    text += QStringLiteral("Simulated session %1 in %2\n").arg(sessionId, directory);
    text += QStringLiteral("  start        %1 (GPS week %2)\n").arg(startUtc).arg(gpsWeek);
    text += QStringLiteral("  takes        %1 (+%2 dark), %3 bands, %4 lines per band and take\n")
                .arg(takes)
                .arg(darkTakes)
                .arg(bands)
                .arg(linesPerTake);
    text += QStringLiteral("  trajectory   %1 records over %2 s, %3 accuracy records\n")
                .arg(trajectoryRecords)
                .arg(flightSec, 0, 'f', 1)
                .arg(accuracyRecords);
    text += QStringLiteral("  time marks   %1\n").arg(timeMarks);
    text += QStringLiteral("  faults       %1\n").arg(faults.isEmpty() ? QStringLiteral("none") : faults.join(QStringLiteral(", ")));
    text += QStringLiteral("  written      %1 files, %2 MB in %3 s\n")
                .arg(files)
                .arg(double(bytes) / 1e6, 0, 'f', 1)
                .arg(seconds, 0, 'f', 2);
    return text;
}

FlightSimulator::FlightSimulator(SimulationConfig config)
    : m_config(std::move(config))
{
}

SimulationReport FlightSimulator::run(const QString& directory, util::ProgressInterface* progress) const
{
    QElapsedTimer total;
    total.start();
    QElapsedTimer phase;
    phase.start();
    SimulationReport report;
    auto endPhase = [&](const char* name) {
        report.phaseSeconds.emplace_back(QLatin1String(name), double(phase.nsecsElapsed()) * 1e-9);
        phase.restart();
    };

    const SimulationConfig& config = m_config;
    config.validate();
    const QFileInfo target(QDir::cleanPath(QDir(directory).absolutePath()));
    if (target.exists() && !target.isDir())
        throw std::runtime_error("Not a directory: " + target.filePath().toStdString());
    if (target.isDir() && !QDir(target.filePath()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        throw std::runtime_error("The target directory is not empty: " + target.filePath().toStdString());

    const FlightPlan plan(config);
    const std::vector<TakeWindow>& takes = plan.takes();
    const TakeWindow& faultTake = takes[std::size_t(config.faultTakeIndex())];

    // The flight start; the week-rollover fault moves it so that the week
    // ends at the trajectory record nearest the middle of the fault take.
    GpsTime start = GpsTime::fromUtc(config.startUtc);
    double rolloverFlightSec = -1.0;
    if (config.faults.has(Fault::WeekRollover)) {
        const double middleSec = 0.5 * (faultTake.startSec + faultTake.lastLineSec());
        rolloverFlightSec = std::round(middleSec * config.imuRateHz) / config.imuRateHz;
        start.secondsOfWeek = GpsTime::sSecondsPerWeek - rolloverFlightSec;
    }
    const QDateTime startUtc = start.toUtc();
    const QString sessionId = config.sessionId.isEmpty()
        ? QStringLiteral("S") + startUtc.toString(QStringLiteral("yyMMdd_HHmm"))
        : config.sessionId;
    const CameraClock clock(config.ctOffsetSec, config.ctDriftPpm);
    if (clock.ctAt(plan.durationSec()) >= GpsTime::sSecondsPerWeek)
        throw ConfigError("the camera clock would pass 604800 s during the flight; lower --ct-offset");

    // QDom keeps attributes in a hash: a fixed seed makes the XML files of
    // the same configuration the same bytes on every run.
    QHashSeed::setDeterministicGlobalSeed();
    InterruptGuard interrupts;
    StagingFolder staging(target);
    const SessionLayout layout(staging.path(), sessionId);
    layout.create();
    const LocalPlane plane(config.centerLatDeg, config.centerLonDeg, config.lineAzimuthDeg);
    const Terrain terrain(config.terrainHeightM, config.terrainReliefM, config.seed);
    const CameraModel camera(config);
    endPhase("planning");

    // The trajectory is simulated and written on a second thread while this
    // one writes the time marks, the band files, the flight data and the DEM:
    // neither needs the other's results, and each is deterministic on its own.
    const std::size_t allRecords = std::size_t(std::floor(plan.durationSec() * config.imuRateHz + 1e-9)) + 1;
    std::size_t records = allRecords;
    QJsonArray faults;
    if (config.faults.has(Fault::ShortTrajectory)) {
        const TakeWindow& last = takes.back();
        const double endSec = 0.5 * (last.startSec + last.lastLineSec());
        records = std::size_t(std::floor(endSec * config.imuRateHz)) + 1;
        faults.append(QJsonObject{{QStringLiteral("name"), FaultSet::name(Fault::ShortTrajectory)},
                                  {QStringLiteral("take"), last.label},
                                  {QStringLiteral("trajectoryEndGpsSec"),
                                   GpsTime::wrap(start.secondsOfWeek + double(records - 1) / config.imuRateHz)},
                                  {QStringLiteral("lastLineGpsSec"),
                                   GpsTime::wrap(start.secondsOfWeek + last.lastLineSec())}});
    }
    const bool truncate = config.faults.has(Fault::TruncatedTrajectory);

    // Bands, in recording order: each dark take comes before its image take.
    std::vector<const TakeWindow*> recorded;
    for (const TakeWindow& take : takes)
        recorded.push_back(&take);
    for (const TakeWindow& dark : plan.darkTakes())
        recorded.push_back(&dark);
    std::stable_sort(recorded.begin(), recorded.end(),
                     [](const TakeWindow* a, const TakeWindow* b) { return a->startSec < b->startSec; });
    long long bandUnits = 0;
    for (const TakeWindow* take : recorded)
        bandUnits += (long long)take->lines * (long long)camera.bands().size();

    std::optional<SimulatedTrajectory> trajectory;
    TrajectoryWriter::Result written;
    WorkerProgress workerProgress;
    std::exception_ptr workerError;
    double simulationSec = 0.0;
    double trajectoryFilesSec = 0.0;
    TimeMarkWriter::Result marks;
    QJsonArray takesJson;
    QJsonArray darkJson;
    QJsonObject dem;
    {
        util::ProgressTask task(progress, "Simulating the flight", 0,
                                2 * (long long)allRecords + (long long)records + bandUnits);
        std::jthread worker([&] {
            try {
                QElapsedTimer timer;
                timer.start();
                trajectory.emplace(config, plan, plane, &workerProgress);
                simulationSec = double(timer.nsecsElapsed()) * 1e-9;
                timer.restart();
                const AccuracyModel accuracy(trajectory->timeSec(allRecords - 1), 1.0 / config.accuracyRateHz,
                                             config.seed);
                written = TrajectoryWriter(*trajectory, accuracy, start, config.seed)
                              .write(layout, records, truncate, &workerProgress);
                trajectoryFilesSec = double(timer.nsecsElapsed()) * 1e-9;
            } catch (...) {
                workerError = std::current_exception();
            }
            workerProgress.finish();
        });

        marks = TimeMarkWriter(config, plan, clock, start).write(layout.timeMarkPath());
        for (const QJsonValue& fault : marks.faults)
            faults.append(fault);
        endPhase("time marks");

        const BandWriter bandWriter(config, plan, plane, camera, clock, start, layout);
        long long bandsDone = 0;
        for (const TakeWindow* take : recorded) {
            checkInterrupted();
            QJsonObject json = bandWriter.writeTake(*take, faults);
            (take->dark ? darkJson : takesJson).append(json);
            bandsDone += (long long)take->lines * (long long)camera.bands().size();
            task.report(workerProgress.done() + bandsDone);
        }
        endPhase("band files");

        const FlightDataWriter flightData(config, plan, camera, start, sessionId, layout);
        flightData.writeFlightData();
        flightData.writeCamera();
        if (config.writeSessionData)
            flightData.writeSessionData();
        dem = DemWriter::write(layout.demPath(), config, plan, plane, terrain);
        dem[QStringLiteral("file")] = layout.relative(layout.demPath());
        endPhase("flight data and DEM");

        while (!workerProgress.waitFinished(std::chrono::milliseconds(100)))
            task.report(workerProgress.done() + bandsDone);
        worker.join();
        checkInterrupted();
        endPhase("waiting for the trajectory");
    }
    if (workerError)
        std::rethrow_exception(workerError);
    report.phaseSeconds.emplace_back(QStringLiteral("trajectory simulation (parallel)"), simulationSec);
    report.phaseSeconds.emplace_back(QStringLiteral("trajectory files (parallel)"), trajectoryFilesSec);

    if (truncate) {
        QJsonObject detail = written.truncation;
        detail[QStringLiteral("name")] = FaultSet::name(Fault::TruncatedTrajectory);
        detail[QStringLiteral("file")] = layout.relative(layout.sbetPath());
        detail[QStringLiteral("sizeBytes")] = qint64(written.sbetBytes);
        faults.append(detail);
    }
    if (config.faults.has(Fault::WeekRollover)) {
        faults.append(QJsonObject{{QStringLiteral("name"), FaultSet::name(Fault::WeekRollover)},
                                  {QStringLiteral("take"), faultTake.label},
                                  {QStringLiteral("rolloverFlightSec"), rolloverFlightSec},
                                  {QStringLiteral("weekBefore"), start.week},
                                  {QStringLiteral("weekAfter"), start.week + 1},
                                  {QStringLiteral("rolloverUtc"),
                                   startUtc.addMSecs(std::llround(rolloverFlightSec * 1000.0)).toString(Qt::ISODate)}});
    }
    if (trajectory->attitude().heavy()) {
        QJsonObject detail = trajectory->attitude().heavyToJson();
        detail[QStringLiteral("name")] = FaultSet::name(Fault::HeavyTurbulence);
        detail[QStringLiteral("take")] = faultTake.label;
        detail[QStringLiteral("fromGpsSec")] =
            GpsTime::wrap(start.secondsOfWeek + trajectory->attitude().heavyStartSec());
        detail[QStringLiteral("toGpsSec")] = GpsTime::wrap(start.secondsOfWeek + trajectory->attitude().heavyEndSec());
        faults.append(detail);
    }
    const QualityTruth quality(config, plan, plane, *trajectory, terrain, camera, start);
    for (qsizetype i = 0; i < takesJson.size(); ++i) {
        QJsonObject json = takesJson[i].toObject();
        json[QStringLiteral("exteriorOrientation")] =
            TruthWriter::exteriorOrientation(config, plan, plane, *trajectory, start, takes[std::size_t(i)], records);
        // The true quality where it is worth its time: the take under heavy turbulence.
        if (trajectory->attitude().heavy() && takes[std::size_t(i)].label == faultTake.label)
            json[QStringLiteral("quality")] = quality.take(takes[std::size_t(i)]);
        takesJson[i] = json;
    }

    const QJsonObject firstMark{{QStringLiteral("gpsSec"), marks.marks.front().gpsSec},
                                {QStringLiteral("ctSec"), marks.marks.front().ctSec}};
    const QJsonObject lastMark{{QStringLiteral("gpsSec"), marks.marks.back().gpsSec},
                               {QStringLiteral("ctSec"), marks.marks.back().ctSec}};
    QJsonObject turn;
    if (const TurnManeuver* maneuver = plan.turn())
        turn = QJsonObject{{QStringLiteral("kind"), maneuver->teardrop() ? QStringLiteral("teardrop") : QStringLiteral("reversal")},
                           {QStringLiteral("durationSec"), maneuver->durationSec()},
                           {QStringLiteral("bankDeg"), maneuver->bankRad() * 180.0 / std::numbers::pi},
                           {QStringLiteral("forwardM"), maneuver->forwardM()}};
    const QJsonObject truth{
        {QStringLiteral("format"), QStringLiteral("flightsim truth")},
        {QStringLiteral("version"), QLatin1String(sVersion)},
        {QStringLiteral("config"), configJson(config)},
        {QStringLiteral("session"),
         QJsonObject{{QStringLiteral("id"), sessionId},
                     {QStringLiteral("gpsImuFolder"), layout.relative(layout.gpsImu())},
                     {QStringLiteral("flightData"), layout.relative(layout.flightDataPath())},
                     {QStringLiteral("camera"), layout.relative(layout.cameraPath())},
                     {QStringLiteral("sessionData"),
                      config.writeSessionData ? QJsonValue(layout.relative(layout.sessionDataPath())) : QJsonValue()}}},
        {QStringLiteral("time"),
         QJsonObject{{QStringLiteral("startUtc"), startUtc.toString(Qt::ISODateWithMs)},
                     {QStringLiteral("gpsWeek"), start.week},
                     {QStringLiteral("startGpsSec"), start.secondsOfWeek},
                     {QStringLiteral("leapSeconds"), GpsTime::leapSeconds(startUtc)},
                     {QStringLiteral("durationSec"), plan.durationSec()},
                     {QStringLiteral("endGpsSec"), GpsTime::wrap(start.secondsOfWeek + plan.durationSec())}}},
        {QStringLiteral("cameraClock"),
         QJsonObject{{QStringLiteral("offsetSec"), config.ctOffsetSec},
                     {QStringLiteral("driftPpm"), config.ctDriftPpm},
                     {QStringLiteral("referenceGpsSec"), start.secondsOfWeek},
                     {QStringLiteral("referenceGpsWeek"), start.week},
                     {QStringLiteral("formula"),
                      QStringLiteral("ct = offsetSec + (1 + driftPpm * 1e-6) * (gps - referenceGpsSec), gps in seconds "
                                     "of the reference week, counted on past 604800 after a rollover")}}},
        {QStringLiteral("trajectory"),
         QJsonObject{{QStringLiteral("rateHz"), config.imuRateHz},
                     {QStringLiteral("records"), qint64(written.records)},
                     {QStringLiteral("simulatedRecords"), qint64(allRecords)},
                     {QStringLiteral("accuracyRecords"), qint64(written.accuracyRecords)},
                     {QStringLiteral("sbet"), layout.relative(layout.sbetPath())},
                     {QStringLiteral("smrmsg"), layout.relative(layout.smrmsgPath())},
                     {QStringLiteral("sol"), layout.relative(layout.solPath())},
                     {QStringLiteral("first"), written.firstSbet},
                     {QStringLiteral("last"), written.lastSbet},
                     {QStringLiteral("firstAccuracy"), written.firstAccuracy},
                     {QStringLiteral("lastAccuracy"), written.lastAccuracy},
                     {QStringLiteral("flyingHeightM"), trajectory->flyingHeightM()},
                     {QStringLiteral("turbulence"), trajectory->attitude().toJson()}}},
        {QStringLiteral("plan"),
         QJsonObject{{QStringLiteral("lineLengthM"), plan.lineLengthM()},
                     {QStringLiteral("leadInSec"), plan.leadInSec()},
                     {QStringLiteral("leadOutSec"), plan.leadOutSec()},
                     {QStringLiteral("turn"), turn}}},
        {QStringLiteral("timeMarks"),
         QJsonObject{{QStringLiteral("file"), layout.relative(layout.timeMarkPath())},
                     {QStringLiteral("records"), qint64(marks.marks.size())},
                     {QStringLiteral("first"), firstMark},
                     {QStringLiteral("last"), lastMark}}},
        {QStringLiteral("terrain"), terrain.toJson()},
        {QStringLiteral("dem"), dem},
        {QStringLiteral("takes"), takesJson},
        {QStringLiteral("darkTakes"), darkJson},
        {QStringLiteral("faults"), faults},
    };
    TruthWriter::write(layout.truthPath(), truth);
    endPhase("truth");

    staging.moveTo(target.filePath());
    report.directory = target.filePath();
    report.sessionId = sessionId;
    report.startUtc = startUtc.toString(Qt::ISODate);
    report.gpsWeek = start.week;
    report.takes = int(takes.size());
    report.darkTakes = int(plan.darkTakes().size());
    report.bands = int(camera.bands().size());
    report.linesPerTake = config.linesPerTake;
    report.flightSec = plan.durationSec();
    report.trajectoryRecords = (long long)written.records;
    report.accuracyRecords = (long long)written.accuracyRecords;
    report.timeMarks = (long long)marks.marks.size();
    report.faults = config.faults.names();
    for (QDirIterator it(report.directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); it.hasNext();) {
        it.next();
        ++report.files;
        report.bytes += it.fileInfo().size();
    }
    report.seconds = double(total.nsecsElapsed()) * 1e-9;
    return report;
}

} // namespace flightsim
