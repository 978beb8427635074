// The GPS time of every scan line of a band: converting a 60 000-line band
// (75 s at 800 lines/s) from camera time to GPS time through the time marks
// of a two-hour flight, in memory, and creating the band's CTG file from disk
// (read the CT file, convert, write the CTG file).

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TmFile.h>

#include <platform/raster/CtFile.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

constexpr int sLines = 60000;
constexpr double sLineRateHz = 800.0;
constexpr int sMarks = 7201;               // one a second for two hours
constexpr double sCtRate = 1.0 + 12.5e-6;  // camera seconds per GPS second
constexpr double sBandStartSec = 3600.3;   // flight second of the band's first line

// A flight's time marks and a band in the middle of it, on disk.
class Flight {
public:
    Flight()
    {
        if (!m_dir.isValid() || !QDir(m_dir.path()).mkpath(QStringLiteral("raw"))
            || !QDir(m_dir.path()).mkpath(QStringLiteral("gps-imu/S1/extract")))
            throw std::runtime_error("bench setup: no temporary session");
        std::vector<datamodel::TmFile::TmRecord> marks;
        for (int i = 0; i < sMarks; ++i)
            marks.push_back({300000.0 + i, 1800.0 + sCtRate * i});
        write(tmPath(), QByteArray(reinterpret_cast<const char*>(marks.data()), qsizetype(16 * marks.size())));
        for (int i = 0; i < sLines; ++i)
            m_ct.push_back(1800.0 + sCtRate * (sBandStartSec + i / sLineRateHz));
        raster::CtFile::write(path("raw/L001PANN00A.ct"), m_ct);
        write(path("raw/L001PANN00A.info"), infoXml());
    }

    std::string path(const char* relative) const { return (m_dir.path() + QLatin1Char('/') + relative).toStdString(); }
    std::string tmPath() const { return path("gps-imu/S1/extract/tm_S1.dat"); }
    std::string directory() const { return m_dir.path().toStdString(); }
    const std::vector<double>& ct() const { return m_ct; }

private:
    static void write(const std::string& file, const QByteArray& bytes)
    {
        QFile out(QString::fromStdString(file));
        if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size())
            throw std::runtime_error("bench setup: cannot write " + file);
    }

    static QByteArray infoXml()
    {
        return "<band_info><sensor_serialnumber>2004</sensor_serialnumber><sensor_type>ZEL</sensor_type>"
               "<ccd_id name=\"PANN00A\"/><line_number>1</line_number><line_label>L001</line_label>"
               "<start><time>14 May 2026, 09:30:00</time><longitude>11:30:00</longitude>"
               "<latitude>48:06:00</latitude><altitude>2000</altitude></start>"
               "<stop><time>14 May 2026, 09:31:15</time><longitude>11:37:00</longitude>"
               "<latitude>48:06:00</latitude><altitude>2000</altitude></stop>"
               "<flight_start><time>14 May 2026, 08:30:00</time></flight_start><int_time>1.25</int_time>"
               "<CAMERA_TIME_FILE>L001PANN00A.ct</CAMERA_TIME_FILE><PIXEL_FILE>L001PANN00A.lri</PIXEL_FILE>"
               "</band_info>";
    }

    QTemporaryDir m_dir;
    std::vector<double> m_ct;
};

const Flight& flight()
{
    static const Flight instance;
    return instance;
}

datamodel::TmFile loadedMarks()
{
    datamodel::TmFile tm(flight().tmPath());
    tm.load(datamodel::TmFile::CT_TYPE, datamodel::seconds(flight().ct().front()),
            datamodel::seconds(flight().ct().back()));
    return tm;
}

// The whole band in one call: one walk over the marks.
void BM_BandCtToGpsInMemory(benchmark::State& state)
{
    const datamodel::TmFile tm = loadedMarks();
    const std::vector<double>& ct = flight().ct();
    std::vector<datamodel::Seconds> gps(ct.size());
    for (auto _ : state) {
        tm.gpsAtCT(ct, gps);
        benchmark::DoNotOptimize(gps.data());
        benchmark::ClobberMemory();
    }
    // The result must be bit for bit that of single conversions.
    for (std::size_t i = 0; i < ct.size(); ++i) {
        const datamodel::Seconds single = tm.gpsAtCT(datamodel::seconds(ct[i]));
        if (std::memcmp(&gps[i], &single, sizeof(double)) != 0) {
            state.SkipWithError("batch conversion differs from line-by-line conversion");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(ct.size()));
}
BENCHMARK(BM_BandCtToGpsInMemory);

// The same band line by line, each conversion with its predicted-index search.
void BM_BandCtToGpsLineByLine(benchmark::State& state)
{
    const datamodel::TmFile tm = loadedMarks();
    const std::vector<double>& ct = flight().ct();
    std::vector<datamodel::Seconds> gps(ct.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i < ct.size(); ++i)
            gps[i] = tm.gpsAtCT(datamodel::seconds(ct[i]));
        benchmark::DoNotOptimize(gps.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(ct.size()));
}
BENCHMARK(BM_BandCtToGpsLineByLine);

// Reading the time-mark file of the two-hour flight (7201 marks).
void BM_ReadTimeMarkFile(benchmark::State& state)
{
    for (auto _ : state) {
        datamodel::TmFile tm(flight().tmPath());
        benchmark::DoNotOptimize(tm.numLoadedSets());
    }
}
BENCHMARK(BM_ReadTimeMarkFile);

// A band's missing CTG file made as the take validation makes it: read the
// CT file, convert through the session's (already read) time marks, write
// the CTG file beside it, whole or not at all.
void BM_CreateCtgFileFromDisk(benchmark::State& state)
{
    datamodel::RecordingSession session(flight().directory());
    datamodel::InfoFile info(flight().path("raw/L001PANN00A.info"), datamodel::InfoFile::STRIPNAMEREGEX);
    std::vector<datamodel::InfoFile*> infos{&info};
    auto* take = new datamodel::Take(session, "L001", infos, 500.0f, 2000.0f, "2004", "ZEL", 1);
    session.addTake(take);
    datamodel::L0Image& image = *take->imagesL0().front();
    (void)session.tmFile();
    for (auto _ : state) {
        image.uncache();
        image.cameraTime().createFromCtTmFiles();
    }
    QFile::remove(QString::fromStdString(image.ctgFilename()));
    state.SetItemsProcessed(state.iterations() * sLines);
    state.SetBytesProcessed(state.iterations() * std::int64_t(16 + 8 * sLines + 8 * sLines));
}
BENCHMARK(BM_CreateCtgFileFromDisk)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
