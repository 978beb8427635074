#pragma once

#include <datamodel/ground/SurveyedGroundPoint.h>

namespace datamodel {

/// A surveyed point used only to check the block.
class CheckPoint : public SurveyedGroundPoint {
public:
    using SurveyedGroundPoint::SurveyedGroundPoint;
};

} // namespace datamodel
