#pragma once

#include <datamodel/validation/ClockSequenceValidator.h>
#include <datamodel/validation/IntegrationTimeValidator.h>
#include <datamodel/validation/NoValidationTraverser.h>
#include <datamodel/validation/SmoothnessValidator.h>

#include <string>
#include <vector>

namespace datamodel {

/// The camera-time checks of a whole recording session: for every level-0
/// band with a CTG file, the clock sequence, the smoothness and the
/// integration time. A band's first finding is reported as a warning and its
/// CTG file is listed as invalid; the next band is then checked as usual.
/// The session fails when a band had no CTG file or failed a check.
class CameraTimeValidator : public virtual NoValidationTraverser,
                            public virtual ClockSequenceValidator,
                            public virtual SmoothnessValidator,
                            public virtual IntegrationTimeValidator {
public:
    CameraTimeValidator(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    CameraTimeValidator(const CameraTimeValidator&) = default;
    CameraTimeValidator& operator=(const CameraTimeValidator&) = default;
    ~CameraTimeValidator() override;

    using NoValidationTraverser::validate;
    /// Checks every band of the session, then throws "Detected errors in ctg
    /// files." when a band had no CTG file or failed a check.
    void validate(RecordingSession& session) override;
    /// Checks one band: nothing when its CTG file does not exist (the
    /// session then counts as having a missing CTG file); otherwise the three
    /// checks in the order clock sequence, smoothness, integration time (the
    /// non-uniform variants for a band of non-uniform line period). The
    /// first failure, loading included, is reported as a warning and ends
    /// the band's checks; its CTG file is listed as invalid.
    void validate(L0Image& image) override;
    /// The three checks on `times`, unguarded: the first finding is thrown.
    void validate(CameraTime& times) override;

    /// Whether some band visited had no CTG file.
    bool ctgsMissing() const { return !m_allCtgsPresent; }
    /// The CTG files of the bands that failed a check, in visiting order.
    const std::vector<std::string>& getInvalidFiles() const { return m_invalidFiles; }

private:
    void checkTimes(CameraTime& times);

    bool m_allCtgsPresent = true;
    std::vector<std::string> m_invalidFiles;
};

} // namespace datamodel
