#pragma once

#include <string>
#include <vector>

namespace util {
class ProgressInterface;
}

namespace datamodel {

class ImuTrajectory;
class RecordingSession;
class Take;
class TmFile;
struct PreparationReport;

/// The data-preparation checks of a session, as a preparation runs them
/// once its CTG files are written: every finding becomes a message of the
/// report with its severity, and with the take and band it belongs to.
///
/// - the time-mark file: the regularity of its steps (a gap is
///   information), its camera times rising, and marks that stray from the
///   camera clock's course through their neighbours (information: the
///   conversion takes them as they are);
/// - each trajectory file: default standard deviations, a GPS week
///   rollover, an unordered time index;
/// - per take, a TakeValidationTraverser (take-level checks, then per band
///   the pixel file, CTG file, info file, integration times and the
///   trajectory's coverage of every scan line), and per band the camera-time
///   checks (times never falling, even steps).
///
/// A time-mark finding is charged to the take whose time it falls in.
class PreparationValidation {
public:
    /// An open trajectory file of the session, as the session lists it.
    struct Trajectory {
        ImuTrajectory* trajectory = nullptr; ///< not owned
        std::string name;
        std::string description;
    };

    /// Marks that stray from the line through their neighbours by more than
    /// this (s) are reported.
    static constexpr double sStrayMarkSec = 0.001;

    /// `session`, `report` and the trajectories are not owned and must
    /// outlive this object.
    PreparationValidation(RecordingSession& session, PreparationReport& report,
                          std::vector<Trajectory> trajectories);

    /// The checks of the time-mark file `marks` (loaded by the caller).
    /// Charged to the takes of the report by their GPS time range, so call
    /// it when the report holds the takes.
    void checkTimeMarks(const TmFile& marks);
    /// The checks of each trajectory file.
    void checkTrajectories();
    /// The checks of `takes` and their bands. Progress goes to `progress`
    /// when not null.
    void checkTakes(const std::vector<Take*>& takes, util::ProgressInterface* progress);

private:
    class TakeTraverser;

    /// The take of the report whose GPS time range meets [fromSec, toSec]
    /// (time-mark times, counted on past a rollover); empty when none does.
    std::string takeAt(double fromSec, double toSec, double weekStartSec) const;
    /// The trajectory the take is checked against: the one assigned to it,
    /// else the first the session lists (null when there is none).
    ImuTrajectory* trajectoryOf(const Take& take) const;

    RecordingSession& m_session;
    PreparationReport& m_report;
    std::vector<Trajectory> m_trajectories;
};

} // namespace datamodel
