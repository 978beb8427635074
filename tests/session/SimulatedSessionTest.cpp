// Recording sessions opened on flights written by the flight simulator: the
// session must find what the simulator recorded (takes, dark takes, bands,
// trajectories, camera, flight date, naming patterns), as listed in the
// simulation's truth file.

#include "TestSupport.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/session/SessionDataFile.h>

#include <platform/flightdata/SessionInterface.h>
#include <platform/util/FileSessionNameGenerator.h>

#include <flightsim/FlightSimulator.h>

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <string>
#include <vector>

using datamodel::RecordingSession;
using datamodel::Take;

namespace {

/// A simulated flight in a temporary directory, with an installation root
/// that holds the session data schema, and the flight's truth file.
class SimulatedFlight {
public:
    explicit SimulatedFlight(const flightsim::SimulationConfig& config)
        : m_config(config)
    {
        if (!m_dir.isValid() || !m_root.isValid() || !QDir(m_root.path()).mkpath(QStringLiteral("etc/schemas"))
            || !QFile::copy(QStringLiteral(DATAMODEL_TEST_SOURCE_DIR "/etc/schemas/sessionData.xsd"),
                            datamodel::SessionDataFile::schemaPath()))
            throw std::runtime_error("test setup: cannot lay out the installation root");
        flightsim::FlightSimulator(config).run(m_dir.path() + QStringLiteral("/session"));
        m_path = QDir(m_dir.path() + QStringLiteral("/session")).canonicalPath().toStdString();
        QFile file(QString::fromStdString(m_path) + QStringLiteral("/truth.json"));
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error("test setup: no truth file");
        m_truth = QJsonDocument::fromJson(file.readAll()).object();
    }

    const std::string& path() const { return m_path; }
    const flightsim::SimulationConfig& config() const { return m_config; }
    const QJsonObject& truth() const { return m_truth; }

    /// The truth's take objects: image takes, then dark takes.
    std::vector<QJsonObject> allTakes() const
    {
        std::vector<QJsonObject> takes;
        for (const char* key : {"takes", "darkTakes"})
            for (const QJsonValue& take : m_truth.value(QLatin1String(key)).toArray())
                takes.push_back(take.toObject());
        return takes;
    }

    std::vector<std::string> labels() const
    {
        std::vector<std::string> labels;
        for (const QJsonObject& take : allTakes())
            labels.push_back(take.value(QStringLiteral("label")).toString().toStdString());
        return labels;
    }

    QJsonObject take(const std::string& label) const
    {
        for (const QJsonObject& take : allTakes())
            if (take.value(QStringLiteral("label")).toString().toStdString() == label)
                return take;
        throw std::runtime_error("test setup: no take " + label + " in the truth file");
    }

