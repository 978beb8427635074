#include <flightsim/AttitudeModel.h>

#include <cmath>
#include <numbers>

namespace flightsim {

namespace {

constexpr double sDegToRad = std::numbers::pi / 180.0;
constexpr double sGustsPerSecond = 1.0 / 30.0;
constexpr double sHeavyMarginSec = 5.0;
constexpr double sHeavyFadeSec = 3.0;
constexpr double sHeightLagSec = 2.0;

// Raised cosine from 0 to 1 over [0, 1].
double fade(double x)
{
    if (x <= 0.0)
        return 0.0;
    if (x >= 1.0)
        return 1.0;
    return 0.5 - 0.5 * std::cos(std::numbers::pi * x);
}

} // namespace

void AttitudeModel::Process::start(Random& random)
{
    value = sigma * random.normal();
    rate = sigma * omega * random.normal();
}

double AttitudeModel::Process::step(Random& random, double dtSec)
{
    if (sigma == 0.0)
        return 0.0;
    // x'' = -2 w x' - w^2 x + q n(t); its stationary deviation is sigma for
    // q = 2 sigma w^1.5, and the deviation of its rate is sigma w.
    const double q = 2.0 * sigma * omega * std::sqrt(omega);
    rate += (-2.0 * omega * rate - omega * omega * value) * dtSec + q * std::sqrt(dtSec) * random.normal();
    value += rate * dtSec;
    return value;
}

AttitudeModel::AttitudeModel(const SimulationConfig& config, const FlightPlan& plan)
    : m_dtSec(1.0 / config.imuRateHz)
    , m_random(streamSeed(config.seed, RandomStream::Turbulence))
    , m_heavyRandom(streamSeed(config.seed, RandomStream::HeavyTurbulence))
    , m_turbulence(config.turbulence)
{
    const double s = config.turbulence;
    m_roll = {0.30 * sDegToRad * s, 0.8};
    m_pitch = {0.20 * sDegToRad * s, 0.8};
    m_heading = {0.15 * sDegToRad * s, 0.5};
    m_height = {0.30 * s, 0.4};
    for (Process* p : {&m_roll, &m_pitch, &m_heading, &m_height})
        p->start(m_random);

    if (s > 0.0) {
        Random gusts(streamSeed(config.seed, RandomStream::Gusts));
        double t = -std::log(1.0 - gusts.uniform()) / sGustsPerSecond;
        while (t < plan.durationSec()) {
            Gust gust;
            gust.startSec = t;
            gust.durationSec = gusts.uniform(3.0, 6.0);
            gust.rollRad = gusts.uniform(-0.5, 0.5) * sDegToRad * s;
            gust.pitchRad = gusts.uniform(-0.3, 0.3) * sDegToRad * s;
            gust.headingRad = gusts.uniform(-0.2, 0.2) * sDegToRad * s;
            gust.heightM = gusts.uniform(-0.5, 0.5) * s;
            m_gusts.push_back(gust);
            t += -std::log(1.0 - gusts.uniform()) / sGustsPerSecond;
        }
    }

    if (config.faults.has(Fault::HeavyTurbulence)) {
        const TakeWindow& take = plan.takes()[std::size_t(config.faultTakeIndex())];
        m_heavy = true;
        m_heavyStartSec = take.startSec - sHeavyMarginSec;
        m_heavyEndSec = take.lastLineSec() + sHeavyMarginSec;
        m_heavyRoll = {2.0 * sDegToRad, 2.5};
        m_heavyPitch = {1.2 * sDegToRad, 2.5};
        m_heavyHeading = {0.8 * sDegToRad, 1.5};
        m_heavyHeight = {3.0, 1.0};
        for (Process* p : {&m_heavyRoll, &m_heavyPitch, &m_heavyHeading, &m_heavyHeight})
            p->start(m_heavyRandom);
        m_smoothHeavyHeightM = m_heavyHeight.value;
    }
    m_smoothHeightM = m_height.value;
}

AttitudeModel::Perturbation AttitudeModel::next()
{
    const double t = double(m_index) * m_dtSec;
    Perturbation p;
    // The processes advance from the second record on, so record 0 holds their start values.
    const double dt = m_index == 0 ? 0.0 : m_dtSec;
    p.rollRad = dt > 0.0 ? m_roll.step(m_random, dt) : m_roll.value;
    p.pitchRad = dt > 0.0 ? m_pitch.step(m_random, dt) : m_pitch.value;
    p.headingRad = dt > 0.0 ? m_heading.step(m_random, dt) : m_heading.value;
    const double height = dt > 0.0 ? m_height.step(m_random, dt) : m_height.value;
    m_smoothHeightM += (height - m_smoothHeightM) * dt / sHeightLagSec;
    p.heightM = m_smoothHeightM;

    while (m_nextGust < m_gusts.size() && m_gusts[m_nextGust].startSec <= t)
        m_activeGusts.push_back(m_gusts[m_nextGust++]);
    while (!m_activeGusts.empty() && m_activeGusts.front().startSec + 2.0 * m_activeGusts.front().durationSec < t)
        m_activeGusts.pop_front();
    for (const Gust& gust : m_activeGusts) {
        const double x = (t - gust.startSec) / gust.durationSec;
        if (x >= 0.0 && x <= 1.0) {
            const double shape = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * x);
            p.rollRad += gust.rollRad * shape;
            p.pitchRad += gust.pitchRad * shape;
            p.headingRad += gust.headingRad * shape;
        }
        const double y = 0.5 * x; // the height's bump lasts twice as long
        if (y >= 0.0 && y <= 1.0)
            p.heightM += gust.heightM * (0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * y));
    }

    if (m_heavy) {
        // The heavy processes run over the whole flight (so the numbers do
        // not depend on where the window lies) but only show inside it.
        const double roll = dt > 0.0 ? m_heavyRoll.step(m_heavyRandom, dt) : m_heavyRoll.value;
        const double pitch = dt > 0.0 ? m_heavyPitch.step(m_heavyRandom, dt) : m_heavyPitch.value;
        const double heading = dt > 0.0 ? m_heavyHeading.step(m_heavyRandom, dt) : m_heavyHeading.value;
        const double heavyHeight = dt > 0.0 ? m_heavyHeight.step(m_heavyRandom, dt) : m_heavyHeight.value;
        m_smoothHeavyHeightM += (heavyHeight - m_smoothHeavyHeightM) * dt / sHeightLagSec;
        const double weight = std::min(fade((t - m_heavyStartSec) / sHeavyFadeSec),
                                       fade((m_heavyEndSec - t) / sHeavyFadeSec));
        p.rollRad += weight * roll;
        p.pitchRad += weight * pitch;
        p.headingRad += weight * heading;
        p.heightM += weight * m_smoothHeavyHeightM;
    }
    ++m_index;
    return p;
}

