#pragma once

#include <datamodel/ground/GroundPoint.h>

namespace datamodel {

/// A surveyed point: a control point (used to fit the block) or a check
/// point (used only to check it).
class SurveyedGroundPoint : public GroundPoint {
public:
    /// Which coordinates were surveyed.
    enum Type {
        Full = 0,       ///< position and height
        Planimetric = 1, ///< position only
        Height = 2,     ///< height only
    };

    SurveyedGroundPoint(const std::string& id, const geo::coordSys& coordSys, double x, double y, double z,
                        double sx, double sy, double sz, Type type);

    Type type() const { return m_type; }

private:
    Type m_type;
};

} // namespace datamodel
