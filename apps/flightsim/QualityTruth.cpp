#include <flightsim/QualityTruth.h>

#include <flightsim/TruthWriter.h>
#include <flightsim/Wgs84.h>

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace flightsim {

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;

Vec3 times(const Matrix& m, const Vec3& v)
{
    return {m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z, m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z,
            m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z};
}

double unwrapped(double from, double to)
{
    double d = to - from;
    while (d > std::numbers::pi)
        d -= 2.0 * std::numbers::pi;
    while (d < -std::numbers::pi)
        d += 2.0 * std::numbers::pi;
    return d;
}

struct State {
    Vec3 centre; ///< projection centre, LSR, z less the nominal z offset
    Matrix lsrFromCamera;
};

struct LineMeasures {
    double ncs = 1.0, rpe = 0.0, psr = 0.0;
};

} // namespace

QualityTruth::QualityTruth(const SimulationConfig& config, const FlightPlan& plan, const LocalPlane& plane,
                           const SimulatedTrajectory& trajectory, const Terrain& terrain, const CameraModel& camera,
                           const GpsTime& start)
    : m_config(config)
    , m_plan(plan)
    , m_plane(plane)
    , m_trajectory(trajectory)
    , m_terrain(terrain)
    , m_camera(camera)
    , m_start(start)
{
}

