#pragma once

#include <string>
#include <vector>

namespace geo {
class coordSys;
}

namespace datamodel {

struct ImagePoint;

/// A named 3-D point on the ground with its accuracy. Subclasses: TiePoint,
/// and SurveyedGroundPoint with ControlPoint and CheckPoint. A point refers to
/// its coordinate system without owning it.
class GroundPoint {
public:
    GroundPoint(const std::string& id, const geo::coordSys& coordSys, double x, double y, double z,
                double sx, double sy, double sz);
    virtual ~GroundPoint();

    double x() const { return m_xyz[0]; }
    double y() const { return m_xyz[1]; }
    double z() const { return m_xyz[2]; }
    double operator[](int i) const { return m_xyz[i]; }

    bool isActive() const { return m_active; }
    void setActive(bool active) { m_active = active; }

    const std::string& id() const { return m_id; }
    void setId(const std::string& id) { m_id = id; }

    const geo::coordSys& coordSys() const { return *m_coordSys; }
    /// Standard deviations of x, y and z, in the units of the coordinate system.
    const std::vector<double>& stdDev() const { return m_stdDev; }

    /// Measurements of the point in images; not owned.
    const std::vector<ImagePoint*>& imagePoints() const { return m_imagePoints; }
    void addImagePoint(ImagePoint* point) { m_imagePoints.push_back(point); }

    bool operator==(const GroundPoint& other) const { return m_id == other.m_id; }
    bool operator<(const GroundPoint& other) const { return m_id < other.m_id; }

    /// The integer code of the ground-point file: control points 0..2 and
    /// check points 4..6 by their type, tie points 3. Throws "Unhandled case."
    /// for a surveyed point of another type and "Unknown ground point type."
    /// for any other class.
    static int typeToInt(const GroundPoint& point);

    /// A new point of the same class (caller owns it), transformed into
    /// `target` when one is given. Throws "Coordinate system transformation
    /// failed." and "Unknown subclass in GroundPoint::clone.".
    static GroundPoint* clone(const GroundPoint& point, const geo::coordSys* target);

protected:
    double m_xyz[3];
    std::vector<double> m_stdDev;

private:
    bool m_active = true;
    std::string m_id;
    const geo::coordSys* m_coordSys;
    std::vector<ImagePoint*> m_imagePoints;
};

} // namespace datamodel
