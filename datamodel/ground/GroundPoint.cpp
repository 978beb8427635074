#include <datamodel/ground/GroundPoint.h>

#include <datamodel/ground/CheckPoint.h>
#include <datamodel/ground/ControlPoint.h>
#include <datamodel/ground/TiePoint.h>

#include <platform/geo/coordSys.h>

#include <stdexcept>

namespace datamodel {

GroundPoint::GroundPoint(const std::string& id, const geo::coordSys& coordSys, double x, double y, double z,
                         double sx, double sy, double sz)
    : m_xyz{x, y, z}
    , m_stdDev{sx, sy, sz}
    , m_id(id)
    , m_coordSys(&coordSys)
{
}

GroundPoint::~GroundPoint() = default;

SurveyedGroundPoint::SurveyedGroundPoint(const std::string& id, const geo::coordSys& coordSys, double x, double y,
                                         double z, double sx, double sy, double sz, Type type)
    : GroundPoint(id, coordSys, x, y, z, sx, sy, sz)
    , m_type(type)
{
}

void TiePoint::set(double x, double y, double z)
{
    m_xyz[0] = x;
    m_xyz[1] = y;
    m_xyz[2] = z;
}

void TiePoint::setStdDev(double sx, double sy, double sz)
{
    m_stdDev = {sx, sy, sz};
}

int GroundPoint::typeToInt(const GroundPoint& point)
{
    auto surveyedCode = [](const SurveyedGroundPoint& surveyed, int base) {
        const int type = static_cast<int>(surveyed.type());
        if (type < 0 || type > 2)
            throw std::runtime_error("Unhandled case.");
        return base + type;
    };
    if (auto* check = dynamic_cast<const CheckPoint*>(&point))
        return surveyedCode(*check, 4);
    if (auto* control = dynamic_cast<const ControlPoint*>(&point))
        return surveyedCode(*control, 0);
    if (dynamic_cast<const TiePoint*>(&point))
        return 3;
    throw std::runtime_error("Unknown ground point type.");
}

GroundPoint* GroundPoint::clone(const GroundPoint& point, const geo::coordSys* target)
{
    geo::XYZPoint xyz(point.x(), point.y(), point.z());
    const geo::coordSys* system = &point.coordSys();
    if (target) {
        try {
            point.coordSys().transform(*target, xyz);
        } catch (const std::exception&) {
            throw std::runtime_error("Coordinate system transformation failed.");
        }
        system = target;
    }
    const std::vector<double>& s = point.stdDev();
    if (dynamic_cast<const TiePoint*>(&point))
        return new TiePoint(point.id(), *system, xyz.x, xyz.y, xyz.z, s[0], s[1], s[2]);
    if (auto* control = dynamic_cast<const ControlPoint*>(&point))
        return new ControlPoint(point.id(), *system, xyz.x, xyz.y, xyz.z, s[0], s[1], s[2], control->type());
    if (auto* check = dynamic_cast<const CheckPoint*>(&point))
        return new CheckPoint(point.id(), *system, xyz.x, xyz.y, xyz.z, s[0], s[1], s[2], check->type());
    throw std::runtime_error("Unknown subclass in GroundPoint::clone.");
}

} // namespace datamodel
