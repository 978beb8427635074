#pragma once

#include <datamodel/ground/SurveyedGroundPoint.h>

namespace datamodel {

/// A surveyed point used to fit the block.
class ControlPoint : public SurveyedGroundPoint {
public:
    using SurveyedGroundPoint::SurveyedGroundPoint;
};

} // namespace datamodel
