// The per-scan-line validators on a band of a million lines (1250 s at 800
// lines/s): the clock-sequence and smoothness checks of its camera times, and
// the trajectory's coverage of every line, against a level SBET trajectory
// one record a second over the whole band.

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/validation/ClockSequenceValidator.h>
#include <datamodel/validation/CtgCoverageValidator.h>
#include <datamodel/validation/SmoothnessValidator.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

constexpr std::size_t sLines = 1000000;
constexpr double sLineRateHz = 800.0;
constexpr double sFirstLineSec = 300010.0; // GPS time of the band's first line

void write(const std::string& file, const QByteArray& bytes)
{
    QFile out(QString::fromStdString(file));
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size())
        throw std::runtime_error("bench setup: cannot write " + file);
}

// A session with one take of one band whose CTG file is on disk, and the
// trajectory file.
class Flight {
public:
    Flight()
    {
        if (!m_dir.isValid() || !QDir(m_dir.path()).mkpath(QStringLiteral("raw")))
            throw std::runtime_error("bench setup: no temporary session");
        const std::string root = m_dir.path().toStdString();
        write(root + "/raw/L001PANN00A.info",
              "<band_info><sensor_serialnumber>2004</sensor_serialnumber><sensor_type>ZEL</sensor_type>"
              "<ccd_id name=\"PANN00A\"/><line_number>1</line_number><line_label>L001</line_label>"
              "<start><time>14 May 2026, 09:30:00</time><longitude>11:30:00</longitude>"
              "<latitude>48:06:00</latitude></start><stop><time>14 May 2026, 09:51:00</time>"
              "<longitude>11:37:00</longitude><latitude>48:06:00</latitude></stop><int_time>1.25</int_time>"
              "</band_info>");

        std::vector<double> times(sLines);
        for (std::size_t i = 0; i < sLines; ++i)
            times[i] = sFirstLineSec + double(i) / sLineRateHz;
        write(root + "/raw/L001PANN00A.ctg",
              QByteArray(reinterpret_cast<const char*>(times.data()), qsizetype(times.size() * sizeof(double))));

        // SBET records: time first, the other sixteen doubles level flight.
        const int records = int(double(sLines) / sLineRateHz) + 20;
        QByteArray sbet(qsizetype(records) * 136, '\0');
        for (int k = 0; k < records; ++k) {
            const double t = sFirstLineSec - 10.0 + k;
            std::memcpy(sbet.data() + qsizetype(k) * 136, &t, sizeof t);
        }
        m_trajectoryPath = root + "/flight.sbet";
        write(m_trajectoryPath, sbet);

        m_session = std::make_unique<datamodel::RecordingSession>(root);
        m_info = std::make_unique<datamodel::InfoFile>(root + "/raw/L001PANN00A.info",
                                                       datamodel::InfoFile::STRIPNAMEREGEX);
        std::vector<datamodel::InfoFile*> infos{m_info.get()};
        m_take = new datamodel::Take(*m_session, "L001", infos, 500.0f, 2000.0f, "2004", "ZEL", 1);
        m_session->addTake(m_take);
        image().cameraTime().cache();
        if (image().cameraTime().size() != sLines)
            throw std::runtime_error("bench setup: the band's CTG file was not read");
    }

    datamodel::L0Image& image() { return *m_take->imagesL0().front(); }
    const std::string& trajectoryPath() const { return m_trajectoryPath; }

private:
    QTemporaryDir m_dir;
    std::string m_trajectoryPath;
    std::unique_ptr<datamodel::RecordingSession> m_session;
    std::unique_ptr<datamodel::InfoFile> m_info;
    datamodel::Take* m_take = nullptr;
};

Flight& flight()
{
    static Flight instance;
    return instance;
}

// The two line-to-line checks themselves, on times in memory.
void BM_ClockSequenceAndSmoothness(benchmark::State& state)
{
    datamodel::CameraTime& times = flight().image().cameraTime();
    datamodel::ClockSequenceValidator sequence;
    datamodel::SmoothnessValidator smoothness;
    for (auto _ : state) {
        sequence.validateV1(times);
        smoothness.validateV1(times);
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(sLines));
}
BENCHMARK(BM_ClockSequenceAndSmoothness);

// The same through validate(CameraTime&), which first asks each time whether
// the band's line period is uniform (one more pass per check).
void BM_ClockSequenceAndSmoothnessWithPeriodTest(benchmark::State& state)
{
    datamodel::CameraTime& times = flight().image().cameraTime();
    datamodel::ClockSequenceValidator sequence;
    datamodel::SmoothnessValidator smoothness;
    for (auto _ : state) {
        sequence.validate(times);
        smoothness.validate(times);
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(sLines));
}
BENCHMARK(BM_ClockSequenceAndSmoothnessWithPeriodTest);

// The trajectory's coverage of every line of the band (times in memory).
void BM_CtgCoverage(benchmark::State& state)
{
    datamodel::ImuTrajectory trajectory(flight().trajectoryPath());
    datamodel::CtgCoverageValidator coverage(nullptr, nullptr, nullptr, nullptr, &trajectory);
    for (auto _ : state)
        coverage.validate(flight().image());
    state.SetItemsProcessed(state.iterations() * std::int64_t(sLines));
}
BENCHMARK(BM_CtgCoverage);

// What the coverage check would cost asking the trajectory line by line.
void BM_TrajectoryAskedPerLine(benchmark::State& state)
{
    datamodel::ImuTrajectory trajectory(flight().trajectoryPath());
    const std::vector<datamodel::Seconds>& times = flight().image().cameraTime().values();
    for (auto _ : state) {
        std::size_t covered = 0;
        for (const datamodel::Seconds& t : times)
            covered += trajectory.containsGpsTime(t) ? 1 : 0;
        benchmark::DoNotOptimize(covered);
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(sLines));
}
BENCHMARK(BM_TrajectoryAskedPerLine);

} // namespace
