#pragma once

#include <datamodel/validation/NoValidationTraverser.h>

namespace datamodel {

/// Checks that the session's time-mark file covers the camera-clock (CT)
/// range of every level-0 band: the GPS times of a band's first and last
/// line must be computable. A band that is not covered throws what the
/// conversion throws ("maximum CT time in " + TM file + " is " … "ms" when
/// the marks end before the band, "CTTime too small." when the band starts
/// before the first mark); the traverser that runs the validator reports it.
class CtTmCoverageValidator : public virtual NoValidationTraverser {
public:
    CtTmCoverageValidator(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    CtTmCoverageValidator(const CtTmCoverageValidator&) = default;
    CtTmCoverageValidator& operator=(const CtTmCoverageValidator&) = default;
    ~CtTmCoverageValidator() override;

    using NoValidationTraverser::validate;
    /// Walks the session's takes and their level-0 images.
    void validate(RecordingSession& session) override;
    /// No check of the image itself; checks its camera times as
    /// validate(CameraTime&) does, without loading all of them.
    void validate(L0Image& image) override;
    /// Computes the GPS times of the band's first and last line
    /// (CameraTime::computeMinMax: without a CTG file, through the session's
    /// time-mark file) and drops them; throws when that fails.
    void validate(CameraTime& times) override;
};

} // namespace datamodel
