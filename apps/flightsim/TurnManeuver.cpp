#include <flightsim/TurnManeuver.h>
#include <flightsim/Wgs84.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace flightsim {

namespace {
constexpr double sMaxStepSec = 0.01;
constexpr double sPi = std::numbers::pi;
} // namespace

CurvePath::CurvePath(std::vector<CurvaturePiece> pieces, double speedMps)
    : m_pieces(std::move(pieces))
    , m_speedMps(speedMps)
{
    double x = 0.0;
    double y = 0.0;
    double startSec = 0.0;
    double headingRad = 0.0;
    for (std::size_t p = 0; p < m_pieces.size(); ++p) {
        const CurvaturePiece& piece = m_pieces[p];
        Table table;
        table.startSec = startSec;
        table.startHeadingRad = headingRad;
        m_tables.push_back(table);
        Table& t = m_tables.back();
        const int steps = std::max(1, int(std::ceil(piece.durationSec / sMaxStepSec)));
        t.stepSec = piece.durationSec / steps;
        t.xM.reserve(std::size_t(steps) + 1);
        t.yM.reserve(std::size_t(steps) + 1);
        t.xM.push_back(x);
        t.yM.push_back(y);
        for (int j = 0; j < steps; ++j) {
            const double a = heading(p, j * t.stepSec);
            const double m = heading(p, (j + 0.5) * t.stepSec);
            const double b = heading(p, (j + 1) * t.stepSec);
            const double scale = m_speedMps * t.stepSec / 6.0;
            x += scale * (std::cos(a) + 4.0 * std::cos(m) + std::cos(b));
            y += scale * (std::sin(a) + 4.0 * std::sin(m) + std::sin(b));
            t.xM.push_back(x);
            t.yM.push_back(y);
        }
        headingRad = heading(p, piece.durationSec);
        startSec += piece.durationSec;
    }
    m_durationSec = startSec;
}

double CurvePath::heading(std::size_t piece, double localSec) const
{
    const CurvaturePiece& p = m_pieces[piece];
    const double slope = p.durationSec > 0.0 ? (p.endPerM - p.startPerM) / p.durationSec : 0.0;
    return m_tables[piece].startHeadingRad
        + m_speedMps * (p.startPerM * localSec + 0.5 * slope * localSec * localSec);
}

CurvePath::State CurvePath::at(double tSec) const
{
    State state;
    if (m_pieces.empty())
        return state;
    tSec = std::clamp(tSec, 0.0, m_durationSec);
    std::size_t p = 0;
    while (p + 1 < m_pieces.size() && tSec >= m_tables[p + 1].startSec)
        ++p;
    const Table& table = m_tables[p];
    const CurvaturePiece& piece = m_pieces[p];
    const double local = std::min(tSec - table.startSec, piece.durationSec);
    const std::size_t steps = table.xM.size() - 1;
    const std::size_t j = std::min(steps - 1, std::size_t(std::max(0.0, std::floor(local / table.stepSec))));
    const double from = double(j) * table.stepSec;
    const double a = heading(p, from);
    const double m = heading(p, 0.5 * (from + local));
    const double b = heading(p, local);
    const double scale = m_speedMps * (local - from) / 6.0;
    state.xM = table.xM[j] + scale * (std::cos(a) + 4.0 * std::cos(m) + std::cos(b));
    state.yM = table.yM[j] + scale * (std::sin(a) + 4.0 * std::sin(m) + std::sin(b));
    state.headingRad = b;
    state.curvaturePerM = piece.durationSec > 0.0
        ? piece.startPerM + (piece.endPerM - piece.startPerM) * local / piece.durationSec
        : piece.endPerM;
    return state;
}

CurvePath CurvePath::mirrored() const
{
    std::vector<CurvaturePiece> pieces = m_pieces;
    for (CurvaturePiece& piece : pieces) {
        piece.startPerM = -piece.startPerM;
        piece.endPerM = -piece.endPerM;
    }
    return CurvePath(std::move(pieces), m_speedMps);
}

