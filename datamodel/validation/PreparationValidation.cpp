#include <datamodel/validation/PreparationValidation.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/PreparationReport.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CtTimeGap.h>
#include <datamodel/timing/TimeFormat_p.h>
#include <datamodel/timing/TmFile.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/validation/CameraTimeValidator.h>
#include <datamodel/validation/SessionValidationTraverser.h>
#include <datamodel/validation/TakeValidationTraverser.h>
#include <datamodel/validation/TmGapValidator.h>
#include <datamodel/validation/TmSequenceValidator.h>

#include <platform/util/ProgressInterface.h>

#include <algorithm>
#include <datamodel/session/ReportSink_p.h>

#include <cmath>
#include <functional>
#include <map>

namespace datamodel {

using Sink = ReportSink;

/// The take's checks, telling the sink which band each message is about,
/// and after each band's own checks the camera-time checks of its times.
class PreparationValidation::TakeTraverser : public TakeValidationTraverser {
public:
    TakeTraverser(Take& take, Sink& sink, std::function<void()> bandDone)
        : ValidationTraverser(&sink, &sink, &sink)
        , TakeValidationTraverser(&take, &sink, &sink, &sink)
        , m_takeName(take.name())
        , m_sink(sink)
        , m_cameraTimes(&sink, &sink, &sink)
        , m_bandDone(std::move(bandDone))
    {
        m_sink.at(m_takeName, {});
    }

    using TakeValidationTraverser::validate;
    void validate(L0Image& image) override
    {
        TakeValidationTraverser::validate(image);
        m_sink.at(m_takeName, image.bandName());
        m_cameraTimes.validate(image);
        m_sink.at(m_takeName, {});
        image.uncache(); // the times of a checked band are not needed again
        m_bandDone();
    }

protected:
    void error(const std::string& message) override
    {
        tell();
        TakeValidationTraverser::error(message);
    }
    void warning(const std::string& message) override
    {
        tell();
        TakeValidationTraverser::warning(message);
    }
    void information(const std::string& message) override
    {
        tell();
        TakeValidationTraverser::information(message);
    }

private:
    void tell() { m_sink.at(m_takeName, currentImage() ? currentImage()->bandName() : std::string()); }

