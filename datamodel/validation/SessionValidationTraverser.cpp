#include <datamodel/validation/SessionValidationTraverser.h>

#include <datamodel/session/RecordingSession.h>
#include <datamodel/trajectory/ImuTrajectory.h>

#include <string>

namespace datamodel {

SessionValidationTraverser::SessionValidationTraverser(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
{
}

SessionValidationTraverser::~SessionValidationTraverser() = default;

void SessionValidationTraverser::validate(RecordingSession& session)
{
    checkTrajectories(session);
    try {
        ValidationTraverser::validate(session);
    } catch (const std::exception& e) {
        error(e.what()); // the session could not list its takes
    }
}

void SessionValidationTraverser::checkTrajectories(const RecordingSession& session)
{
    std::vector<RecordingSession::ImuTrajectoryId*> ids;
    try {
        ids = session.imuTrajectories();
    } catch (const std::exception& e) {
        error(e.what());
        return;
    }
    if (ids.empty()) {
        warning("Cannot find any IMU trajectories (SBET or SOL files).");
        return;
    }
    for (const RecordingSession::ImuTrajectoryId* id : ids) {
        if (!id)
            continue;
        try {
            checkTrajectory(*session.createImuTrajectory(*id), id->description());
        } catch (const std::exception& e) {
            error(e.what());
        }
    }
}

void SessionValidationTraverser::checkTrajectory(const ImuTrajectory& trajectory, const std::string& description)
{
    if (!trajectory.hasStdDevs())
        warning("Standard deviations are defaults for " + description);
    if (trajectory.hasGpsRollover())
        information("GPS rollover in " + description);
    if (!trajectory.isMonotonicallyIncreasing())
        information("Not all the records for the trajectory file " + description + " are in increasing order. "
                    + "The index will use more memory (" + std::to_string(trajectory.numSets()) + " entries).");
}

} // namespace datamodel
