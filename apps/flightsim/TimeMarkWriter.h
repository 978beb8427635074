#pragma once

#include <flightsim/CameraClock.h>
#include <flightsim/FlightPlan.h>
#include <flightsim/GpsTime.h>
#include <flightsim/SimulationConfig.h>

#include <QJsonArray>
#include <QString>

#include <vector>

namespace flightsim {

/// Writes the time-mark file: one 16-byte record (GPS time of the mark in
/// seconds of the week, camera time at the mark in seconds; two little-endian
/// doubles) for every whole GPS second from the flight start to its end. The
/// camera time is the camera clock's reading at the mark's GPS time. The
/// tm-gap and tm-jitter faults remove and disturb marks.
class TimeMarkWriter {
public:
    struct Mark {
        double gpsSec = 0.0;    ///< as written: seconds of the week
        double ctSec = 0.0;     ///< as written
        double flightSec = 0.0; ///< the true flight time of the mark
    };
    struct Result {
        std::vector<Mark> marks;  ///< the records as written
        QJsonArray faults;        ///< details of tm-gap and tm-jitter
    };

    TimeMarkWriter(const SimulationConfig& config, const FlightPlan& plan, const CameraClock& clock,
                   const GpsTime& start);

    /// Throws ConfigError when the flight is too short for an injected fault
    /// and std::runtime_error when the file cannot be written.
    Result write(const QString& path) const;

    static constexpr int sGapMarks = 3;
    static constexpr int sJitterMarks = 5;

private:
    const SimulationConfig& m_config;
    const FlightPlan& m_plan;
    CameraClock m_clock;
    GpsTime m_start;
};

} // namespace flightsim