    std::string m_takeName;
    Sink& m_sink;
    CameraTimeValidator m_cameraTimes;
    std::function<void()> m_bandDone;
};

PreparationValidation::PreparationValidation(RecordingSession& session, PreparationReport& report,
                                             std::vector<Trajectory> trajectories)
    : m_session(session)
    , m_report(report)
    , m_trajectories(std::move(trajectories))
{
}

std::string PreparationValidation::takeAt(double fromSec, double toSec, double weekStartSec) const
{
    // Take times past a rollover may be written within the new week.
    const auto counted = [weekStartSec](double timeSec) {
        return timeSec < weekStartSec - 302400.0 ? timeSec + 604800.0 : timeSec;
    };
    for (const TakePreparation& take : m_report.takes) {
        if (!take.gpsStartSec || !take.gpsEndSec)
            continue;
        if (counted(*take.gpsStartSec) <= toSec && fromSec <= counted(*take.gpsEndSec))
            return take.name;
    }
    return {};
}

void PreparationValidation::checkTimeMarks(const TmFile& marks)
{
    Sink sink(m_report);
    sink.about(marks.name());
    const TmFile::Records& records = marks.records();
    if (records.empty())
        return;
    const double weekStartSec = records.front().gpsTime;
    // A time-mark finding at record i concerns the scan lines between the
    // marks around it.
    auto charge = [&](std::size_t first, std::size_t last) {
        first = first > 0 ? first - 1 : 0;
        last = std::min(last + 1, records.size() - 1);
        sink.at(takeAt(records[first].gpsTime, records[last].gpsTime, weekStartSec), {});
    };

    // An irregular step is information; camera times that do not rise are
    // an error.
    TmGapValidator gaps;
    try {
        gaps.validate(m_session);
    } catch (const CtTimeGap& gap) {
        const auto at = std::find_if(records.begin(), records.end(), [&gap](const TmFile::TmRecord& record) {
            return record.ctTime == gap.ctTime().value();
        });
        const std::size_t index = std::size_t(at - records.begin());
        if (at != records.end())
            charge(index, index);
        sink.information(gap.what());
    } catch (const std::exception& e) {
        sink.information(e.what());
    }
    sink.at({}, {});
    TmSequenceValidator sequence;
    try {
        sequence.validate(m_session);
    } catch (const std::exception& e) {
        sink.error(e.what());
        return;
    }

    // A mark latched late or early lies off the line through the marks
    // around it; the steps stay regular enough for the gap check. The
    // conversion takes the mark as it is: say so, per take.
    struct Stray {
        std::size_t first = 0;
        std::size_t last = 0;
        std::size_t count = 0;
        double largestSec = 0.0;
    };
    std::map<std::string, Stray> strays;
    std::vector<std::string> order;
    for (std::size_t i = 1; i + 1 < records.size(); ++i) {
        const TmFile::TmRecord& before = records[i - 1];
        const TmFile::TmRecord& after = records[i + 1];
        const double span = after.gpsTime - before.gpsTime;
        if (!(span > 0.0))
            continue;
        const double expected
            = before.ctTime + (after.ctTime - before.ctTime) * (records[i].gpsTime - before.gpsTime) / span;
        const double offSec = std::abs(records[i].ctTime - expected);
        if (!(offSec > sStrayMarkSec))
            continue;
        const std::string take = takeAt(before.gpsTime, after.gpsTime, weekStartSec);
        auto [entry, added] = strays.try_emplace(take, Stray{i, i, 0, 0.0});
        if (added)
            order.push_back(take);
        Stray& stray = entry->second;
        stray.last = i;
        ++stray.count;
        stray.largestSec = std::max(stray.largestSec, offSec);
    }
    for (const std::string& take : order) {
        const Stray& stray = strays[take];
        sink.at(take, {});
        sink.information(std::to_string(stray.count) + " time marks between record " + std::to_string(stray.first)
                         + " and record " + std::to_string(stray.last) + " of " + marks.name()
                         + " lie up to " + fixedText(stray.largestSec * 1000.0, 1)
                         + " ms off the camera clock's course through their neighbours; the camera times are "
                           "converted with these marks as they are");
    }
}

void PreparationValidation::checkTrajectories()
{
    Sink sink(m_report);
    SessionValidationTraverser checks(&sink, &sink, &sink);
    for (const Trajectory& open : m_trajectories) {
        if (!open.trajectory)
            continue;
        sink.about(open.trajectory->fileName());
        checks.checkTrajectory(*open.trajectory, open.description);
    }
}

ImuTrajectory* PreparationValidation::trajectoryOf(const Take& take) const
{
    // The one assigned to the take; else the first that holds all its
    // lines; else the first the session lists.
    std::string name;
    if (const RecordingSession::ImuTrajectoryId* assigned = take.imuTrajectorySource())
        name = assigned->name();
    else
        for (const TakePreparation& item : m_report.takes)
            if (item.name == take.name() && !item.coveredBy.empty())
                name = item.coveredBy.front();
    for (const Trajectory& open : m_trajectories)
        if (name.empty() || open.name == name)
            return open.trajectory;
    return nullptr;
}

void PreparationValidation::checkTakes(const std::vector<Take*>& takes, util::ProgressInterface* progress)
{
    std::size_t bands = 0;
    for (const Take* take : takes)
        bands += take->imagesL0().size();
    util::ProgressTask task(progress, "Validating takes", 0, static_cast<long long>(bands));
    long long done = 0;
    Sink sink(m_report);
    for (Take* take : takes) {
        // What the traverser says while it is made is the session's.
        sink.at({}, {});
        TakeTraverser traverser(*take, sink, [&task, &done] { task.report(++done); });
        traverser.useTrajectory(trajectoryOf(*take));
        // The preparation wrote every CTG file it could and said why not
        // the others.
        traverser.setCreateMissingCtgs(false);
        try {
            traverser.traverse(*take);
        } catch (const std::exception& e) {
            sink.at(take->name(), {});
            sink.error(e.what());
        }
    }
}

} // namespace datamodel
