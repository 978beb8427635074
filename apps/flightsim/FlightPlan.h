#pragma once

#include <flightsim/SimulationConfig.h>
#include <flightsim/TurnManeuver.h>

#include <QString>

#include <memory>
#include <vector>

namespace flightsim {

/// The aircraft's horizontal state in the flight plane (see LocalPlane).
struct PlaneState {
    double xM = 0.0;
    double yM = 0.0;
    double headingRad = 0.0;    ///< direction of flight, counter-clockwise from +x
    double curvaturePerM = 0.0; ///< positive in left turns
};

/// One recorded take: an image take of a flight line, or the dark take
/// recorded (shutter closed) on the run-in to it.
struct TakeWindow {
    int index = 0;           ///< 0-based flight line
    int lineNumber = 1;      ///< 1-based flight line number
    QString label;           ///< L001 for an image take, DK001 for its dark take
    bool dark = false;
    double startSec = 0.0;   ///< flight time of the first scan line
    int lines = 0;
    double lineRateHz = 0.0;
    double yM = 0.0;         ///< the line's plane y
    double startXM = 0.0;    ///< plane x of the first scan line
    int direction = 1;       ///< +1: flown along +x, -1: along -x

    /// Flight time of scan line `line`.
    double lineSec(long long line) const { return startSec + double(line) / lineRateHz; }
    double lastLineSec() const { return lineSec(lines - 1); }
};

/// The flight in the plane: a straight lead-in, the block of parallel lines
/// flown in alternating directions with a turn between neighbours, and a
/// straight lead-out; flight time 0 is the start of the recording. Each line
/// is one straight stretch: run-in, take, run-out. The times of all takes
/// follow from the speed, the line length (lines / line rate * speed) and the
/// turn; the lines lie at y = (i - (n - 1) / 2) * spacing, centred on x = 0.
class FlightPlan {
public:
    /// Throws ConfigError when the dark takes do not fit into the run-ins or
    /// --duration is too short for the lines and turns.
    explicit FlightPlan(const SimulationConfig& config);

    double durationSec() const { return m_durationSec; }
    /// The state at flight time `tSec` (clamped to the flight).
    PlaneState at(double tSec) const;
    const std::vector<TakeWindow>& takes() const { return m_takes; }
    const std::vector<TakeWindow>& darkTakes() const { return m_darkTakes; }

    double speedMps() const { return m_speedMps; }
    double lineLengthM() const { return m_lineLengthM; }
    double leadInSec() const { return m_leadInSec; }
    double leadOutSec() const { return m_leadOutSec; }
    /// The turn between lines (null with a single line).
    const TurnManeuver* turn() const { return m_turn.get(); }

private:
    struct Segment {
        double startSec = 0.0;
        double durationSec = 0.0;
        double x0 = 0.0;
        double y0 = 0.0;
        double heading0 = 0.0;
        int curve = -1; // -1 straight, 0 left turn, 1 right turn
    };
    void build(const SimulationConfig& config, double leadInSec, double leadOutSec);

    double m_speedMps = 0.0;
    double m_lineLengthM = 0.0;
    double m_leadInSec = 0.0;
    double m_leadOutSec = 0.0;
    double m_durationSec = 0.0;
    std::shared_ptr<TurnManeuver> m_turn;
    CurvePath m_curves[2];
    std::vector<Segment> m_segments;
    std::vector<TakeWindow> m_takes;
    std::vector<TakeWindow> m_darkTakes;
};

} // namespace flightsim
