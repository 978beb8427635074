#pragma once

namespace geo {

/// A 2-D point; for geographic systems x is the longitude and y the latitude.
struct XYPoint {
    double x = 0.0;
    double y = 0.0;

    XYPoint() = default;
    XYPoint(double xValue, double yValue) : x(xValue), y(yValue) {}

    bool operator==(const XYPoint&) const = default;
};

} // namespace geo