QJsonObject AttitudeModel::heavyToJson() const
{
    return QJsonObject{{QStringLiteral("fromFlightSec"), m_heavyStartSec},
                       {QStringLiteral("toFlightSec"), m_heavyEndSec},
                       {QStringLiteral("rollSigmaDeg"), m_heavyRoll.sigma / sDegToRad},
                       {QStringLiteral("pitchSigmaDeg"), m_heavyPitch.sigma / sDegToRad},
                       {QStringLiteral("headingSigmaDeg"), m_heavyHeading.sigma / sDegToRad},
                       {QStringLiteral("heightSigmaM"), m_heavyHeight.sigma}};
}

QJsonObject AttitudeModel::toJson() const
{
    auto process = [](const Process& p, bool angle) {
        return QJsonObject{{angle ? QStringLiteral("sigmaDeg") : QStringLiteral("sigmaM"),
                            angle ? p.sigma / sDegToRad : p.sigma},
                           {QStringLiteral("omegaRadPerSec"), p.omega}};
    };
    return QJsonObject{{QStringLiteral("scale"), m_turbulence},
                       {QStringLiteral("roll"), process(m_roll, true)},
                       {QStringLiteral("pitch"), process(m_pitch, true)},
                       {QStringLiteral("heading"), process(m_heading, true)},
                       {QStringLiteral("height"), process(m_height, false)},
                       {QStringLiteral("gusts"), static_cast<int>(m_gusts.size())}};
}

} // namespace flightsim
