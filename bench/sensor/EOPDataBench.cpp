// The EOP file of one take: 75 s (60 000 scan lines at 800 lines/s) sampled
// at the IMU rate of 200 Hz, 15 000 samples with standard deviations,
// written by the benchmark into a temporary folder. Measures reading it and
// asking it for the exterior orientation at random and at consecutive
// scan-line times.

#include <platform/sensor/EOPData.h>

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <stdexcept>
#include <vector>

namespace {

constexpr int sSamples = 15000;
constexpr double sImuRateHz = 200.0;
constexpr double sLineRateHz = 800.0;
constexpr double sStartSec = 302400.25;

class Take {
public:
    Take()
    {
        if (!m_dir.isValid())
            throw std::runtime_error("bench setup: no temporary folder");
        m_path = m_dir.filePath(QStringLiteral("L001.eop")).toStdString();
        sensor::EOPData eop("", false, true);
        eop.setAnchorPoint({0.2007, 0.8395, 0.0});
        eop.setFrequency(sImuRateHz);
        eop.setAbsTime(604800u * 1400u);
        eop.setPosSource("/flights/F1/gps-imu/F1/extract/sbet_F1.out");
        eop.setTmSource("Times from CTG files");
        eop.setAppSource("EopTrajectory");
        for (int i = 0; i < sSamples; ++i) {
            const double t = i / sImuRateHz;
            // Flying east at 70 m/s, 2000 m up, heading wobbling a little.
            const double halfKappa = 0.5 * 0.02 * std::sin(0.3 * t);
            sensor::EOP sample;
            sample.time = sStartSec + t;
            sample.q = {float(std::cos(halfKappa)), 0.0f, 0.0f, float(std::sin(halfKappa))};
            sample.x = 70.0 * t;
            sample.y = 3.0 * std::sin(0.1 * t);
            sample.z = 2000.0 + 0.5 * std::cos(0.2 * t);
            eop.append(sample, {0.02, 0.02, 0.04, 1e-5, 1e-5, 3e-5});
        }
        eop.write(m_path);
    }
    const std::string& path() const { return m_path; }

private:
    QTemporaryDir m_dir;
    std::string m_path;
};

const Take& take()
{
    static const Take sTake;
    return sTake;
}

void BM_ReadEopFile(benchmark::State& state)
{
    const std::string& path = take().path();
    for (auto _ : state) {
        sensor::EOPData eop(path, true, true);
        benchmark::DoNotOptimize(eop.size());
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(sSamples) * 100);
}
BENCHMARK(BM_ReadEopFile)->Unit(benchmark::kMicrosecond);

void BM_AtGpsRandom(benchmark::State& state)
{
    const sensor::EOPData eop(take().path(), true, true);
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> within(sStartSec, sStartSec + (sSamples - 1) / sImuRateHz);
    std::vector<util::Seconds> times(1 << 16);
    for (util::Seconds& time : times)
        time = util::seconds(within(random));
    sensor::EOP sample;
    std::size_t i = 0;
    for (auto _ : state) {
        if (eop.atGPS(times[i++ & (times.size() - 1)], sample) != 0)
            state.SkipWithError("atGPS failed");
        benchmark::DoNotOptimize(sample);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AtGpsRandom);

void BM_AtGpsScanLines(benchmark::State& state)
{
    // Every scan line of the take in order, as a band is projected.
    const sensor::EOPData eop(take().path(), true, true);
    const int lines = int((sSamples - 1) / sImuRateHz * sLineRateHz);
    sensor::EOP sample;
    for (auto _ : state) {
        for (int line = 0; line < lines; ++line) {
            eop.atGPS(util::seconds(sStartSec + line / sLineRateHz), sample);
            benchmark::DoNotOptimize(sample);
        }
    }
    state.SetItemsProcessed(state.iterations() * lines);
}
BENCHMARK(BM_AtGpsScanLines)->Unit(benchmark::kMillisecond);

} // namespace