    /// The file name of a path the truth gives relative to the session.
    std::string fileName(const QString& section, const QString& key) const
    {
        return QFileInfo(m_truth.value(section).toObject().value(key).toString()).fileName().toStdString();
    }

private:
    flightsim::SimulationConfig m_config;
    QTemporaryDir m_dir;
    QTemporaryDir m_root;
    testsupport::ScopedEnv m_env{"KAVIX_ROOT", m_root.path().toUtf8()};
    std::string m_path;
    QJsonObject m_truth;
};

/// Two flight lines, the first with a dark take, three bands (not in code
/// order), a calibration version and session identifier of their own, and
/// the session data file.
flightsim::SimulationConfig twoLines()
{
    flightsim::SimulationConfig config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
    config.takes = 2;
    config.darkTakes = 1;
    config.linesPerTake = 200;
    config.darkLines = 100;
    config.bands = {QStringLiteral("REDN00A"), QStringLiteral("PANF28A"), QStringLiteral("PANN00A")};
    config.calibrationVersion = 7;
    config.sessionId = QStringLiteral("NORTH_BLOCK_0815");
    config.startUtc = QDateTime(QDate(2025, 10, 3), QTime(10, 59, 40), Qt::UTC);
    config.writeSessionData = true;
    return config;
}

std::vector<std::string> sorted(std::vector<std::string> values)
{
    std::sort(values.begin(), values.end());
    return values;
}

std::vector<std::string> configuredBands(const flightsim::SimulationConfig& config)
{
    std::vector<std::string> bands;
    for (const QString& band : config.bands)
        bands.push_back(band.toStdString());
    return sorted(bands);
}

std::vector<std::string> namesOf(const std::vector<Take*>& takes)
{
    std::vector<std::string> names;
    for (const Take* take : takes)
        names.push_back(take->name());
    return names;
}

Take* takeNamed(const RecordingSession& session, const std::string& name)
{
    for (Take* take : session.takes())
        if (take->name() == name)
            return take;
    return nullptr;
}

/// Every take that the truth lists, with its line, its bands and, for the
/// first line, its dark take.
void expectTheRecordedTakes(const RecordingSession& session, const SimulatedFlight& flight)
{
    const std::vector<Take*> takes = session.takes();
    ASSERT_EQ(sorted(namesOf(takes)), sorted(flight.labels()));
    for (const Take* take : takes) {
        SCOPED_TRACE(take->name());
        const QJsonObject truth = flight.take(take->name());
        EXPECT_EQ(take->lineNumber(), unsigned(truth.value(QStringLiteral("lineNumber")).toInt()));
        EXPECT_EQ(take->sensorId(), flight.config().sensorSerial.toStdString());
        EXPECT_EQ(sorted(take->availableBands()), configuredBands(flight.config()));
        for (const datamodel::L0Image* image : take->imagesL0())
            EXPECT_EQ(QFileInfo(QString::fromStdString(image->infoFileName())).fileName().toStdString(),
                      take->name() + image->bandName() + ".info");
    }
    EXPECT_EQ(sorted(session.availableBands()), configuredBands(flight.config()));

    // The dark take of line 1 belongs to its take; no other take has one.
    const std::string darkLabel = flight.truth().value(QStringLiteral("darkTakes")).toArray().at(0).toObject()
                                      .value(QStringLiteral("label")).toString().toStdString();
    Take* dark = takeNamed(session, darkLabel);
    ASSERT_NE(dark, nullptr);
    for (const Take* take : takes) {
        SCOPED_TRACE(take->name());
        const bool ownsDark = take->lineNumber() == dark->lineNumber() && take != dark;
        EXPECT_EQ(take->darkTakes(), ownsDark ? std::vector<Take*>{dark} : std::vector<Take*>{});
    }
}

/// The UTC of a truth take's first line in a date-time format.
QString startUtc(const QJsonObject& take, const QString& format)
{
    return QDateTime::fromString(take.value(QStringLiteral("startUtc")).toString(), Qt::ISODateWithMs)
        .toUTC()
        .toString(format);
}

} // namespace

TEST(SimulatedSession, FindsWhatTheFlightRecorded)
{
    const SimulatedFlight flight(twoLines());
    const RecordingSession session(flight.path());
    expectTheRecordedTakes(session, flight);

    // Band files are listed by name, so the dark take comes first.
    EXPECT_EQ(namesOf(session.takes()), sorted(flight.labels()));
    for (const Take* take : session.takes())
        EXPECT_EQ(take->sensorVersion(), 7) << take->name();

    const datamodel::Sensor& sensor = session.sensor();
    EXPECT_TRUE(sensor.hasCalibration());
    EXPECT_EQ(sensor.calibrationVersion(), 7);
    EXPECT_EQ(sensor.id(), "2004");
    EXPECT_EQ(sensor.cameraFile(), flight.path() + "/" + flight.truth()[QStringLiteral("session")]
                                                             .toObject()[QStringLiteral("camera")]
                                                             .toString()
                                                             .toStdString());
    EXPECT_EQ(sensor.bands().size(), std::size_t(flight.config().bands.size()));

    const std::string gpsImu = flight.path() + "/"
        + flight.truth()[QStringLiteral("session")].toObject()[QStringLiteral("gpsImuFolder")].toString().toStdString();
    EXPECT_EQ(session.findGpsImuDirectory(), gpsImu);
    std::vector<std::string> trajectories;
    for (const RecordingSession::ImuTrajectoryId* id : session.imuTrajectories()) {
        trajectories.push_back(id->name());
        EXPECT_FALSE(id->isRealtime()) << id->name();
        EXPECT_EQ(id->time(), std::uint32_t(QFileInfo(QString::fromStdString(gpsImu + "/proc/" + id->name()))
                                                 .lastModified()
                                                 .toSecsSinceEpoch()));
    }
    const std::string sbet = flight.fileName(QStringLiteral("trajectory"), QStringLiteral("sbet"));
    const std::string sol = flight.fileName(QStringLiteral("trajectory"), QStringLiteral("sol"));
    const std::string smrmsg = flight.fileName(QStringLiteral("trajectory"), QStringLiteral("smrmsg"));
    EXPECT_EQ(trajectories, sorted({sbet, sol}));
    EXPECT_EQ(std::find(trajectories.begin(), trajectories.end(), smrmsg), trajectories.end());

    EXPECT_EQ(session.flightDate(), flight.config().startUtc.date());
    EXPECT_EQ(session.flightDataSession()->id(), "NORTH_BLOCK_0815");
}

