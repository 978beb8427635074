#pragma once

#include <span>
#include <string>
#include <vector>

namespace datamodel {

/// Looks at the times of a band's scan lines (camera times of a CT file,
/// GPS times of a CTG file) for what they cannot be: no lines, a time that is
/// not a finite number or lies outside its range, steps where time does not
/// rise, and jumps far beyond the band's usual step. Each finding is a
/// sentence for a warning; the caller says which file it is about.
class LineTimeCheck {
public:
    /// `quantity` names the times in the findings ("camera time", "GPS
    /// time"); valid times lie in [lowestSec, endSec).
    LineTimeCheck(std::string quantity, double lowestSec, double endSec);

    /// A step larger than this many median steps is a jump.
    static constexpr double sJumpFactor = 1000.0;

    /// The findings over `timesSec`, in the order above; empty when the
    /// times are plausible. One pass plus one selection over the steps.
    std::vector<std::string> findings(std::span<const double> timesSec) const;

private:
    std::string m_quantity;
    double m_lowestSec;
    double m_endSec;
};

} // namespace datamodel
