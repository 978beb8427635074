#pragma once

#include <datamodel/validation/NoValidationTraverser.h>

namespace datamodel {

/// Judges the trajectory quality of EOP trajectories (docs/quality-measures.md)
/// against the limits of the settings file, read once at construction
/// (group "Validation"; a value that is not a number is reported as an error
/// and its default used). Everything else it walks without checking.
class EoqValidationTraverser : public NoValidationTraverser {
public:
    /// The limits, with their keys and defaults.
    struct Limits {
        double psrError = 3.0;         ///< "Validation/psr_error_limit"
        double psrWarning = 1.0;       ///< "Validation/psr_warning_limit"
        double rpeError = 0.5;         ///< "Validation/rpe_error_limit", +- symmetric
        double rpeWarning = 0.5;       ///< "Validation/rpe_warning_limit", +- symmetric
        double ncsErrorLower = -1.0;   ///< "Validation/ncs_error_lower_limit"
        double ncsErrorUpper = 3.0;    ///< "Validation/ncs_error_upper_limit"
        double ncsWarningLower = 0.0;  ///< "Validation/ncs_warning_lower_limit"
        double ncsWarningUpper = 2.0;  ///< "Validation/ncs_warning_upper_limit"
    };

    EoqValidationTraverser(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    EoqValidationTraverser(const EoqValidationTraverser&) = default;
    EoqValidationTraverser& operator=(const EoqValidationTraverser&) = default;
    ~EoqValidationTraverser() override;

    using NoValidationTraverser::validate;
    /// Without quality measures, information "No quality parameters.".
    /// Otherwise, numbers with six significant digits:
    /// - information "Normalized Coverage Speed (NCS) - RMS: <rms>, range:
    ///   <min> - <max>"; then the minimum NCS (for both bounds, as settled)
    ///   below the lower or above the upper error limit: error "Heavy
    ///   turbulence detected: Very fast forward and/or backward coverage.";
    ///   else against the warning limits: warning "Turbulence detected: Fast
    ///   forward and/or slight backward coverage.";
    /// - information "Relative L1 Pixel Error (RPE) - RMS: <rms>, range:
    ///   <min> - <max>"; then the maximum RPE above the error limit or the
    ///   minimum below its negative: error "Expect visible L1 artifacts due
    ///   to heavy turbulence."; else the same with the warning limit:
    ///   warning "Expect slight L1 artifacts due to turbulence.";
    /// - information "Pixel Smearing Ratio (PSR) - RMS: <rms>, maximum:
    ///   <max>"; then the maximum PSR above the error limit: error "Expect
    ///   visible L1/L2 smearing due to heavy turbulence."; else above the
    ///   warning limit: warning "Expect slight L1/L2 smearing due to
    ///   turbulence.".
    void validate(EopTrajectory& trajectory) override;

    const Limits& limits() const { return m_limits; }

private:
    Limits m_limits;
};

} // namespace datamodel
