#pragma once

#include <datamodel/validation/ValidationTraverser.h>

namespace datamodel {

/// Checks that the step from one scan line of a band to the next stays
/// within 5 % of the band's first step. Only camera-time objects of uniform
/// line period are checked; a finding is thrown as std::runtime_error for
/// the traverser that runs the validator to report.
class SmoothnessValidator : public virtual ValidationTraverser {
public:
    /// Largest relative departure of a step from the first step.
    static constexpr double sTolerance = 0.05;

    SmoothnessValidator(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    SmoothnessValidator(const SmoothnessValidator&) = default;
    SmoothnessValidator& operator=(const SmoothnessValidator&) = default;
    ~SmoothnessValidator() override;

    /// The check for a band of uniform line period. Throws "CT index out of
    /// range." for fewer than two lines and, at the first line i (from 2)
    /// whose step d from line i - 1 lies outside [d0 - 5 % d0, d0 + 5 % d0]
    /// with d0 the step from line 0 to line 1: "CTG file " + CTG file +
    /// ": illegal delta at " + i + " between " + time(i - 1) + " and " +
    /// time(i) + " of " + d + ": expected a value within +/- 20% of " + d0,
    /// times in seconds with five decimals (the text says 20 %; the test is
    /// 5 %).
    virtual void validateV1(CameraTime& times) const;
    /// Does nothing: a band of non-uniform line period has no one step to
    /// hold to.
    virtual void validateV2(CameraTime& times) const;

    using ValidationTraverser::validate;
    /// Loads the times (failures pass through unchanged), then runs
    /// validateV2 for a band of non-uniform line period, else validateV1.
    void validate(CameraTime& times) override;
};

} // namespace datamodel