std::vector<CurvaturePiece> TurnManeuver::turn(double angleRad, double curvaturePerM, double rampSec,
                                               double speedMps)
{
    const double sign = angleRad < 0.0 ? -1.0 : 1.0;
    const double angle = std::abs(angleRad);
    if (angle == 0.0)
        return {};
    // A full ramp up and down alone turns by curvature * speed * ramp.
    if (angle >= curvaturePerM * speedMps * rampSec) {
        const double holdSec = angle / (curvaturePerM * speedMps) - rampSec;
        std::vector<CurvaturePiece> pieces{{rampSec, 0.0, sign * curvaturePerM}};
        if (holdSec > 0.0)
            pieces.push_back({holdSec, sign * curvaturePerM, sign * curvaturePerM});
        pieces.push_back({rampSec, sign * curvaturePerM, 0.0});
        return pieces;
    }
    const double peak = angle / (speedMps * rampSec);
    return {{rampSec, 0.0, sign * peak}, {rampSec, sign * peak, 0.0}};
}

TurnManeuver::TurnManeuver(double speedMps, double maxBankRad, double rollRateRadPerSec, double lateralOffsetM)
{
    const double maxCurvature = Wgs84::sGravityMps2 * std::tan(maxBankRad) / (speedMps * speedMps);
    const double rampSec = maxBankRad / rollRateRadPerSec;
    auto reversal = [&](double curvature) { return CurvePath(turn(sPi, curvature, rampSec, speedMps), speedMps); };
    auto teardrop = [&](double alpha) {
        std::vector<CurvaturePiece> pieces = turn(-alpha, maxCurvature, rampSec, speedMps);
        for (const CurvaturePiece& piece : turn(sPi + 2.0 * alpha, maxCurvature, rampSec, speedMps))
            pieces.push_back(piece);
        for (const CurvaturePiece& piece : turn(-alpha, maxCurvature, rampSec, speedMps))
            pieces.push_back(piece);
        return CurvePath(std::move(pieces), speedMps);
    };
    constexpr double sToleranceM = 1e-7;

    if (reversal(maxCurvature).end().yM <= lateralOffsetM) {
        // A gentler 180-degree turn: the offset grows as the curvature falls.
        double tight = maxCurvature;
        double gentle = maxCurvature;
        while (reversal(gentle).end().yM <= lateralOffsetM)
            gentle *= 0.5;
        for (int i = 0; i < 200 && tight - gentle > 1e-15; ++i) {
            const double middle = 0.5 * (tight + gentle);
            const double offset = reversal(middle).end().yM;
            if (std::abs(offset - lateralOffsetM) < sToleranceM) {
                tight = gentle = middle;
                break;
            }
            (offset > lateralOffsetM ? gentle : tight) = middle;
        }
        const double curvature = 0.5 * (tight + gentle);
        m_path = reversal(curvature);
        m_bankRad = std::atan(curvature * speedMps * speedMps / Wgs84::sGravityMps2);
        return;
    }
    // Teardrop: the offset falls as alpha grows, to -2R at alpha = 90 degrees.
    double low = 0.0;
    double high = 0.5 * sPi;
    if (teardrop(high).end().yM > lateralOffsetM)
        throw std::runtime_error("Cannot plan a turn for a line spacing of " + std::to_string(lateralOffsetM) + " m");
    for (int i = 0; i < 200 && high - low > 1e-15; ++i) {
        const double middle = 0.5 * (low + high);
        const double offset = teardrop(middle).end().yM;
        if (std::abs(offset - lateralOffsetM) < sToleranceM) {
            low = high = middle;
            break;
        }
        (offset > lateralOffsetM ? low : high) = middle;
    }
    m_path = teardrop(0.5 * (low + high));
    m_teardrop = true;
    m_bankRad = maxBankRad;
}

} // namespace flightsim