QJsonObject QualityTruth::take(const TakeWindow& take) const
{
    const PlaneState first = m_plan.at(take.startSec);
    double anchorLat = 0.0, anchorLon = 0.0;
    m_plane.toGeodetic(first.xM, first.yM, anchorLat, anchorLon);
    const Vec3 origin = Wgs84::toEcef(anchorLat, anchorLon, 0.0);
    const Vec3 east = Wgs84::east(anchorLon), north = Wgs84::north(anchorLat, anchorLon),
               up = Wgs84::up(anchorLat, anchorLon);
    std::array<double, 3> misalignment{};
    for (std::size_t i = 0; i < 3; ++i)
        misalignment[i] = m_config.misalignmentDeg[i] * std::numbers::pi / 180.0;

    // The band nearest nadir, the first on a tie.
    const BandSpec* band = &m_camera.bands().front();
    for (const BandSpec& b : m_camera.bands())
        if (std::abs(b.lookAngleRad) < std::abs(band->lookAngleRad))
            band = &b;

    const double rate = m_trajectory.rateHz();
    const auto& lat = m_trajectory.latRad();
    const auto& lon = m_trajectory.lonRad();
    const auto& height = m_trajectory.heightM();
    const auto& roll = m_trajectory.rollRad();
    const auto& pitch = m_trajectory.pitchRad();
    const auto& heading = m_trajectory.headingRad();
    const auto state = [&](double flightSec) {
        const double at = flightSec * rate;
        const auto k = std::size_t(std::clamp(std::floor(at), 0.0, double(m_trajectory.size() - 2)));
        const double f = at - double(k);
        const auto mix = [&](const std::vector<double>& v) { return v[k] + f * (v[k + 1] - v[k]); };
        const double la = mix(lat), h = mix(height);
        const double lo = lon[k] + f * unwrapped(lon[k], lon[k + 1]);
        const Vec3 offset = Wgs84::toEcef(la, lo, h) - origin;
        State s;
        s.centre = {offset.dot(east), offset.dot(north), offset.dot(up) - m_config.nominalZOffsetM};
        s.lsrFromCamera = TruthWriter::lsrFromCamera(anchorLat, anchorLon, la, lo, mix(roll), mix(pitch),
                                                     heading[k] + f * unwrapped(heading[k], heading[k + 1]),
                                                     misalignment);
        return s;
    };

    // Where the ray of CCD pixel `pixel` meets the terrain: the height above
    // the ellipsoid of the ray's point less the terrain's height there,
    // brought to zero by secant steps along the ray.
    const double focal = m_camera.focalLengthMm();
    const auto ground = [&](const State& s, double pixel) {
        Vec3 ray{band->ccdXMm, band->ccdYMm + pixel * m_camera.pixelSizeMm(), -focal};
        ray = ray * (1.0 / std::sqrt(ray.dot(ray)));
        const Vec3 d = times(s.lsrFromCamera, ray);
        const auto miss = [&](double along) {
            const Vec3 p = s.centre + d * along;
            double la = 0.0, lo = 0.0, h = 0.0;
            Wgs84::toGeodetic(origin + east * p.x + north * p.y + up * p.z, la, lo, h);
            double x = 0.0, y = 0.0;
            m_plane.toPlane(la, lo, x, y);
            return h - m_terrain.heightAt(x, y);
        };
        double a = (s.centre.z - m_terrain.meanHeightM()) / -d.z, b = a + 1.0;
        double fa = miss(a), fb = miss(b);
        for (int i = 0; i < 40 && std::abs(fb) > 1e-6 && fb != fa; ++i) {
            const double c = b - fb * (b - a) / (fb - fa);
            a = b, fa = fb;
            b = c, fb = miss(b);
        }
        return s.centre + d * b;
    };

    const int pixels = m_camera.ccdPixels();
    const std::array<double, 3> sides{0.0, 0.5 * (pixels - 1), double(pixels - 1)};
    const auto footprint = [&](const State& s) {
        std::array<Vec3, 3> g;
        for (std::size_t p = 0; p < 3; ++p)
            g[p] = ground(s, sides[p]);
        return g;
    };

    // The EOP samples: the first scan line's time, then every trajectory
    // interval up to the last line.
    const double period = 1.0 / take.lineRateHz;
    const auto sampleCount = (long long)std::floor((take.lastLineSec() - take.startSec) * rate + 1e-9) + 1;
    const auto sampleSec = [&](long long k) { return take.startSec + double(k) / rate; };
    const Vec3 course = state(sampleSec(sampleCount - 1)).centre - state(take.startSec).centre;
    const double courseLength = std::hypot(course.x, course.y);
    const double dx = course.x / courseLength, dy = course.y / courseLength;
    const double pixelRatio = m_camera.pixelSizeMm() / focal;

    const auto measures = [&](const State& s0, const std::array<Vec3, 3>& g0, const State& s1,
                              const std::array<Vec3, 3>& g1) {
        LineMeasures m;
        const double nominal = (s1.centre.x - s0.centre.x) * dx + (s1.centre.y - s0.centre.y) * dy;
        // The covered polygon: line i from the first pixel to the last, then
        // line i + 1 back; the shoelace area, relative to its first corner.
        const std::array<Vec3, 6> ring{g0[0], g0[1], g0[2], g1[2], g1[1], g1[0]};
        double area = 0.0;
        for (std::size_t k = 0; k < ring.size(); ++k) {
            const Vec3 p = ring[k] - ring[0], q = ring[(k + 1) % ring.size()] - ring[0];
            area += p.x * q.y - q.x * p.y;
        }
        area *= 0.5;
        // Counter-clockwise (positive) when the last pixel lies to the right
        // of the flight and line i + 1 ahead: turn the sign accordingly.
        const double lastSide = (g0[2].x - g0[0].x) * -dy + (g0[2].y - g0[0].y) * dx; // > 0: last pixel to the left
        const double length = std::hypot(g0[1].x - g0[0].x, g0[1].y - g0[0].y)
            + std::hypot(g0[2].x - g0[1].x, g0[2].y - g0[1].y);
        m.ncs = (lastSide > 0.0 ? -area : area) / (length * nominal);
        const Vec3 range = g0[1] - s0.centre;
        const double pixel = std::sqrt(range.dot(range)) * pixelRatio;
        const double moveX = g1[1].x - g0[1].x, moveY = g1[1].y - g0[1].y;
        m.rpe = (moveX * dx + moveY * dy - nominal) / pixel;
        m.psr = std::hypot(moveX - (s1.centre.x - s0.centre.x), moveY - (s1.centre.y - s0.centre.y)) / pixel;
        return m;
    };

    std::vector<LineMeasures> samples(static_cast<std::size_t>(sampleCount));
    std::vector<bool> seen(samples.size(), false);
    State before = state(take.lineSec(0));
    std::array<Vec3, 3> groundBefore = footprint(before);
    for (long long i = 0; i < take.lines; ++i) {
        const State after = state(take.lineSec(i + 1));
        const std::array<Vec3, 3> groundAfter = footprint(after);
        const LineMeasures m = measures(before, groundBefore, after, groundAfter);
        const auto k = std::min<long long>(sampleCount - 1,
                                           (long long)std::floor((take.lineSec(i) - take.startSec) * rate + 1e-9));
        LineMeasures& kept = samples[std::size_t(k)];
        if (!seen[std::size_t(k)]) {
            kept = m;
            seen[std::size_t(k)] = true;
        } else {
            if (std::abs(m.ncs) > std::abs(kept.ncs))
                kept.ncs = m.ncs;
            if (std::abs(m.rpe) > std::abs(kept.rpe))
                kept.rpe = m.rpe;
            kept.psr = std::max(kept.psr, m.psr);
        }
        before = after;
        groundBefore = groundAfter;
    }
    for (std::size_t k = 0; k < samples.size(); ++k) {
        if (seen[k])
            continue;
        const State s0 = state(sampleSec((long long)k)), s1 = state(sampleSec((long long)k) + period);
        samples[k] = measures(s0, footprint(s0), s1, footprint(s1));
    }

    QJsonArray values;
    float minNcs = 0.0f, maxNcs = 0.0f, minRpe = 0.0f, maxRpe = 0.0f, maxPsr = 0.0f;
    double sumNcs = 0.0, sumRpe = 0.0, sumPsr = 0.0;
    for (std::size_t k = 0; k < samples.size(); ++k) {
        const auto ncs = float(samples[k].ncs), rpe = float(samples[k].rpe), psr = float(samples[k].psr);
        if (k == 0) {
            minNcs = maxNcs = ncs, minRpe = maxRpe = rpe, maxPsr = psr;
        }
        minNcs = std::min(minNcs, ncs), maxNcs = std::max(maxNcs, ncs);
        minRpe = std::min(minRpe, rpe), maxRpe = std::max(maxRpe, rpe);
        maxPsr = std::max(maxPsr, psr);
        sumNcs += (double(ncs) - 1.0) * (double(ncs) - 1.0);
        sumRpe += double(rpe) * rpe;
        sumPsr += double(psr) * psr;
        values.append(QJsonArray{GpsTime::wrap(m_start.secondsOfWeek + sampleSec((long long)k)), double(ncs),
                                 double(rpe), double(psr)});
    }
    const double n = double(samples.size());
    return QJsonObject{
        {QStringLiteral("band"), band->name},
        {QStringLiteral("minNcs"), double(minNcs)},
        {QStringLiteral("maxNcs"), double(maxNcs)},
        {QStringLiteral("rmsNcs"), std::sqrt(sumNcs / n)},
        {QStringLiteral("minRpe"), double(minRpe)},
        {QStringLiteral("maxRpe"), double(maxRpe)},
        {QStringLiteral("rmsRpe"), std::sqrt(sumRpe / n)},
        {QStringLiteral("maxPsr"), double(maxPsr)},
        {QStringLiteral("rmsPsr"), std::sqrt(sumPsr / n)},
        {QStringLiteral("samples"), values},
    };
}

} // namespace flightsim
