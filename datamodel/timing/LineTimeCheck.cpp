#include <datamodel/timing/LineTimeCheck.h>

#include <datamodel/timing/TimeFormat_p.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace datamodel {

LineTimeCheck::LineTimeCheck(std::string quantity, double lowestSec, double endSec)
    : m_quantity(std::move(quantity))
    , m_lowestSec(lowestSec)
    , m_endSec(endSec)
{
}

std::vector<std::string> LineTimeCheck::findings(std::span<const double> timesSec) const
{
    std::vector<std::string> found;
    if (timesSec.empty()) {
        found.push_back("no scan lines");
        return found;
    }
    for (std::size_t line = 0; line < timesSec.size(); ++line) {
        const double t = timesSec[line];
        if (!std::isfinite(t)) {
            found.push_back("the " + m_quantity + " of scan line " + std::to_string(line) + " is not a finite number");
            return found;
        }
        if (t < m_lowestSec || t >= m_endSec) {
            found.push_back("the " + m_quantity + " of scan line " + std::to_string(line) + " is "
                            + generalText(t, 12) + " s, outside [" + generalText(m_lowestSec, 12) + ", "
                            + generalText(m_endSec, 12) + ") s");
            return found;
        }
    }

    std::vector<double> steps(timesSec.size() - 1);
    std::size_t notRising = 0;
    std::size_t firstNotRising = 0;
    for (std::size_t i = 1; i < timesSec.size(); ++i) {
        steps[i - 1] = timesSec[i] - timesSec[i - 1];
        if (!(steps[i - 1] > 0.0) && notRising++ == 0)
            firstNotRising = i;
    }
    if (notRising > 0)
        found.push_back(std::to_string(notRising) + " steps from one scan line to the next where the " + m_quantity
                        + " does not rise, the first at scan line " + std::to_string(firstNotRising));
    if (steps.size() < 2)
        return found;

    // The usual step: the median, robust against the jumps looked for.
    std::vector<double> sorted = steps;
    auto middle = sorted.begin() + std::ptrdiff_t(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    const double medianSec = *middle;
    if (!(medianSec > 0.0))
        return found;
    const auto jump = std::max_element(steps.begin(), steps.end());
    if (*jump > sJumpFactor * medianSec)
        found.push_back("the " + m_quantity + " jumps by " + generalText(*jump, 9) + " s at scan line "
                        + std::to_string(std::size_t(jump - steps.begin()) + 1) + ", where the usual step is "
                        + generalText(medianSec * 1000.0, 6) + " ms");
    return found;
}

} // namespace datamodel
