#pragma once

namespace flightsim {

/// The camera's free-running clock (CT) against GPS time:
/// ct = offsetSec + (1 + driftPpm * 1e-6) * flightSec, where flightSec is
/// GPS time since the flight start, counted on across a GPS week boundary.
class CameraClock {
public:
    CameraClock(double offsetSec, double driftPpm)
        : m_offsetSec(offsetSec)
        , m_rate(1.0 + driftPpm * 1e-6)
    {
    }

    double ctAt(double flightSec) const { return m_offsetSec + m_rate * flightSec; }
    /// Camera-clock seconds per GPS second.
    double rate() const { return m_rate; }

private:
    double m_offsetSec;
    double m_rate;
};

} // namespace flightsim
