#pragma once

#include <datamodel/session/PreparationReport.h>

#include <memory>
#include <string>
#include <vector>

namespace util {
class ProgressInterface;
}

namespace datamodel {

class RecordingSession;
class Take;

/// One step of a session preparation, run after the built-in ones (the CTG
/// files and the trajectory coverage) on the takes chosen. A stage reports
/// what it finds through the report's messages; an exception it throws is
/// caught, reported as an error of the stage and the other stages go on.
class PreparationStage {
public:
    virtual ~PreparationStage() = default;
    /// What the stage does, for the progress display ("Validating takes").
    virtual std::string name() const = 0;
    virtual void run(RecordingSession& session, const std::vector<Take*>& takes, PreparationReport& report,
                     util::ProgressInterface* progress) = 0;
};

/// Prepares a recording session for triangulation: opens it, lists its
/// sensor, time-mark file, trajectories, takes and bands, writes every
/// missing CTG file (the GPS time of every scan line, from the band's CT file
/// and the session's time-mark file), gives each take its GPS time range and
/// the trajectories that hold it, runs the data-preparation checks, writes
/// the EOP file of every covered take, then runs the stages added. Nothing is
/// thrown for a fault of the flight: every finding is a message of the
/// report, with the file, take or band it concerns.
class SessionPreparation {
public:
    struct Options {
        /// Only these takes (every take of the session when empty). A name
        /// that is not a take of the session is an error of the report.
        std::vector<std::string> takes;
        /// Write missing CTG files (else their presence is only checked).
        bool writeCtg = true;
        /// Work out which trajectories cover each take.
        bool checkCoverage = true;
        /// Run the data-preparation checks of the time marks, trajectories,
        /// takes and bands (PreparationValidation) once the CTG files are
        /// there.
        bool validate = true;
        /// Generate and write the EOP file of every take whose scan lines
        /// a trajectory covers (EopGenerationStage), after the checks.
        bool writeEop = true;
        /// The trajectory to generate EOPs from (name or path); empty to
        /// choose per take.
        std::string eopTrajectory;
        /// Compute, write and judge the trajectory quality of every take
        /// that got its EOPs (QualityStage), after them.
        bool computeQuality = true;
        /// The DEM for the quality (empty: the session's dem/ folder, else
        /// a flat surface at `flatTerrainHeightM`, ellipsoidal).
        std::string dem;
        double flatTerrainHeightM = 0.0;
    };

    SessionPreparation();
    explicit SessionPreparation(Options options);
    ~SessionPreparation();
    SessionPreparation(const SessionPreparation&) = delete;
    SessionPreparation& operator=(const SessionPreparation&) = delete;

    /// Appends a stage, run after the built-in ones and those added before.
    void addStage(std::unique_ptr<PreparationStage> stage);

    /// Prepares the session folder `directory` (the folder that holds raw/,
    /// mm/ and gps-imu/). Progress goes to `progress` when not null.
    PreparationReport run(const std::string& directory, util::ProgressInterface* progress = nullptr) const;

private:
    Options m_options;
    std::vector<std::unique_ptr<PreparationStage>> m_stages;
};

} // namespace datamodel
