#pragma once

namespace geo {

/// A 3-D point; for geographic systems x is the longitude, y the latitude and
/// z the ellipsoidal height in metres.
struct XYZPoint {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    XYZPoint() = default;
    XYZPoint(double xValue, double yValue, double zValue) : x(xValue), y(yValue), z(zValue) {}

    double& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
    double operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }

    bool operator==(const XYZPoint&) const = default;
};

} // namespace geo
