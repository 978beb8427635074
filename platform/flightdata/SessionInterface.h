#pragma once

#include <platform/flightdata/TimePosition.h>
#include <platform/flightdata/ZelLine.h>

#include <string>
#include <vector>

namespace flightdata {

/// The recorder's account of one flight: sensor, flight lines, takes and
/// bands.
class SessionInterface {
public:
    virtual ~SessionInterface() = default;

    /// The session identifier (also the name of the session's gps-imu sub-folder).
    virtual const std::string& id() const = 0;
    /// The sensor generation, e.g. "ZELM8"; "ZELM9" is the newer generation.
    virtual const std::string& sensorGeneration() const = 0;
    /// The sensor head, e.g. "QX310".
    virtual const std::string& sensorHead() const = 0;
    virtual const std::string& sensorSerial() const = 0;
    virtual const std::string& sensorType() const = 0;
    /// The camera description file, absolute; empty when none is named.
    virtual const std::string& cameraFile() const = 0;
    virtual const TimePosition& flightStart() const = 0;
    /// The time of the first image take's first scan line.
    virtual const TimePosition& firstTakeTime() const = 0;
    virtual const std::vector<ZelLine>& lines() const = 0;
};

} // namespace flightdata
