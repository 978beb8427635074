#pragma once

#include <string>

namespace datamodel {

/// The measurement of a ground point in one band image: the point's id and
/// its image position (scan line and sample, pixels, 0-based, fractional).
struct ImagePoint {
    std::string pointId;
    double line = 0.0;
    double sample = 0.0;
};

} // namespace datamodel
