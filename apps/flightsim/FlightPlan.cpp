#include <flightsim/FlightPlan.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace flightsim {

namespace {

constexpr double sPi = std::numbers::pi;
constexpr double sDegToRad = sPi / 180.0;
// Gap between the end of a dark take and the start of its image take.
constexpr double sDarkGapSec = 1.0;

QString label(const char* prefix, int lineNumber)
{
    return QLatin1String(prefix) + QStringLiteral("%1").arg(lineNumber, 3, 10, QLatin1Char('0'));
}

} // namespace

FlightPlan::FlightPlan(const SimulationConfig& config)
    : m_speedMps(config.speedMps)
    , m_lineLengthM(config.speedMps * config.linesPerTake / config.lineRateHz)
{
    if (config.takes > 1) {
        m_turn = std::make_shared<TurnManeuver>(config.speedMps, config.maxBankDeg * sDegToRad,
                                                config.rollRateDegPerSec * sDegToRad, config.lineSpacingM);
        m_curves[0] = m_turn->path();
        m_curves[1] = m_turn->path().mirrored();
    }
    double leadIn = config.leadInSec;
    double leadOut = config.leadOutSec;
    if (config.durationSec > 0.0) {
        build(config, 0.0, 0.0);
        const double coreSec = m_durationSec;
        const double fillSec = config.durationSec - coreSec;
        const double darkSec = config.darkTakes > 0 ? config.darkLines / config.lineRateHz + 2.0 * sDarkGapSec : 0.0;
        if (fillSec < 2.0 * std::max(1.0, darkSec))
            throw ConfigError(QStringLiteral("a flight of %1 s (--duration) is too short: the takes and turns "
                                             "alone take %2 s")
                                  .arg(config.durationSec)
                                  .arg(coreSec, 0, 'f', 1)
                                  .toStdString());
        leadIn = leadOut = 0.5 * fillSec;
    }
    build(config, leadIn, leadOut);
}

void FlightPlan::build(const SimulationConfig& config, double leadInSec, double leadOutSec)
{
    m_segments.clear();
    m_takes.clear();
    m_darkTakes.clear();
    m_leadInSec = leadInSec;
    m_leadOutSec = leadOutSec;

    const double v = m_speedMps;
    const double marginM = config.runMarginSec * v;
    const double forwardM = m_turn ? m_turn->forwardM() : 0.0;
    // The turn must leave at least the margin before the next take.
    const double runOutM = std::max(marginM, marginM - forwardM);
    const double runInM = runOutM + forwardM;
    const double darkSec = config.darkLines / config.lineRateHz;

    double t = 0.0;
    for (int i = 0; i < config.takes; ++i) {
        const int direction = i % 2 == 0 ? 1 : -1;
        const double y = (i - 0.5 * (config.takes - 1)) * config.lineSpacingM;
        const double heading = direction > 0 ? 0.0 : sPi;
        const double takeStartX = -0.5 * direction * m_lineLengthM;
        const double inM = i == 0 ? leadInSec * v : runInM;
        const double outM = i == config.takes - 1 ? leadOutSec * v : runOutM;

        Segment straight;
        straight.startSec = t;
        straight.durationSec = (inM + m_lineLengthM + outM) / v;
        straight.x0 = takeStartX - direction * inM;
        straight.y0 = y;
        straight.heading0 = heading;
        m_segments.push_back(straight);

        TakeWindow take;
        take.index = i;
        take.lineNumber = i + 1;
        take.label = label("L", i + 1);
        take.startSec = t + inM / v;
        take.lines = config.linesPerTake;
        take.lineRateHz = config.lineRateHz;
        take.yM = y;
        take.startXM = takeStartX;
        take.direction = direction;
        m_takes.push_back(take);

        if (i < config.darkTakes && (leadInSec > 0.0 || i > 0)) {
            if (inM / v < darkSec + 2.0 * sDarkGapSec)
                throw ConfigError(QStringLiteral("the dark take of %1 lines (%2 s) does not fit into the %3 of "
                                                 "%4 s before take %5 (%6)")
                                      .arg(config.darkLines)
                                      .arg(darkSec, 0, 'f', 2)
                                      .arg(i == 0 ? QStringLiteral("lead-in") : QStringLiteral("run-in"))
                                      .arg(inM / v, 0, 'f', 2)
                                      .arg(take.label,
                                           i == 0 ? QStringLiteral("--lead-in") : QStringLiteral("--run-margin"))
                                      .toStdString());
            TakeWindow dark = take;
            dark.label = label("DK", i + 1);
            dark.dark = true;
            dark.lines = config.darkLines;
            dark.startSec = take.startSec - sDarkGapSec - darkSec;
            dark.startXM = takeStartX - direction * v * (sDarkGapSec + darkSec);
            m_darkTakes.push_back(dark);
        }
        t += straight.durationSec;

        if (i + 1 < config.takes) {
            Segment curve;
            curve.startSec = t;
            curve.durationSec = m_turn->durationSec();
            curve.x0 = -takeStartX + direction * runOutM;
            curve.y0 = y;
            curve.heading0 = heading;
            // Lines lie at increasing y: from +x that is a left turn, from -x a right one.
            curve.curve = direction > 0 ? 0 : 1;
            m_segments.push_back(curve);
            t += curve.durationSec;
        }
    }
    m_durationSec = t;
}

PlaneState FlightPlan::at(double tSec) const
{
    tSec = std::clamp(tSec, 0.0, m_durationSec);
    // The first segment starts at 0, so the one found is never before it.
    const auto next = std::upper_bound(m_segments.begin() + 1, m_segments.end(), tSec,
                                       [](double t, const Segment& s) { return t < s.startSec; });
    const Segment& segment = *std::prev(next);
    const double local = tSec - segment.startSec;
    const double cosH = std::cos(segment.heading0);
    const double sinH = std::sin(segment.heading0);
    PlaneState state;
    if (segment.curve < 0) {
        state.xM = segment.x0 + m_speedMps * local * cosH;
        state.yM = segment.y0 + m_speedMps * local * sinH;
        state.headingRad = segment.heading0;
        return state;
    }
    const CurvePath::State c = m_curves[segment.curve].at(local);
    state.xM = segment.x0 + c.xM * cosH - c.yM * sinH;
    state.yM = segment.y0 + c.xM * sinH + c.yM * cosH;
    state.headingRad = segment.heading0 + c.headingRad;
    state.curvaturePerM = c.curvaturePerM;
    return state;
}

} // namespace flightsim
