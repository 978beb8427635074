#pragma once

#include <datamodel/model/Seconds.h>
#include <datamodel/validation/NoValidationTraverser.h>

namespace datamodel {

/// Checks that the camera-clock (CT) steps of a session's time-mark file
/// stay within 10 % of its first step, optionally only between two CT
/// bounds. A gap is thrown as CtTimeGap.
class TmGapValidator : public virtual NoValidationTraverser {
public:
    /// Largest relative departure of a step from the first step.
    static constexpr double sTolerance = 0.1;

    TmGapValidator(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    TmGapValidator(const TmGapValidator&) = default;
    TmGapValidator& operator=(const TmGapValidator&) = default;
    ~TmGapValidator() override;

    /// Marks below `lower` are not judged (a negative bound: no bound).
    void setCtLowerBound(Seconds lower) { m_ctLowerBound = lower; }
    /// The walk stops, passing, at the first mark at or above `upper` (a
    /// negative bound: no bound).
    void setCtUpperBound(Seconds upper) { m_ctUpperBound = upper; }
    Seconds ctLowerBound() const { return m_ctLowerBound; }
    Seconds ctUpperBound() const { return m_ctUpperBound; }

    using NoValidationTraverser::validate;
    /// Walks the CT values of the session's time-mark file from the third
    /// mark on. Throws CtTimeGap ("TM file has gap at CT time " + CT in ms,
    /// one decimal, + "ms") at the first mark whose step from the mark
    /// before lies outside [d - 10 % d, d + 10 % d], with d the step from
    /// the first mark to the second; a std::runtime_error naming the file
    /// when it holds fewer than two marks; and what RecordingSession::tmFile
    /// throws.
    virtual void validate(const RecordingSession& session);
    /// The same as validate(const RecordingSession&).
    void validate(RecordingSession& session) override;

private:
    Seconds m_ctLowerBound;
    Seconds m_ctUpperBound;
};

} // namespace datamodel
