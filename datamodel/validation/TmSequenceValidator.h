#pragma once

#include <datamodel/validation/NoValidationTraverser.h>

namespace datamodel {

/// Checks that the camera-clock (CT) values of a session's time-mark file
/// rise strictly from mark to mark.
class TmSequenceValidator : public virtual NoValidationTraverser {
public:
    TmSequenceValidator(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    TmSequenceValidator(const TmSequenceValidator&) = default;
    TmSequenceValidator& operator=(const TmSequenceValidator&) = default;
    ~TmSequenceValidator() override;

    using NoValidationTraverser::validate;
    /// Throws "CT time goes backwards in TM file: " + the file's path at
    /// the first mark whose CT is not above the one before (equal counts as
    /// backwards), and what RecordingSession::tmFile throws.
    virtual void validate(const RecordingSession& session);
    /// The same as validate(const RecordingSession&).
    void validate(RecordingSession& session) override;
};

} // namespace datamodel
