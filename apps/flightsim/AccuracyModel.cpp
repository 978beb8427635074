#include <flightsim/AccuracyModel.h>
#include <flightsim/Random.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace flightsim {

namespace {

// Mean, amplitude and period (s) of each deviation, in the order of Sigmas.
struct Wave {
    double mean;
    double amplitude;
    double periodSec;
};
constexpr Wave sWaves[9] = {
    {0.020, 0.008, 1500.0}, {0.022, 0.008, 1300.0}, {0.045, 0.015, 1700.0},
    {0.004, 0.001, 900.0},  {0.004, 0.001, 1100.0}, {0.006, 0.002, 1000.0},
    {0.28, 0.05, 800.0},    {0.27, 0.05, 700.0},    {0.75, 0.20, 1200.0},
};

} // namespace

AccuracyModel::AccuracyModel(double durationSec, double intervalSec, std::uint64_t seed)
    : m_intervalSec(intervalSec)
{
    Random random(streamSeed(seed, RandomStream::Accuracy));
    for (double& phase : m_phases)
        phase = random.uniform(0.0, 2.0 * std::numbers::pi);
    const long long count = (long long)std::floor(durationSec / intervalSec + 1e-9);
    for (long long i = 0; i <= count; ++i)
        m_knotSec.push_back(double(i) * intervalSec);
    if (m_knotSec.back() < durationSec - 1e-9)
        m_knotSec.push_back(durationSec);
    for (double t : m_knotSec)
        m_knots.push_back(knotValue(t));
}

AccuracyModel::Sigmas AccuracyModel::knotValue(double tSec) const
{
    double v[9];
    for (int i = 0; i < 9; ++i)
        v[i] = sWaves[i].mean + sWaves[i].amplitude * std::sin(2.0 * std::numbers::pi * tSec / sWaves[i].periodSec + m_phases[i]);
    return {v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8]};
}

AccuracyModel::Sigmas AccuracyModel::at(double tSec) const
{
    if (tSec <= m_knotSec.front())
        return m_knots.front();
    if (tSec >= m_knotSec.back())
        return m_knots.back();
    const std::size_t i = std::size_t(std::upper_bound(m_knotSec.begin(), m_knotSec.end(), tSec) - m_knotSec.begin()) - 1;
    const double w = (tSec - m_knotSec[i]) / (m_knotSec[i + 1] - m_knotSec[i]);
    const Sigmas& a = m_knots[i];
    const Sigmas& b = m_knots[i + 1];
    auto mix = [w](double x, double y) { return x + w * (y - x); };
    return {mix(a.northM, b.northM), mix(a.eastM, b.eastM), mix(a.downM, b.downM),
            mix(a.velocityNorthMps, b.velocityNorthMps), mix(a.velocityEastMps, b.velocityEastMps),
            mix(a.velocityDownMps, b.velocityDownMps), mix(a.rollArcmin, b.rollArcmin),
            mix(a.pitchArcmin, b.pitchArcmin), mix(a.headingArcmin, b.headingArcmin)};
}

} // namespace flightsim
