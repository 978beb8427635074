#include <datamodel/validation/TakeValidationTraverser.h>

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/IntegrationTime.h>
#include <datamodel/timing/TimeFormat_p.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/validation/CtgCoverageValidator.h>
#include <datamodel/validation/SessionValidationTraverser.h>

#include <platform/flightdata/Utility.h>

#include <algorithm>
#include <string>

namespace datamodel {

/// Hands the messages of the validators this traverser runs (the session's
/// trajectory checks, the coverage check) to its own report functions, so
/// that their errors are charged to the current take and image too.
class TakeValidationTraverser::Forwarder : public ValidationTraverser::Information,
                                           public ValidationTraverser::Warning,
                                           public ValidationTraverser::Error {
public:
    explicit Forwarder(TakeValidationTraverser& owner)
        : m_owner(owner)
    {
    }
    void information(const std::string& message) override { m_owner.information(message); }
    void warning(const std::string& message) override { m_owner.warning(message); }
    void error(const std::string& message) override { m_owner.error(message); }

private:
    TakeValidationTraverser& m_owner;
};

namespace {

/// The take's session; null for a take of a block.
const RecordingSession* sessionOf(const Take& take)
{
    return dynamic_cast<const RecordingSession*>(&take.manager());
}

/// Calibrated lines that the camera never delivers as level-0 bands: a
/// calibration for them says nothing about the take.
bool isUnrecordedLine(const std::string& band)
{
    const auto endsWith = [&band](const char* code) {
        const std::string suffix(code);
        return band.size() >= suffix.size() && band.compare(band.size() - suffix.size(), suffix.size(), suffix) == 0;
    };
    return endsWith("F26B") || endsWith("B19B");
}

/// Whether the take is a dark (calibration) take of another take of its
/// session: it is the dark take, it has none of its own.
bool isDarkTakeOfSession(const Take& take)
{
    const RecordingSession* session = sessionOf(take);
    if (!session)
        return false;
    try {
        for (const Take* other : session->takes()) {
            const std::vector<Take*> darks = other ? other->darkTakes() : std::vector<Take*>{};
            if (std::find(darks.begin(), darks.end(), &take) != darks.end())
                return true;
        }
    } catch (const std::exception&) {
        // A session that cannot list its takes has no dark takes either.
    }
    return false;
}

} // namespace

TakeValidationTraverser::TakeValidationTraverser(Take* take, Information* information, Warning* warning,
                                                 Error* error, util::ProgressInterface* progress)
    : ValidationTraverser(information, warning, error)
    , DataprepValidationTraverser(information, warning, error)
    , m_take(take)
    , m_progress(progress)
    , m_forwarder(std::make_unique<Forwarder>(*this))
{
}

TakeValidationTraverser::~TakeValidationTraverser() = default;

bool TakeValidationTraverser::trajectoryFailed() const
{
    return m_trajectoryFailed || (m_coverage && m_coverage->trajectoryFailed());
}

void TakeValidationTraverser::validate(RecordingSession& session)
{
    if (!m_take)
        return;
    SessionValidationTraverser sessionChecks(m_forwarder.get(), m_forwarder.get(), m_forwarder.get());
    sessionChecks.checkTrajectories(session);
    traverse(*m_take);
}

void TakeValidationTraverser::validate(Take& take)
{
    if (&take != m_take)
        return;
    setCurrent(&take, nullptr);
    checkTake(take);
    clearCurrent();
    ValidationTraverser::validate(take);
}

void TakeValidationTraverser::checkTake(Take& take)
{
    std::string name;
    try {
        name = take.name();
    } catch (const std::exception& e) {
        error(e.what());
    }

    if (take.darkTakes().empty() && !isDarkTakeOfSession(take))
        warning("No dark takes available for take " + name);

    if (const RecordingSession* session = sessionOf(take)) {
        try {
            const Sensor& sensor = session->sensor();
            // Without a camera description there is no calibration to judge.
            if (sensor.hasCalibration()) {
                const geo::XYZPoint& misalignment = sensor.misalignment();
                if (misalignment.x == 0.0 && misalignment.y == 0.0 && misalignment.z == 0.0)
                    warning("Misalignment is (0,0,0).");
                const std::vector<std::string> recorded = take.availableBands();
                for (const Sensor::BandGeometry& band : sensor.bands()) {
                    if (isUnrecordedLine(band.name)
                        || std::find(recorded.begin(), recorded.end(), band.name) != recorded.end())
                        continue;
                    warning("There is a calibration for " + band.name + " but take " + name
                            + " does not have L0 data for that band.");
                }
            }
        } catch (const std::exception& e) {
            error(e.what());
        }
    }

    try {
        take.initializePositionInfo();
    } catch (const std::exception& e) {
        error(e.what());
    }

    double minSec = 0.0;
    double maxSec = 0.0;
    try {
        take.minMaxGpsTimes(minSec, maxSec);
    } catch (const std::exception& e) {
        error(e.what());
        return;
    }
    ImuTrajectory* imu = trajectory(take);
    if (!imu) {
        if (!m_trajectoryFailed)
            warning("No IMU Trajectory for take " + name);
        return;
    }
    try {
        imu->checkAngularRates(seconds(minSec), seconds(maxSec), angularVelocityLimit());
    } catch (const std::exception& e) {
        error(e.what());
        m_trajectoryFailed = true;
    }
}

void TakeValidationTraverser::useTrajectory(ImuTrajectory* trajectory)
{
    m_trajectoryOpened = true;
    m_trajectory.reset();
    m_checkedTrajectory = trajectory;
}

ImuTrajectory* TakeValidationTraverser::trajectory(const Take& take)
{
    if (m_trajectoryOpened)
        return m_checkedTrajectory;
    m_trajectoryOpened = true;
    const RecordingSession* session = sessionOf(take);
    if (!session)
        return nullptr;
    try {
        if (const RecordingSession::ImuTrajectoryId* assigned = take.imuTrajectorySource()) {
            m_trajectory = session->createImuTrajectory(*assigned);
        } else {
            const std::vector<RecordingSession::ImuTrajectoryId*> ids = session->imuTrajectories();
            const auto first = std::find_if(ids.begin(), ids.end(), [](const auto* id) { return id != nullptr; });
            if (first != ids.end())
                m_trajectory = session->createImuTrajectory(**first);
        }
    } catch (const std::exception& e) {
        error(e.what());
        m_trajectoryFailed = true;
    }
    m_checkedTrajectory = m_trajectory.get();
    return m_checkedTrajectory;
}

void TakeValidationTraverser::validate(L0Image& image)
{
    setCurrent(&image.take(), &image);

    try {
        BasicValidationTraverser::validate(image);
    } catch (const std::exception& e) {
        error(e.what());
    }

    CameraTime& times = image.cameraTime();
    try {
        if (!times.ctgFileCreated()) {
            if (m_createMissingCtgs)
                times.createFromCtTmFiles();
            else
                m_ctgsMissing.push_back(&image);
        }
    } catch (const std::exception& e) {
        m_ctgsMissing.push_back(&image);
        error(e.what());
    }

    const RecordingSession* session = sessionOf(image.take());
    // Bands of a take that names its sensor must name it in their info files.
    if (session && !session->isFromRaw() && image.hasInfoFile() && !image.take().sensorId().empty()) {
        try {
            InfoFile info = image.infoFile();
            validate(info);
        } catch (const std::exception& e) {
            error(e.what());
        }
    }

    checkIntegrationTimes(image);
}

void TakeValidationTraverser::checkIntegrationTimes(L0Image& image)
{
    double limitSec = sMaxIntegrationTimeSec;
    if (const RecordingSession* session = sessionOf(image.take())) {
        try {
            if (flightdata::Utility::isZelM9(*session->flightDataSession()))
                limitSec = sMaxIntegrationTimeZelM9Sec;
        } catch (const std::exception&) {
            // Without flight data the common limit holds.
        }
    }

    // Integration times are held in single precision (20 ms becomes
    // 0.0199999996 s): the limit is compared at that precision, so that a
    // band recorded at the limit counts as reaching it.
    limitSec = double(float(limitSec));
    bool valid = false;
    try {
        const double minSec = image.integrationTime().minValue().value();
        const double maxSec = image.integrationTime().maxValue().value();
        valid = minSec > 0.0 && maxSec < limitSec;
        if (!valid)
            error("Integration time(s) invalid for: " + image.filename() + " (min = " + fixedText(minSec * 1000.0, 1)
                  + " ms, max = " + fixedText(maxSec * 1000.0, 1) + " ms).");
    } catch (const std::exception& e) {
        error(e.what());
    }

    checkCoverage(image);
    if (valid)
        clearCurrent();
}

void TakeValidationTraverser::checkCoverage(L0Image& image)
{
    try {
        if (!m_coverage)
            m_coverage = std::make_unique<CtgCoverageValidator>(m_forwarder.get(), m_forwarder.get(),
                                                                m_forwarder.get(), m_progress,
                                                                trajectory(image.take()));
        m_coverage->validate(static_cast<const L0Image&>(image));
    } catch (const std::exception& e) {
        error(e.what());
    }
}

} // namespace datamodel
