#pragma once

#include <flightsim/Wgs84.h>

namespace flightsim {

/// The plane in which the flight is planned: the plane tangent to the WGS84
/// ellipsoid at the block centre, with x along the flight lines (at the line
/// azimuth, clockwise from north) and y 90 degrees to the left of x. A plane
/// point maps to the geodetic position whose ellipsoid normal passes through
/// it; the aircraft's height is set separately. Straight lines in the plane
/// are the straight flight lines; the mapping works across the antimeridian.
class LocalPlane {
public:
    LocalPlane(double centerLatDeg, double centerLonDeg, double lineAzimuthDeg);

    /// Latitude and longitude (radians, longitude in (-pi, pi]) of the plane point.
    void toGeodetic(double xM, double yM, double& latRad, double& lonRad) const;
    /// Plane coordinates of the ellipsoid point at (latRad, lonRad); the
    /// inverse of toGeodetic().
    void toPlane(double latRad, double lonRad, double& xM, double& yM) const;
    /// East and north components of the plane vector (x, y) at the centre.
    void toEastNorth(double xM, double yM, double& eastM, double& northM) const;

    double centerLatRad() const { return m_centerLatRad; }
    double centerLonRad() const { return m_centerLonRad; }

private:
    double m_centerLatRad;
    double m_centerLonRad;
    double m_sinAzimuth;
    double m_cosAzimuth;
    Vec3 m_origin;
    Vec3 m_east;
    Vec3 m_north;
    Vec3 m_up;
};

} // namespace flightsim
