#pragma once

#include <datamodel/validation/TmGapValidator.h>
#include <datamodel/validation/TmSequenceValidator.h>

namespace datamodel {

/// Both time-mark checks, reported instead of thrown: a gap is information
/// (the conversion of camera times bridges it), CT running backwards is an
/// error.
class TmValidator : public TmGapValidator, public TmSequenceValidator {
public:
    TmValidator(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    TmValidator(const TmValidator&) = default;
    TmValidator& operator=(const TmValidator&) = default;
    ~TmValidator() override;

    using NoValidationTraverser::validate;
    /// Reports a session without a readable time-mark file as an error and
    /// stops. Otherwise runs the gap check, its finding (a std::exception)
    /// to information, then the sequence check, its finding to error.
    /// Exceptions other than std::exception pass through.
    void validate(const RecordingSession& session) override;
    /// The same as validate(const RecordingSession&).
    void validate(RecordingSession& session) override;
};

} // namespace datamodel
