#pragma once

#include <datamodel/model/Seconds.h>
#include <datamodel/validation/DataprepValidationTraverser.h>

#include <vector>

#include <cstddef>

namespace util {
class ProgressInterface;
}

namespace datamodel {

class ImuTrajectory;

/// Checks that a GNSS/IMU trajectory covers the GPS time of every scan line
/// of a level-0 band. Each run of lines outside the trajectory is reported
/// as an error when it ends; a band whose CTG file is not there yet and a
/// validator without a trajectory are skipped with one information message
/// each (per validator, not per band).
///
/// A trajectory without a GPS week rollover is taken to cover one interval
/// of time (as ImuTrajectory does): a stretch of ascending line times whose
/// first and last line it covers is then covered throughout, and only the
/// lines of stretches that are not are asked one by one.
class CtgCoverageValidator : public virtual DataprepValidationTraverser {
public:
    /// Lines per stretch of the walk (and per progress report).
    static constexpr std::size_t sStretchLines = 4096;

    /// Neither the progress interface nor the trajectory is owned; either may
    /// be null.
    CtgCoverageValidator(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr,
                         util::ProgressInterface* progress = nullptr, ImuTrajectory* trajectory = nullptr);
    CtgCoverageValidator(const CtgCoverageValidator&) = default;
    CtgCoverageValidator& operator=(const CtgCoverageValidator&) = default;
    ~CtgCoverageValidator() override;

    using DataprepValidationTraverser::validate;
    /// Checks one band. Without its CTG file: the first such band only is
    /// reported to information, "CTG file " + CTG file + " not yet created.
    /// Skipping trajectory coverage validation.". Without a trajectory: "No
    /// trajectory defined. Skipping trajectory coverage validation.", once.
    /// Otherwise reports to error, for a run of uncovered lines that a
    /// covered line s + 1 or i ends: "GPS time " + time(s) + "ms not covered
    /// by trajectory " + trajectory file, or "GPS times between " + time(s) +
    /// "ms and " + time(i) + "ms not covered by trajectory " + file, these
    /// times in seconds despite the label; for a run that reaches the last
    /// line n - 1: "All GPS times (from " + time(0) + "ms to " + time(n - 1)
    /// + "ms) not covered by trajectory " + file when no line is covered,
    /// else "GPS times between " + time(s) + "ms and " + time(n - 1) + "ms
    /// not covered by trajectory " + file, these in milliseconds. All with
    /// one decimal. A run reaching the band's end marks the trajectory as
    /// failed when the flight was recorded by the ZELM9 generation. Throws
    /// what loading the band's times throws.
    virtual void validate(const L0Image& image);
    /// The same as validate(const L0Image&).
    void validate(L0Image& image) override;

    /// Whether `trajectory` covers every one of `times`, asked as validate()
    /// asks it (stretch by stretch).
    static bool coversEveryLine(const ImuTrajectory& trajectory, const std::vector<Seconds>& times);

    /// Whether a band's end was not covered on a ZELM9 flight.
    virtual bool trajectoryFailed() const { return m_trajectoryFailed; }

private:
    util::ProgressInterface* m_progress;
    ImuTrajectory* m_trajectory;
    bool m_ctgMissingReported = false;
    bool m_noTrajectoryReported = false;
    bool m_trajectoryFailed = false;
};

} // namespace datamodel
