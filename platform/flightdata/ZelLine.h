#pragma once

#include <platform/flightdata/ZelTake.h>

#include <string>
#include <vector>

namespace flightdata {

/// One flight line of the recording with its takes in recording order.
struct ZelLine {
    int number = 0;
    std::string label;
    std::vector<ZelTake> takes;
};

} // namespace flightdata
