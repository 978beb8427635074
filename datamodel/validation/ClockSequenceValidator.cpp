#include <datamodel/validation/ClockSequenceValidator.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TimeFormat_p.h>

#include <stdexcept>

namespace datamodel {

ClockSequenceValidator::ClockSequenceValidator(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
{
}

ClockSequenceValidator::~ClockSequenceValidator() = default;

void ClockSequenceValidator::validate(CameraTime& times)
{
    times.cache();
    if (times.isNonUniformCT())
        validateV2(times);
    else
        validateV1(times);
}

void ClockSequenceValidator::validateV1(CameraTime& times)
{
    const std::vector<Seconds>& values = times.values();
    const std::size_t n = values.size();
    if (n == 0)
        throw std::runtime_error("CT index out of range.");
    // One pass over the times, with nothing but the comparison in the loop.
    std::size_t i = 1;
    for (; i < n; ++i)
        if (values[i].value() < values[i - 1].value())
            break;
    if (i == n)
        return;
    const std::string& band = times.img().bandName(); // "CameraTime not initialized." without an image
    throw std::runtime_error("Time goes backwards at " + millisecondsText(values[i]) + "ms for " + band);
}

void ClockSequenceValidator::validateV2(CameraTime& times)
{
    validateV1(times);
}

} // namespace datamodel
