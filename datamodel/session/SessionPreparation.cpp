#include <datamodel/session/SessionPreparation.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/EopGenerationStage.h>
#include <datamodel/session/QualityStage.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/session/SessionDataFile.h>
#include <datamodel/timing/CtgBuilder.h>
#include <datamodel/timing/TmFile.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/PosFile.h>
#include <datamodel/trajectory/SbetFile.h>
#include <datamodel/trajectory/SolFile.h>
#include <datamodel/validation/CtgCoverageValidator.h>
#include <datamodel/validation/PreparationValidation.h>

#include <platform/flightdata/FlightDataFactory.h>
#include <platform/flightdata/SessionInterface.h>
#include <platform/util/ErrorText.h>
#include <platform/util/InvalidFileError.h>
#include <platform/util/ProgressInterface.h>

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>

namespace datamodel {

namespace {

std::string takeSubject(const Take& take)
{
    return "take " + take.name();
}

std::string bandSubject(const Take& take, const std::string& band)
{
    return "take " + take.name() + ", band " + band;
}

/// A finding about a take, or one of its bands when `band` is not empty.
void addAbout(PreparationReport& report, PreparationMessage::Severity severity, const Take& take,
              const std::string& band, std::string text)
{
    report.add(PreparationMessage{severity, band.empty() ? takeSubject(take) : bandSubject(take, band),
                                  std::move(text), take.name(), band});
}

/// The file a failure names through a util::InvalidFileError, itself or
/// nested at any depth.
std::optional<std::string> fileAtFault(const std::exception& failure)
{
    if (const auto* file = dynamic_cast<const util::InvalidFileError*>(&failure))
        return file->path();
    try {
        std::rethrow_if_nested(failure);
    } catch (const std::exception& inner) {
        return fileAtFault(inner);
    } catch (...) {
    }
    return std::nullopt;
}

/// A failure of the session as a message: about the file at fault (and the
/// take and band of an info file), else about the session directory.
PreparationMessage sessionFailure(const std::string& where, const std::exception& failure)
{
    PreparationMessage message{PreparationMessage::Severity::Error, where, util::fullMessage(failure), {}, {}};
    if (const std::optional<std::string> path = fileAtFault(failure)) {
        message.subject = *path;
        if (QFileInfo(QString::fromStdString(*path)).suffix() == QLatin1String("info"))
            RecordingSession::takeAndBandOfInfoFile(*path, message.take, message.band);
    }
    return message;
}

// A session's raw/ folder given instead of the session folder: the folder
// is named raw and its parent holds the session's other folders.
bool isRawFolderOfSession(const QFileInfo& folder)
{
    if (folder.fileName() != QLatin1String("raw"))
        return false;
    const QDir parent = folder.absoluteDir();
    return parent.exists(QStringLiteral("gps-imu")) || parent.exists(QStringLiteral("mm"));
}

// An SBET file without standard deviations is still a trajectory, but the
// coverage and the quality of what is made from it take default ones: say
// so, and why, naming the accuracy file.
void reportAccuracyFile(const SbetFile& sbet, const std::string& description, PreparationReport& report)
{
    if (sbet.hasStdDevs())
        return;
    const std::string accuracy = SbetFile::accuracyFileName(sbet.fileName());
    const std::string defaults = "Standard deviations are defaults for " + description;
    if (!QFileInfo::exists(QString::fromStdString(accuracy)))
        report.warning(accuracy, defaults + ": there is no accuracy file " + accuracy);
    else
        report.warning(accuracy, defaults + ": the accuracy file " + accuracy + " cannot be used: "
                                     + sbet.accuracyFileError());
}

struct OpenTrajectory {
    std::unique_ptr<ImuTrajectory> trajectory;
    std::string name;
    std::string description;
};

} // namespace

SessionPreparation::SessionPreparation() = default;

SessionPreparation::SessionPreparation(Options options)
    : m_options(std::move(options))
{
}

SessionPreparation::~SessionPreparation() = default;

void SessionPreparation::addStage(std::unique_ptr<PreparationStage> stage)
{
    m_stages.push_back(std::move(stage));
}

PreparationReport SessionPreparation::run(const std::string& directory, util::ProgressInterface* progress) const
{
    PreparationReport report;
    report.input = directory;

    const QFileInfo folder(QString::fromStdString(directory));
    if (isRawFolderOfSession(folder)) {
        report.error(directory, "This is the raw/ folder of a session, not a session folder: prepare the session "
                                "folder " + QDir::cleanPath(folder.absoluteDir().path()).toStdString() + " instead.");
        return report;
    }

    std::unique_ptr<RecordingSession> session;
    try {
        // A session data file that cannot be read costs the file naming
        // pattern, not the preparation.
        // Info files that disagree on the camera cost their bands, not the session.
        session = std::make_unique<RecordingSession>(directory, RecordingSession::OpenOptions{false, false, true});
    } catch (const std::exception& e) {
        report.error(directory, util::fullMessage(e));
        return report;
    }
    const std::string& where = session->directory();
    report.sessionDirectory = where;
    if (!session->fileNamePatternIgnored().empty())
        report.warning(where, session->fileNamePatternIgnored() + "; the session has no file naming pattern");
    if (!session->fileNamePatternError().empty())
        report.error(SessionDataFile::path(QString::fromStdString(session->sessionPath())).toStdString(),
                     session->fileNamePatternError() + "; the session is prepared without its file naming pattern");
    try {
        report.sessionName = session->name();
    } catch (const std::exception& e) {
        report.add(sessionFailure(where, e));
    }

    std::vector<Take*> allTakes;
    try {
        allTakes = session->takes();
    } catch (const std::exception& e) {
        report.add(sessionFailure(where, e));
    }
    for (const std::exception_ptr& failure : session->infoFileFailures()) {
        try {
            std::rethrow_exception(failure);
        } catch (const std::exception& e) {
            report.add(sessionFailure(where, e));
        }
    }
    if (allTakes.empty())
        report.error(where, "No takes in " + where);

    // The recorder's files that the session reads quietly (it falls back to
    // the band files without them): a file that is there but refused is an
    // error of the flight.
    auto present = [](const std::string& path) {
        const QFileInfo file(QString::fromStdString(path));
        return file.exists() || file.isSymLink();
    };
    std::string cameraFile;
    try {
        cameraFile = session->flightDataSession()->cameraFile();
    } catch (const std::exception& e) {
        if (present(session->sessionPath() + "/mm/" + flightdata::FlightDataFactory::sFileName))
            report.add(sessionFailure(where, e));
    }
    if (!cameraFile.empty() && present(cameraFile)) {
        try {
            (void)Sensor::fromCameraFile(cameraFile);
        } catch (const std::exception& e) {
            report.error(cameraFile, util::fullMessage(e));
        }
    }

    try {
        const Sensor& sensor = session->sensor();
        report.sensor = SensorSummary{sensor.id(), sensor.type(), sensor.calibrationVersion(), sensor.cameraFile()};
    } catch (const std::exception& e) {
        report.add(sessionFailure(where, e));
    }

    // The time-mark file converts camera times to GPS times.
    TmFile* marks = nullptr;
    try {
        marks = &session->tmFile();
        report.timeMarks = TimeMarkSummary{marks->name(), marks->numLoadedSets(), marks->hasGpsRollover()};
    } catch (const std::exception& e) {
        report.add(sessionFailure(where, e));
    }
    // Marks that cannot be time marks convert nothing: no CTG file is
    // written from them.
    if (marks) {
        try {
            marks->checkPlausible();
        } catch (const std::exception& e) {
            report.add(sessionFailure(where, e));
            marks = nullptr;
        }
    }

    // Trajectories, opened once for the coverage.
    std::vector<OpenTrajectory> trajectories;
    if (m_options.checkCoverage) {
        try {
            for (const RecordingSession::ImuTrajectoryId* id : session->imuTrajectories()) {
                TrajectorySummary summary;
                summary.name = id->name();
                try {
                    // Opened as createImuTrajectory() opens it, keeping why
                    // neither reader took a file.
                    summary.path = session->imuTrajectoryPath(*id);
                    auto trajectory = std::make_unique<ImuTrajectory>(ImuTrajectory::openReader(summary.path));
                    if (dynamic_cast<const SolFile*>(trajectory->reader()))
                        summary.format = "SOL";
                    else if (const auto* sbet = dynamic_cast<const SbetFile*>(trajectory->reader())) {
                        summary.format = "SBET";
                        reportAccuracyFile(*sbet, id->description(), report);
                    }
                    if (const int trailing = trajectory->reader()->trailingBytes())
                        report.warning(summary.path,
                                       summary.path + " ends inside a record: its last " + std::to_string(trailing)
                                           + " bytes (of a record of "
                                           + std::to_string(trajectory->reader()->recordBytes())
                                           + ") are not part of the trajectory");
                    summary.opened = true;
                    summary.records = trajectory->numSets();
                    summary.recordIntervalSec = trajectory->frequency();
                    summary.hasStdDevs = trajectory->hasStdDevs();
                    if (summary.records > 0 && trajectory->reader()) {
                        summary.gpsStartSec = trajectory->reader()->startTime().value();
                        summary.gpsEndSec = trajectory->reader()->endTime().value();
                    }
                    trajectories.push_back({std::move(trajectory), id->name(), id->description()});
                } catch (const std::exception& e) {
                    summary.error = util::fullMessage(e);
                    report.error(summary.path.empty() ? id->name() : summary.path, summary.error);
                }
                report.trajectories.push_back(std::move(summary));
            }
        } catch (const std::exception& e) {
            report.add(sessionFailure(where, e));
        }
        if (report.trajectories.empty())
            report.error(where, "Cannot find any IMU trajectories (SBET or SOL files).");
    }

    // What the session's folders hold but the session left out.
    for (const RecordingSession::SkippedFile& skipped : session->skippedFiles())
        report.warning(skipped.path, "Left out of the session: " + skipped.reason);

    // The takes asked for, in the session's order.
    std::vector<Take*> takes;
    for (Take* take : allTakes) {
        if (m_options.takes.empty()
            || std::find(m_options.takes.begin(), m_options.takes.end(), take->name()) != m_options.takes.end())
            takes.push_back(take);
    }
    for (const std::string& wanted : m_options.takes)
        if (std::none_of(takes.begin(), takes.end(), [&](const Take* take) { return take->name() == wanted; }))
            report.error(where, "No take " + wanted + " in " + where);

    // Every band's CTG file: checked when present, written when missing.
    std::size_t bandCount = 0;
    for (const Take* take : takes)
        bandCount += take->imagesL0().size();
    {
        util::ProgressTask task(progress, m_options.writeCtg ? "Writing CTG files" : "Checking CTG files", 0,
                                static_cast<long long>(bandCount));
        CtgBuilder builder;
        std::vector<std::size_t> staged; // the bands of the take whose CTG file waits for the commit
        long long done = 0;
        // A band whose CTG file can be neither trusted nor written: no times.
        auto fail = [&report](const Take& take, BandPreparation& band, const std::exception& error) {
            band = BandPreparation{band.band, band.ctFile, band.ctgFile, CtgStatus::Failed, {}, {}, {}, {}};
            band.error = util::fullMessage(error);
            addAbout(report, PreparationMessage::Severity::Error, take, band.band, band.error);
        };
        // Which trajectories hold every scan line of the take, band by band.
        auto cover = [&](std::vector<std::string>& coveredBy, bool firstBand) {
            std::vector<std::string> holding;
            for (const OpenTrajectory& open : trajectories)
                if ((firstBand || std::find(coveredBy.begin(), coveredBy.end(), open.name) != coveredBy.end())
                    && CtgCoverageValidator::coversEveryLine(*open.trajectory, builder.times()))
                    holding.push_back(open.name);
            coveredBy = std::move(holding);
        };
        for (Take* take : takes) {
            TakePreparation item;
            item.name = take->name();
            if (take->lineNumber() != Take::sUnsetLineNumber)
                item.lineNumber = int(take->lineNumber());
            for (const Take* dark : take->darkTakes())
                item.darkTakes.push_back(dark->name());
            bool timedBand = false; // whether a band of the take had times
            for (L0Image* image : take->imagesL0()) {
                BandPreparation band;
                band.band = image->bandName();
                band.ctFile = image->ctFilename();
                band.ctgFile = image->ctgFilename();
                auto keep = [&](const CtgBuilder::Band& times, CtgStatus status) {
                    band.ctg = status;
                    band.lines = times.lines;
                    if (times.lines > 0) {
                        band.gpsStartSec = times.first.value();
                        band.gpsEndSec = times.last.value();
                    }
                    if (m_options.checkCoverage) {
                        cover(item.coveredBy, !timedBand);
                        timedBand = true;
                    }
                };
                bool write = false;
                // A link to nothing in the CTG file's place is met, not overwritten unsaid.
                const QFileInfo existing(QString::fromStdString(band.ctgFile));
                if (existing.exists() || existing.isSymLink()) {
                    try {
                        keep(builder.check(band.ctgFile, band.ctFile, marks), CtgStatus::Present);
                    } catch (const std::exception& e) {
                        write = m_options.writeCtg && marks;
                        if (write)
                            addAbout(report, PreparationMessage::Severity::Warning, *take, band.band,
                                     util::fullMessage(e) + "; the file is written again");
                        else
                            fail(*take, band, e);
                    }
                } else {
                    write = m_options.writeCtg && marks;
                }
                if (write) {
                    try {
                        keep(builder.stage(band.ctFile, *marks, band.ctgFile), CtgStatus::Written);
                        staged.push_back(item.bands.size());
                    } catch (const std::exception& e) {
                        fail(*take, band, e);
                    }
                }
                item.bands.push_back(std::move(band));
                task.report(++done);
            }

            // The take's new CTG files reach the disk together.
            const std::vector<std::exception_ptr> failures = builder.commit();
            for (std::size_t i = 0; i < failures.size(); ++i) {
                if (!failures[i])
                    continue;
                try {
                    std::rethrow_exception(failures[i]);
                } catch (const std::exception& e) {
                    fail(*take, item.bands[staged[i]], e);
                }
            }
            staged.clear();

            // The take's time range over its bands.
            for (const BandPreparation& band : item.bands) {
                if (!band.gpsStartSec)
                    continue;
                item.gpsStartSec = std::min(item.gpsStartSec.value_or(*band.gpsStartSec), *band.gpsStartSec);
                item.gpsEndSec = std::max(item.gpsEndSec.value_or(*band.gpsEndSec), *band.gpsEndSec);
            }
            report.takes.push_back(std::move(item));
        }
    }

    // A take whose lines no trajectory holds: the checks below say which
    // lines of the take's trajectory are missing; without them, say it here.
    if (m_options.checkCoverage) {
        for (std::size_t i = 0; i < takes.size(); ++i) {
            TakePreparation& item = report.takes[i];
            if (!item.gpsStartSec) {
                if (marks)
                    addAbout(report, PreparationMessage::Severity::Error, *takes[i], {},
                             "Cannot compute min/max times for the image lines.");
                continue;
            }
            if (item.coveredBy.empty() && !trajectories.empty() && !m_options.validate)
                addAbout(report, PreparationMessage::Severity::Error, *takes[i], {},
                         "No trajectory covers take " + item.name);
        }
    }

    if (m_options.validate) {
        std::vector<PreparationValidation::Trajectory> open;
        for (const OpenTrajectory& trajectory : trajectories)
            open.push_back({trajectory.trajectory.get(), trajectory.name, trajectory.description});
        PreparationValidation checks(*session, report, std::move(open));
        if (marks)
            checks.checkTimeMarks(*marks);
        checks.checkTrajectories();
        checks.checkTakes(takes, progress);
    }

    if (m_options.writeEop && m_options.checkCoverage) {
        EopGenerationStage eops(m_options.eopTrajectory);
        try {
            eops.run(*session, takes, report, progress);
        } catch (const std::exception& e) {
            report.error(where, eops.name() + ": " + util::fullMessage(e));
        }
        if (m_options.computeQuality) {
            QualityStage quality({m_options.dem, m_options.flatTerrainHeightM});
            try {
                quality.run(*session, takes, report, progress);
            } catch (const std::exception& e) {
                report.error(where, quality.name() + ": " + util::fullMessage(e));
            }
        }
    }

    for (const auto& stage : m_stages) {
        try {
            stage->run(*session, takes, report, progress);
        } catch (const std::exception& e) {
            report.error(where, stage->name() + ": " + util::fullMessage(e));
        }
    }
    return report;
}

} // namespace datamodel
