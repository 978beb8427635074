#include <datamodel/session/EopGenerationStage.h>

#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/trajectory/EopTrajectory.h>

#include <platform/util/ErrorText.h>
#include <platform/util/ProgressInterface.h>

#include <QFileInfo>

#include <algorithm>

namespace datamodel {

EopGenerationStage::EopGenerationStage(std::string trajectory)
    : m_trajectory(std::move(trajectory))
{
}

namespace {

/// The session's trajectory called `wanted` (its name or its path).
const RecordingSession::ImuTrajectoryId* named(const RecordingSession& session,
                                               const std::vector<RecordingSession::ImuTrajectoryId*>& ids,
                                               const std::string& wanted)
{
    const QString canonical = QFileInfo(QString::fromStdString(wanted)).canonicalFilePath();
    for (const RecordingSession::ImuTrajectoryId* id : ids) {
        if (!id)
            continue;
        if (id->name() == wanted)
            return id;
        const QString path = QFileInfo(QString::fromStdString(session.imuTrajectoryPath(*id))).canonicalFilePath();
        if (!canonical.isEmpty() && path == canonical)
            return id;
    }
    return nullptr;
}

} // namespace

void EopGenerationStage::run(RecordingSession& session, const std::vector<Take*>& takes, PreparationReport& report,
                             util::ProgressInterface* progress)
{
    const std::vector<RecordingSession::ImuTrajectoryId*> ids = session.imuTrajectories();
    const RecordingSession::ImuTrajectoryId* chosen = nullptr;
    if (!m_trajectory.empty()) {
        chosen = named(session, ids, m_trajectory);
        if (!chosen) {
            report.error(session.directory(), "No trajectory " + m_trajectory + " in " + session.directory());
            return;
        }
    }
    // SBET files first: the processed solution with its accuracy.
    auto isSbet = [&report](const std::string& name) {
        return std::any_of(report.trajectories.begin(), report.trajectories.end(),
                           [&name](const TrajectorySummary& t) { return t.name == name && t.format == "SBET"; });
    };

    util::ProgressTask task(progress, name(), 0, static_cast<long long>(takes.size()));
    long long done = 0;
    for (Take* take : takes) {
        const auto item = std::find_if(report.takes.begin(), report.takes.end(),
                                       [&take](const TakePreparation& t) { return t.name == take->name(); });
        task.report(done++);
        if (item == report.takes.end() || !item->gpsStartSec)
            continue; // no times: said already
        const RecordingSession::ImuTrajectoryId* id = chosen;
        if (!id) {
            std::vector<std::string> covering = item->coveredBy;
            std::stable_partition(covering.begin(), covering.end(), isSbet);
            if (!covering.empty())
                id = named(session, ids, covering.front());
        }
        const std::string subject = "take " + take->name();
        if (!id) {
            report.add(PreparationMessage{PreparationMessage::Severity::Error, subject,
                                          "No EOPs for take " + take->name()
                                              + ": no trajectory covers every scan line of it",
                                          take->name(), {}});
            continue;
        }
        try {
            take->setImuTrajectory(*id, nullptr, nullptr);
            EopSummary summary;
            summary.trajectory = id->name();
            summary.samples = take->eopTrajectory().numSets();
            summary.intervalSec = take->eopTrajectory().frequency();
            summary.file = take->writeEopFile();
            item->eop = summary;
        } catch (const std::exception& e) {
            report.add(PreparationMessage{PreparationMessage::Severity::Error, subject,
                                          "No EOPs for take " + take->name() + " from " + id->name() + ": "
                                              + util::fullMessage(e),
                                          take->name(), {}});
        }
    }
    task.report(done);
}

} // namespace datamodel
