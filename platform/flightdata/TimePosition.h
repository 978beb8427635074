#pragma once

#include <QDateTime>

namespace flightdata {

/// One instant of the recording as the recorder gives it: UTC and the GPS
/// week with the seconds of that week.
struct TimePosition {
    /// Format of the UTC text in flight-data files.
    static constexpr const char* sDateTimeString = "yyyyMMddHHmmss";

    QDateTime utc;
    int gpsWeek = 0;
    double gpsSeconds = 0.0;
};

} // namespace flightdata
