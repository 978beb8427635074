#pragma once

#include <platform/geo/XYZPoint.h>
#include <platform/geo/coordSys.h>

#include <memory>
#include <string>

namespace geo {

/// Makes coordinate systems. The caller owns what a create call returns.
/// All create calls throw std::runtime_error with PROJ's reason when the
/// system cannot be made.
class coordSysFactory {
public:
    static coordSysFactory& getInstance();

    /// Geographic WGS84: x longitude, y latitude in degrees, z ellipsoidal height (m).
    std::unique_ptr<coordSys> createGEO84() const;
    /// Mercator on WGS84 with the given central meridian (degrees), metres.
    std::unique_ptr<coordSys> createMercator(double centralMeridianDeg) const;
    /// The local space-rectangular system "LSR System" at an anchor given as
    /// longitude and latitude in degrees and ellipsoidal height (m): x east,
    /// y north, z up, in metres, origin at the anchor.
    std::unique_ptr<coordSys> createLSR84(const XYZPoint& anchorDeg) const;
    /// Any system PROJ understands: "EPSG:<code>", a PROJ string or WKT.
    std::unique_ptr<coordSys> createCoordSys(const std::string& definition) const;

private:
    coordSysFactory() = default;
};

} // namespace geo
