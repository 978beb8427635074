#pragma once

#include <QDateTime>

namespace flightsim {

/// A GPS time as week number and seconds of the week in [0, 604800). GPS
/// time runs ahead of UTC by the leap seconds inserted since 1980-01-06.
struct GpsTime {
    static constexpr double sSecondsPerWeek = 604800.0;

    int week = 0;
    double secondsOfWeek = 0.0;

    /// The GPS time of a UTC instant at or after 1980-01-06 00:00:00 UTC
    /// (milliseconds kept). Throws std::runtime_error for earlier instants.
    static GpsTime fromUtc(const QDateTime& utc);
    /// GPS minus UTC in seconds at a UTC instant (18 since 2017-01-01; no
    /// later leap second is known to the simulator).
    static int leapSeconds(const QDateTime& utc);
    /// Seconds since the GPS epoch 1980-01-06 00:00:00.
    double sinceEpochSec() const { return week * sSecondsPerWeek + secondsOfWeek; }
    /// This time plus `seconds` (may move into another week).
    GpsTime plus(double seconds) const;
    /// The UTC instant of this GPS time, to the millisecond.
    QDateTime toUtc() const;
    /// Seconds of the week of a time counted from the start of some week:
    /// values of one week or more are wrapped into the next week.
    static double wrap(double secondsFromWeekStart)
    {
        return secondsFromWeekStart >= sSecondsPerWeek ? secondsFromWeekStart - sSecondsPerWeek
                                                       : secondsFromWeekStart;
    }
};

} // namespace flightsim
