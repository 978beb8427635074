#pragma once

#include <datamodel/validation/ValidationTraverser.h>

namespace datamodel {

/// Compares a band's mean line spacing with the integration time the
/// recorder says it used, when the setting "Validation/ct_not_equal_it_warning"
/// asks for it ("true" or "yes", any case; default "false") and the camera
/// head is "QX310". Findings are warnings, not exceptions, so a traverser
/// that runs this check goes on with the band.
class IntegrationTimeValidator : public virtual ValidationTraverser {
public:
    /// Largest relative difference of the mean line spacing from the
    /// recorded integration time.
    static constexpr double sTolerance = 0.025;

    IntegrationTimeValidator(Information* information = nullptr, Warning* warning = nullptr,
                             Error* error = nullptr);
    IntegrationTimeValidator(const IntegrationTimeValidator&) = default;
    IntegrationTimeValidator& operator=(const IntegrationTimeValidator&) = default;
    ~IntegrationTimeValidator() override;

    /// The check for a band of uniform line period. The mean spacing is
    /// (time of the last line - time of line 0) / the number of lines. With
    /// a recorded integration time it above 0 and |mean - it| above 2.5 % of
    /// the mean, warns "FlightData.xml claims the integration time is " + it
    /// + "s but the CTG file has an average delta of " + mean + "s (maximum
    /// difference allowed is " + tolerance + "s) for band " + band (four
    /// decimals); with it at or below 0, warns "The integration time from "
    /// + info file + " is invalid and will not be used.". Skipped for a
    /// session read from a raw recording, when the setting is off and for
    /// other camera heads (also when the flight data cannot be read). Throws
    /// "CameraTime not initialized." without an image, "CT index out of
    /// range." for a band without lines, and what the flight data throw when
    /// they do not know the take or the band.
    virtual void validateV1(CameraTime& times);
    /// Does nothing: a band of non-uniform line period has no one spacing.
    virtual void validateV2(CameraTime& times);

    using ValidationTraverser::validate;
    /// Loads the times (failures pass through unchanged), then runs
    /// validateV2 for a band of non-uniform line period, else validateV1.
    void validate(CameraTime& times) override;
};

} // namespace datamodel
