#include <flightsim/Wgs84.h>

#include <cmath>

namespace flightsim {

Vec3 Wgs84::toEcef(double latRad, double lonRad, double heightM)
{
    const double sinLat = std::sin(latRad);
    const double cosLat = std::cos(latRad);
    const double primeVerticalM = sSemiMajorM / std::sqrt(1.0 - sE2 * sinLat * sinLat);
    const double r = (primeVerticalM + heightM) * cosLat;
    return {r * std::cos(lonRad), r * std::sin(lonRad), (primeVerticalM * (1.0 - sE2) + heightM) * sinLat};
}

void Wgs84::toGeodetic(const Vec3& ecef, double& latRad, double& lonRad, double& heightM)
{
    const double p = std::hypot(ecef.x, ecef.y);
    const double theta = std::atan2(ecef.z * sSemiMajorM, p * sSemiMinorM);
    const double sinTheta = std::sin(theta);
    const double cosTheta = std::cos(theta);
    latRad = std::atan2(ecef.z + sEp2 * sSemiMinorM * sinTheta * sinTheta * sinTheta,
                        p - sE2 * sSemiMajorM * cosTheta * cosTheta * cosTheta);
    lonRad = std::atan2(ecef.y, ecef.x);
    const double sinLat = std::sin(latRad);
    // Valid at every latitude, unlike p / cos(lat) - N.
    heightM = p * std::cos(latRad) + ecef.z * sinLat - sSemiMajorM * std::sqrt(1.0 - sE2 * sinLat * sinLat);
}

Vec3 Wgs84::east(double lonRad)
{
    return {-std::sin(lonRad), std::cos(lonRad), 0.0};
}

Vec3 Wgs84::north(double latRad, double lonRad)
{
    return {-std::sin(latRad) * std::cos(lonRad), -std::sin(latRad) * std::sin(lonRad), std::cos(latRad)};
}

Vec3 Wgs84::up(double latRad, double lonRad)
{
    return {std::cos(latRad) * std::cos(lonRad), std::cos(latRad) * std::sin(lonRad), std::sin(latRad)};
}

} // namespace flightsim
