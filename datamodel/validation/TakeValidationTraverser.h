#pragma once

#include <datamodel/validation/DataprepValidationTraverser.h>

#include <memory>
#include <vector>

namespace util {
class ProgressInterface;
}

namespace datamodel {

class CtgCoverageValidator;
class ImuTrajectory;

/// The data-preparation checks of one take: the take-level checks (dark
/// takes, camera calibration, start and stop positions, the trajectory's
/// angular rates over the take's time range), then per level-0 image the
/// pixel file, the CTG file (made when missing), the info file, the
/// integration times and the trajectory's coverage of every scan line.
/// docs/validation.md lists every message with its severity.
///
/// The trajectory checked is the one assigned to the take or, while none
/// is, the first one the session lists; it is opened once.
class TakeValidationTraverser : public DataprepValidationTraverser {
public:
    /// Integration times must lie above 0 and below this, s.
    static constexpr double sMaxIntegrationTimeSec = 0.02;
    /// The same for flights of the ZELM9 generation, s.
    static constexpr double sMaxIntegrationTimeZelM9Sec = 0.04;

    /// Checks `take` (not owned). `progress` (not owned, may be null) hears
    /// of the coverage check's progress through each band.
    TakeValidationTraverser(Take* take, Information* information = nullptr, Warning* warning = nullptr,
                            Error* error = nullptr, util::ProgressInterface* progress = nullptr);
    TakeValidationTraverser(const TakeValidationTraverser&) = delete;
    TakeValidationTraverser& operator=(const TakeValidationTraverser&) = delete;
    ~TakeValidationTraverser() override;

    using DataprepValidationTraverser::validate;
    /// The session's trajectory checks (SessionValidationTraverser), then
    /// the walk of this traverser's take only.
    void validate(RecordingSession& session) override;
    /// The take-level checks, then the walk over the take's images. Another
    /// take than the one this traverser was made for is left alone.
    void validate(Take& take) override;
    /// The checks of one level-0 image, in this order: the pixel file; the
    /// CTG file, made from the CT and time-mark files when it is missing;
    /// the info file; the integration times; the trajectory's coverage.
    void validate(L0Image& image) override;

    /// Checks `trajectory` (not owned, may be null for none), opened by the
    /// caller, instead of opening the take's: a caller that checks many
    /// takes opens each trajectory file once.
    void useTrajectory(ImuTrajectory* trajectory);

    /// Whether a missing CTG file is made from the CT and time-mark files
    /// (the default); otherwise the image is only listed by missingCtgs().
    /// A caller that has written every CTG file it could (and said why not
    /// the others) turns it off.
    void setCreateMissingCtgs(bool create) { m_createMissingCtgs = create; }

    /// Whether some image's CTG file was missing and could not be made.
    bool ctgsMissing() const { return !m_ctgsMissing.empty(); }
    /// The images whose CTG file was missing and could not be made.
    const std::vector<L0Image*>& missingCtgs() const { return m_ctgsMissing; }
    /// Whether the trajectory could not be opened, its angular rates
    /// exceeded the limit, or (ZELM9 flights) it ended before a band did.
    bool trajectoryFailed() const;

private:
    class Forwarder;

    void checkTake(Take& take);
    void checkIntegrationTimes(L0Image& image);
    void checkCoverage(L0Image& image);
    /// The trajectory, opened on first use; null when there is none or it
    /// cannot be opened (reported once as an error).
    ImuTrajectory* trajectory(const Take& take);

    Take* m_take;
    util::ProgressInterface* m_progress;
    std::vector<L0Image*> m_ctgsMissing;
    bool m_trajectoryFailed = false;
    bool m_createMissingCtgs = true;
    std::unique_ptr<Forwarder> m_forwarder;
    bool m_trajectoryOpened = false;
    std::unique_ptr<ImuTrajectory> m_trajectory;
    ImuTrajectory* m_checkedTrajectory = nullptr; ///< m_trajectory or the caller's
    std::unique_ptr<CtgCoverageValidator> m_coverage;
};

} // namespace datamodel
