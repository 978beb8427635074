#pragma once

// Number formats of the timing messages, in one place (private to the
// library, not installed): times in messages are written in milliseconds
// with one decimal ("12345.6ms"), GPS times in the shortest general form
// with six significant digits ("604810"). The C locale is used whatever the
// host program set, so a message reads the same everywhere.

#include <datamodel/model/Seconds.h>

#include <iomanip>
#include <locale>
#include <sstream>
#include <string>

namespace datamodel {

/// `value` in fixed-point notation with `decimals` decimals.
inline std::string fixedText(double value, int decimals)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(decimals) << value;
    return text.str();
}

/// `value` in the shortest general form with `digits` significant digits.
inline std::string generalText(double value, int digits = 6)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::setprecision(digits) << value;
    return text.str();
}

/// A time as milliseconds with one decimal, without the unit: 12.3456 s
/// gives "12345.6".
inline std::string millisecondsText(Seconds time)
{
    return fixedText(time.value() * 1000.0, 1);
}

} // namespace datamodel
