#include <datamodel/validation/CtgCoverageValidator.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TimeFormat_p.h>
#include <datamodel/trajectory/ImuTrajectory.h>

#include <platform/flightdata/Utility.h>
#include <platform/util/ProgressInterface.h>

#include <algorithm>
#include <limits>

namespace datamodel {

namespace {

constexpr std::size_t sNoRun = std::numeric_limits<std::size_t>::max();

bool isZelM9Flight(const L0Image& image)
{
    try {
        return flightdata::Utility::isZelM9(*image.take().session().flightDataSession());
    } catch (const std::exception&) {
        return false;
    }
}

/// Whether the times of [begin, end) never fall (a time that is not a
/// number breaks the order too). No early exit: the loop vectorises.
bool ascending(const std::vector<Seconds>& times, std::size_t begin, std::size_t end)
{
    bool ordered = true;
    for (std::size_t i = begin + 1; i < end; ++i)
        ordered &= times[i].value() >= times[i - 1].value();
    return ordered;
}

/// Seconds with one decimal: the in-flight messages write the time so,
/// labelled "ms".
std::string secondsText(Seconds time)
{
    return fixedText(time.value(), 1);
}

} // namespace

CtgCoverageValidator::CtgCoverageValidator(Information* information, Warning* warning, Error* error,
                                           util::ProgressInterface* progress, ImuTrajectory* trajectory)
    : ValidationTraverser(information, warning, error)
    , DataprepValidationTraverser(Quiet{})
    , m_progress(progress)
    , m_trajectory(trajectory)
{
}

CtgCoverageValidator::~CtgCoverageValidator() = default;

bool CtgCoverageValidator::coversEveryLine(const ImuTrajectory& trajectory, const std::vector<Seconds>& times)
{
    const std::size_t n = times.size();
    const bool oneInterval = !trajectory.hasGpsRollover();
    for (std::size_t begin = 0; begin < n; begin += sStretchLines) {
        const std::size_t end = std::min(begin + sStretchLines, n);
        if (oneInterval && ascending(times, begin, end) && trajectory.containsGpsTime(times[begin])
            && trajectory.containsGpsTime(times[end - 1]))
            continue;
        for (std::size_t i = begin; i < end; ++i)
            if (!trajectory.containsGpsTime(times[i]))
                return false;
    }
    return true;
}

void CtgCoverageValidator::validate(L0Image& image)
{
    validate(static_cast<const L0Image&>(image));
}

void CtgCoverageValidator::validate(const L0Image& image)
{
    const CameraTime& times = image.cameraTime();
    if (!times.ctgFileCreated()) {
        if (!m_ctgMissingReported)
            information("CTG file " + times.ctgFileName() + " not yet created. Skipping trajectory coverage validation.");
        m_ctgMissingReported = true;
        return;
    }
    if (!m_trajectory) {
        if (!m_noTrajectoryReported)
            information("No trajectory defined. Skipping trajectory coverage validation.");
        m_noTrajectoryReported = true;
        return;
    }
    const bool zelM9 = isZelM9Flight(image);

    const std::vector<Seconds>& t = times.values();
    const std::size_t n = t.size();
    const ImuTrajectory& trajectory = *m_trajectory;
    const std::string name = trajectory.fileName();
    const bool oneInterval = !trajectory.hasGpsRollover();
    util::ProgressTask progress(m_progress, "Trajectory coverage of " + image.bandName(), 0, (long long)n);

    std::size_t runStart = sNoRun;
    for (std::size_t begin = 0; begin < n;) {
        const std::size_t end = std::min(begin + sStretchLines, n);
        const bool covered = oneInterval && runStart == sNoRun && ascending(t, begin, end)
                             && trajectory.containsGpsTime(t[begin]) && trajectory.containsGpsTime(t[end - 1]);
        if (!covered) {
            for (std::size_t i = begin; i < end; ++i) {
                if (!trajectory.containsGpsTime(t[i])) {
                    if (runStart == sNoRun)
                        runStart = i;
                } else if (runStart != sNoRun) {
                    if (i - runStart == 1)
                        error("GPS time " + secondsText(t[runStart]) + "ms not covered by trajectory " + name);
                    else
                        error("GPS times between " + secondsText(t[runStart]) + "ms and " + secondsText(t[i])
                              + "ms not covered by trajectory " + name);
                    runStart = sNoRun;
                }
            }
        }
        begin = end;
        progress.report((long long)begin);
    }

    if (runStart == sNoRun)
        return;
    if (runStart == 0)
        error("All GPS times (from " + millisecondsText(t[0]) + "ms to " + millisecondsText(t[n - 1])
              + "ms) not covered by trajectory " + name);
    else
        error("GPS times between " + millisecondsText(t[runStart]) + "ms and " + millisecondsText(t[n - 1])
              + "ms not covered by trajectory " + name);
    if (zelM9)
        m_trajectoryFailed = true;
}

} // namespace datamodel