TEST(SimulatedSession, NamesComeFromThePatterns)
{
    const SimulatedFlight flight(twoLines());
    RecordingSession session(flight.path());
    EXPECT_EQ(session.name(), "session");

    // The session identifier loses its trailing number; the line label is
    // the first take's; the time is that of the first line's image take.
    session.setSessionNamingPattern("$SESSIONID$_$LINENAME$_$hhmm$");
    const std::string firstLabel = sorted(flight.labels()).front();
    EXPECT_EQ(session.name(),
              "NORTH_BLOCK_" + firstLabel + "_"
                  + startUtc(flight.truth()[QStringLiteral("takes")].toArray().at(0).toObject(), QStringLiteral("hhmm"))
                        .toStdString());

    // The file naming pattern of the session data file names the band files.
    ASSERT_FALSE(session.fileNamingPattern().empty());
    for (const QJsonObject& take : flight.allTakes()) {
        for (const QJsonValue& band : take.value(QStringLiteral("bands")).toArray()) {
            util::FileSessionNameGenerator::Options options;
            options.lineName = take.value(QStringLiteral("label")).toString().toStdString();
            options.band = band.toObject().value(QStringLiteral("name")).toString().toStdString();
            EXPECT_EQ(util::FileSessionNameGenerator(options, QString::fromStdString(session.fileNamingPattern()))
                          .createNameFromPattern(),
                      band.toObject().value(QStringLiteral("base")).toString().toStdString());
        }
    }
}

TEST(SimulatedSession, StripFilesOfEveryTakeGiveTheSameTakes)
{
    const SimulatedFlight flight(twoLines());
    const RecordingSession session(flight.path());
    ASSERT_EQ(session.takes().size(), flight.labels().size());
    for (Take* take : session.takes())
        take->writeStpFile();

    const RecordingSession reopened(flight.path());
    ASSERT_EQ(namesOf(reopened.takes()), namesOf(session.takes()));
    for (const Take* read : reopened.takes()) {
        SCOPED_TRACE(read->name());
        const Take& written = *takeNamed(session, read->name());
        EXPECT_EQ(read->stpFilename(), flight.path() + "/raw/" + read->name() + ".stp");
        EXPECT_EQ(read->availableBands(), written.availableBands());
        EXPECT_EQ(read->lineNumber(), written.lineNumber());
        EXPECT_EQ(read->sensorVersion(), 7);
        ASSERT_EQ(read->darkTakes().size(), written.darkTakes().size());
        for (std::size_t i = 0; i < read->darkTakes().size(); ++i)
            EXPECT_EQ(read->darkTakes()[i]->name(), written.darkTakes()[i]->name());
    }
}

TEST(SimulatedSession, NewerGenerationTakesComeFromTheFlightData)
{
    // A flight that starts just before midnight: its first take is on the next day.
    flightsim::SimulationConfig config = twoLines();
    config.sensorGeneration = QStringLiteral("ZELM9");
    config.sessionId.clear();
    config.writeSessionData = false;
    config.startUtc = QDateTime(QDate(2025, 12, 31), QTime(23, 59, 45), Qt::UTC);
    const SimulatedFlight flight(config);
    const RecordingSession session(flight.path());

    // In flight order: the dark take before the take of its line.
    const std::vector<std::string> inFlightOrder{"DK001", "L001", "L002"};
    ASSERT_EQ(sorted(flight.labels()), inFlightOrder);
    EXPECT_EQ(namesOf(session.takes()), inFlightOrder);
    expectTheRecordedTakes(session, flight);

    const QJsonObject first = flight.truth()[QStringLiteral("takes")].toArray().at(0).toObject();
    const QDate firstTakeDate = QDate::fromString(startUtc(first, QStringLiteral("yyyy-MM-dd")), Qt::ISODate);
    ASSERT_EQ(firstTakeDate, config.startUtc.date().addDays(1));
    EXPECT_EQ(session.flightDate(), firstTakeDate);
    EXPECT_TRUE(session.fileNamingPattern().empty());
}
