#pragma once

#include <array>

namespace datamodel {

/// One GNSS/IMU trajectory record as the readers hand it out: a plain,
/// copyable value, all zero when default-constructed.
struct ImuRecord {
    double time = 0.0;      ///< GPS seconds of the week
    double latitude = 0.0;  ///< WGS84 geodetic latitude, radians
    double longitude = 0.0; ///< radians
    double height = 0.0;    ///< ellipsoidal height as stored in the file, metres
    double roll = 0.0;      ///< radians
    double pitch = 0.0;     ///< radians
    double heading = 0.0;   ///< true heading, radians (an SBET's platform heading minus its wander angle)

    /// Standard deviations: north, east and down position in metres, then
    /// roll, pitch and heading in radians. All zero when the file carries none.
    std::array<float, 6>& stdDev() { return m_stdDev; }
    const std::array<float, 6>& stdDev() const { return m_stdDev; }

private:
    std::array<float, 6> m_stdDev{};
};

} // namespace datamodel
