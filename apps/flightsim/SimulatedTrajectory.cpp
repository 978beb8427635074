#include <flightsim/SimulatedTrajectory.h>
#include <flightsim/Wgs84.h>

#include <platform/util/ProgressInterface.h>

#include <cmath>
#include <numbers>

namespace flightsim {

namespace {

constexpr double sPi = std::numbers::pi;
constexpr std::size_t sProgressStep = 1 << 16;

double wrapPi(double angle)
{
    angle = std::remainder(angle, 2.0 * sPi); // [-pi, pi]
    return angle <= -sPi ? angle + 2.0 * sPi : angle;
}

} // namespace

SimulatedTrajectory::SimulatedTrajectory(const SimulationConfig& config, const FlightPlan& plan,
                                         const LocalPlane& plane, util::ProgressInterface* progress)
    : m_rateHz(config.imuRateHz)
    , m_flyingHeightM(config.terrainHeightM + config.heightAboveTerrainM)
    , m_attitude(config, plan)
{
    const std::size_t count = std::size_t(std::floor(plan.durationSec() * m_rateHz + 1e-9)) + 1;
    for (std::vector<double>* v : {&m_lat, &m_lon, &m_height, &m_roll, &m_pitch, &m_heading, &m_vNorth, &m_vEast,
                                   &m_vDown})
        v->resize(count);
    util::ProgressTask task(progress, "Simulating the trajectory", 0, (long long)(2 * count));

    const double v2OverG = config.speedMps * config.speedMps / Wgs84::sGravityMps2;
    const double trimRad = config.pitchTrimDeg * sPi / 180.0;
    // Pass 1: positions and the perturbations; pitch and heading hold the
    // perturbations until the velocities are known.
    for (std::size_t k = 0; k < count; ++k) {
        const PlaneState state = plan.at(timeSec(k));
        const AttitudeModel::Perturbation p = m_attitude.next();
        plane.toGeodetic(state.xM, state.yM, m_lat[k], m_lon[k]);
        m_height[k] = m_flyingHeightM + p.heightM;
        m_roll[k] = -std::atan(v2OverG * state.curvaturePerM) + p.rollRad;
        m_pitch[k] = p.pitchRad;
        m_heading[k] = p.headingRad;
        if (k % sProgressStep == 0)
            task.report((long long)k);
    }

    // Pass 2: velocities by central differences of ECEF positions.
    struct Point {
        Vec3 ecef;
        double sinLat, cosLat, sinLon, cosLon;
    };
    auto point = [&](std::size_t k) {
        Point p{{}, std::sin(m_lat[k]), std::cos(m_lat[k]), std::sin(m_lon[k]), std::cos(m_lon[k])};
        const double primeVerticalM = Wgs84::sSemiMajorM / std::sqrt(1.0 - Wgs84::sE2 * p.sinLat * p.sinLat);
        const double r = (primeVerticalM + m_height[k]) * p.cosLat;
        p.ecef = {r * p.cosLon, r * p.sinLon, (primeVerticalM * (1.0 - Wgs84::sE2) + m_height[k]) * p.sinLat};
        return p;
    };
    Point previous = point(0);
    Point current = previous;
    Point next = count > 1 ? point(1) : previous;
    for (std::size_t k = 0; k < count; ++k) {
        Vec3 velocity;
        if (count == 1)
            velocity = {};
        else if (k == 0)
            velocity = (next.ecef - current.ecef) * m_rateHz;
        else if (k + 1 == count)
            velocity = (current.ecef - previous.ecef) * m_rateHz;
        else
            velocity = (next.ecef - previous.ecef) * (0.5 * m_rateHz);
        // The local north, east and up axes in ECEF.
        const Vec3 north{-current.sinLat * current.cosLon, -current.sinLat * current.sinLon, current.cosLat};
        const Vec3 east{-current.sinLon, current.cosLon, 0.0};
        const Vec3 up{current.cosLat * current.cosLon, current.cosLat * current.sinLon, current.sinLat};
        m_vNorth[k] = velocity.dot(north);
        m_vEast[k] = velocity.dot(east);
        m_vDown[k] = -velocity.dot(up);
        const double horizontal = std::hypot(m_vNorth[k], m_vEast[k]);
        m_heading[k] = wrapPi(std::atan2(m_vEast[k], m_vNorth[k]) + m_heading[k]);
        m_pitch[k] = trimRad + std::atan2(-m_vDown[k], horizontal) + m_pitch[k];
        if (k + 1 < count) {
            previous = current;
            current = next;
            if (k + 2 < count)
                next = point(k + 2);
        }
        if (k % sProgressStep == 0)
            task.report((long long)(count + k));
    }
}

} // namespace flightsim
