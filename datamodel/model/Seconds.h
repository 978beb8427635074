#pragma once

// Time quantities of the library: the seconds of the unit system
// `kavixunits`, defined in the platform layer below the library
// (platform/util/Seconds.h) and named here in the library's namespace. Every
// time that crosses an interface of the timing and trajectory code is a
// `datamodel::Seconds` (a double underneath).

#include <platform/util/Seconds.h>

namespace datamodel {

/// A time in seconds (the same type as util::Seconds).
using ::util::Seconds;
/// Wraps a plain number of seconds.
using ::util::seconds;

} // namespace datamodel
