#pragma once

namespace flightsim {

/// A vector in a Cartesian frame (ECEF or a local frame), metres.
struct Vec3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    Vec3 operator+(const Vec3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vec3 operator-(const Vec3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vec3 operator*(double s) const { return {x * s, y * s, z * s}; }
    double dot(const Vec3& o) const { return x * o.x + y * o.y + z * o.z; }
};

/// The WGS84 ellipsoid: conversions between geodetic coordinates (latitude,
/// longitude in radians, ellipsoidal height in metres) and Earth-centred,
/// Earth-fixed (ECEF) coordinates, and the local east/north/up axes.
class Wgs84 {
public:
    static constexpr double sSemiMajorM = 6378137.0;
    static constexpr double sFlattening = 1.0 / 298.257223563;
    static constexpr double sSemiMinorM = sSemiMajorM * (1.0 - sFlattening);
    static constexpr double sE2 = sFlattening * (2.0 - sFlattening);    // first eccentricity squared
    static constexpr double sEp2 = sE2 / (1.0 - sE2);                   // second eccentricity squared
    static constexpr double sGravityMps2 = 9.80665;                     // standard gravity

    static Vec3 toEcef(double latRad, double lonRad, double heightM);
    /// Bowring's closed form; better than a micrometre within 10 km of the
    /// ellipsoid. Longitude in (-pi, pi].
    static void toGeodetic(const Vec3& ecef, double& latRad, double& lonRad, double& heightM);

    static Vec3 east(double lonRad);
    static Vec3 north(double latRad, double lonRad);
    static Vec3 up(double latRad, double lonRad);
};

} // namespace flightsim
