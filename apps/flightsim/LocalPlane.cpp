#include <flightsim/LocalPlane.h>

#include <cmath>
#include <numbers>

namespace flightsim {

namespace {
constexpr double sDegToRad = std::numbers::pi / 180.0;
}

LocalPlane::LocalPlane(double centerLatDeg, double centerLonDeg, double lineAzimuthDeg)
    : m_centerLatRad(centerLatDeg * sDegToRad)
    , m_centerLonRad(centerLonDeg * sDegToRad)
    , m_sinAzimuth(std::sin(lineAzimuthDeg * sDegToRad))
    , m_cosAzimuth(std::cos(lineAzimuthDeg * sDegToRad))
    , m_origin(Wgs84::toEcef(m_centerLatRad, m_centerLonRad, 0.0))
    , m_east(Wgs84::east(m_centerLonRad))
    , m_north(Wgs84::north(m_centerLatRad, m_centerLonRad))
    , m_up(Wgs84::up(m_centerLatRad, m_centerLonRad))
{
}

void LocalPlane::toEastNorth(double xM, double yM, double& eastM, double& northM) const
{
    // x points at the azimuth (east = sin, north = cos); y is x turned left.
    eastM = xM * m_sinAzimuth - yM * m_cosAzimuth;
    northM = xM * m_cosAzimuth + yM * m_sinAzimuth;
}

void LocalPlane::toGeodetic(double xM, double yM, double& latRad, double& lonRad) const
{
    double eastM = 0.0;
    double northM = 0.0;
    toEastNorth(xM, yM, eastM, northM);
    const Vec3 point = m_origin + m_east * eastM + m_north * northM;
    double heightM = 0.0;
    Wgs84::toGeodetic(point, latRad, lonRad, heightM);
}

void LocalPlane::toPlane(double latRad, double lonRad, double& xM, double& yM) const
{
    // The plane point lies on the ellipsoid normal through the surface point.
    const Vec3 surface = Wgs84::toEcef(latRad, lonRad, 0.0);
    const Vec3 normal = Wgs84::up(latRad, lonRad);
    const double along = -(surface - m_origin).dot(m_up) / normal.dot(m_up);
    const Vec3 offset = surface + normal * along - m_origin;
    const double eastM = offset.dot(m_east);
    const double northM = offset.dot(m_north);
    xM = eastM * m_sinAzimuth + northM * m_cosAzimuth;
    yM = -eastM * m_cosAzimuth + northM * m_sinAzimuth;
}

} // namespace flightsim
