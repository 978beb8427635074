#pragma once

#include <flightsim/AttitudeModel.h>
#include <flightsim/FlightPlan.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SimulationConfig.h>

#include <cstddef>
#include <vector>

namespace util {
class ProgressInterface;
}

namespace flightsim {

/// The aircraft's true state at every trajectory record (the IMU rate, from
/// flight time 0 to the end of the flight), derived from the flight plan:
/// - position: the plan's plane point mapped onto the ellipsoid, at the
///   flying height (mean terrain + height above it) plus the turbulence's
///   height departure;
/// - velocity: central differences of the ECEF positions, in north, east,
///   down at the record's position (one-sided at the two ends);
/// - heading: the true track azimuth of that velocity (clockwise from north,
///   no wind) plus turbulence; roll: the bank of a coordinated turn,
///   -atan(v^2 * curvature / g) (left wing down in left turns), plus
///   turbulence; pitch: the trim plus the climb angle plus turbulence.
/// Angles follow the aerospace convention: roll about the forward axis
/// (right wing down positive), pitch nose up positive, heading clockwise from
/// north; all in radians, heading in (-pi, pi].
class SimulatedTrajectory {
public:
    SimulatedTrajectory(const SimulationConfig& config, const FlightPlan& plan, const LocalPlane& plane,
                        util::ProgressInterface* progress);

    std::size_t size() const { return m_lat.size(); }
    double rateHz() const { return m_rateHz; }
    /// Flight time of record k.
    double timeSec(std::size_t k) const { return double(k) / m_rateHz; }
    double flyingHeightM() const { return m_flyingHeightM; }

    const std::vector<double>& latRad() const { return m_lat; }
    const std::vector<double>& lonRad() const { return m_lon; }
    const std::vector<double>& heightM() const { return m_height; }
    const std::vector<double>& rollRad() const { return m_roll; }
    const std::vector<double>& pitchRad() const { return m_pitch; }
    const std::vector<double>& headingRad() const { return m_heading; }
    const std::vector<double>& velocityNorthMps() const { return m_vNorth; }
    const std::vector<double>& velocityEastMps() const { return m_vEast; }
    const std::vector<double>& velocityDownMps() const { return m_vDown; }

    /// The heavy-turbulence window, when the fault is on.
    const AttitudeModel& attitude() const { return m_attitude; }

private:
    double m_rateHz;
    double m_flyingHeightM;
    AttitudeModel m_attitude;
    std::vector<double> m_lat, m_lon, m_height, m_roll, m_pitch, m_heading, m_vNorth, m_vEast, m_vDown;
};

} // namespace flightsim
