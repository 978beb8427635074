#pragma once

#include <datamodel/validation/ValidationTraverser.h>

namespace datamodel {

/// Checks that time never runs backwards from one scan line of a band to
/// the next. Only camera-time objects are checked; a finding is thrown as
/// std::runtime_error for the traverser that runs the validator to report.
class ClockSequenceValidator : public virtual ValidationTraverser {
public:
    ClockSequenceValidator(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    ClockSequenceValidator(const ClockSequenceValidator&) = default;
    ClockSequenceValidator& operator=(const ClockSequenceValidator&) = default;
    ~ClockSequenceValidator() override;

    /// The check for a band of uniform line period.
    virtual void validateV1(CameraTime& times);
    /// The check for a band of non-uniform line period: the same as validateV1.
    virtual void validateV2(CameraTime& times);

    using ValidationTraverser::validate;
    /// Loads the times (failures pass through unchanged), then runs
    /// validateV2 for a band of non-uniform line period, else validateV1.
    /// Throws "CT index out of range." for a band without lines, and "Time
    /// goes backwards at " + the later line's time in ms (one decimal) +
    /// "ms for " + band at the first line whose time is below the one
    /// before (equal times pass).
    void validate(CameraTime& times) override;
};

} // namespace datamodel
