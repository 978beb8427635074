#include <datamodel/validation/SmoothnessValidator.h>

#include <datamodel/timing/CameraTime.h>

#include <iomanip>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace datamodel {

SmoothnessValidator::SmoothnessValidator(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
{
}

SmoothnessValidator::~SmoothnessValidator() = default;

void SmoothnessValidator::validate(CameraTime& times)
{
    times.cache();
    if (times.isNonUniformCT())
        validateV2(times);
    else
        validateV1(times);
}

void SmoothnessValidator::validateV1(CameraTime& times) const
{
    const std::vector<Seconds>& values = times.values();
    const std::size_t n = values.size();
    if (n < 2)
        throw std::runtime_error("CT index out of range.");
    const double d0 = values[1].value() - values[0].value();
    const double lowest = d0 - sTolerance * d0;
    const double highest = d0 + sTolerance * d0;
    // Written so that a step that is not a number fails too.
    std::size_t i = 2;
    for (; i < n; ++i) {
        const double d = values[i].value() - values[i - 1].value();
        if (!(d >= lowest && d <= highest))
            break;
    }
    if (i == n)
        return;

    const double before = values[i - 1].value();
    const double at = values[i].value();
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(5) << "CTG file " << times.ctgFileName() << ": illegal delta at " << i
         << " between " << before << " and " << at << " of " << (at - before)
         << ": expected a value within +/- 20% of " << d0;
    throw std::runtime_error(text.str());
}

void SmoothnessValidator::validateV2(CameraTime&) const {}

} // namespace datamodel
