#pragma once

// Time quantities: a boost.units system `kavixunits` whose only base unit is
// the second. Every time that crosses an interface of the timing and
// trajectory code, in the platform layer and in the library above it, is a
// `util::Seconds` (a double underneath). The library's own headers name the
// same type `datamodel::Seconds` (datamodel/model/Seconds.h).

#include <boost/units/base_units/si/second.hpp>
#include <boost/units/make_system.hpp>
#include <boost/units/quantity.hpp>
#include <boost/units/unit.hpp>

namespace kavixunits {

using system = boost::units::make_system<boost::units::si::second_base_unit>::type;
using time = boost::units::unit<boost::units::time_dimension, system>;

/// The unit constant: `2.5 * kavixunits::seconds` is two and a half seconds.
inline constexpr time seconds{};

} // namespace kavixunits

namespace util {

/// A time in seconds.
using Seconds = boost::units::quantity<kavixunits::time>;

/// Wraps a plain number of seconds.
inline Seconds seconds(double valueSec)
{
    return Seconds::from_value(valueSec);
}

} // namespace util
