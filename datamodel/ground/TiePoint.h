#pragma once

#include <datamodel/ground/GroundPoint.h>

namespace datamodel {

/// A point found by image matching; its position is adjusted freely.
class TiePoint : public GroundPoint {
public:
    using GroundPoint::GroundPoint;

    void set(double x, double y, double z);
    void setStdDev(double sx, double sy, double sz);
    using GroundPoint::operator[];
    double& operator[](int i) { return m_xyz[i]; }
};

} // namespace datamodel
