#pragma once

#include <datamodel/validation/ValidationTraverser.h>

#include <string>

namespace datamodel {

class ImuTrajectory;

/// The checks of a whole recording session: its GNSS/IMU trajectory files,
/// then a walk over its takes.
class SessionValidationTraverser : public virtual ValidationTraverser {
public:
    SessionValidationTraverser(Information* information = nullptr, Warning* warning = nullptr,
                               Error* error = nullptr);
    SessionValidationTraverser(const SessionValidationTraverser&) = default;
    SessionValidationTraverser& operator=(const SessionValidationTraverser&) = default;
    ~SessionValidationTraverser() override;

    using ValidationTraverser::validate;
    /// checkTrajectories(session), then traverses the session's takes (a
    /// session that cannot list them is an error: the session's text).
    void validate(RecordingSession& session) override;

    /// The session's trajectory files: warns "Cannot find any IMU
    /// trajectories (SBET or SOL files)." when there is none; for each,
    /// warns "Standard deviations are defaults for " + description when it
    /// has none, informs "GPS rollover in " + description when it crosses a
    /// GPS week, and informs "Not all the records for the trajectory file "
    /// + description + " are in increasing order. The index will use more
    /// memory (" + records + " entries)." when its time index could not be
    /// sampled. A trajectory that cannot be opened is an error (the
    /// reader's text).
    void checkTrajectories(const RecordingSession& session);
    /// The checks of checkTrajectories() on one trajectory, opened by the
    /// caller; `description` is the session's description of its file.
    void checkTrajectory(const ImuTrajectory& trajectory, const std::string& description);
};

} // namespace datamodel
