// Recording sessions opened on directories laid out by hand: what a session
// finds on disk (takes, trajectories, GNSS/IMU folder, flight data), how it
// names itself, where its naming patterns come from, and the errors it
// reports for layouts it cannot use.

#include "TestSupport.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/session/SessionDataFile.h>

#include <platform/flightdata/SessionInterface.h>

#include <platform/util/ErrorText.h>

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>
#include <string>
#include <vector>

using datamodel::RecordingSession;
using datamodel::Take;
using testsupport::SessionDir;
using testsupport::thrownMessage;

namespace {

using ImuTrajectoryId = RecordingSession::ImuTrajectoryId;

} // namespace

namespace datamodel {
// Lets test failures show trajectory ids as their string form.
inline void PrintTo(const RecordingSession::ImuTrajectoryId& id, std::ostream* out)
{
    *out << id.toString();
}
} // namespace datamodel

namespace {

/// An installation root of its own (settings file and schemas), so that the
/// machine's installation never leaks into a test.
class Installation {
public:
    Installation()
    {
        if (!m_root.isValid() || !QDir(m_root.path()).mkpath(QStringLiteral("etc/schemas")))
            throw std::runtime_error("test setup: cannot lay out an installation root");
    }

    void installSchema() const
    {
        if (!QFile::copy(QStringLiteral(DATAMODEL_TEST_SOURCE_DIR "/etc/schemas/sessionData.xsd"),
                         datamodel::SessionDataFile::schemaPath()))
            throw std::runtime_error("test setup: cannot install the session data schema");
    }

    void writeSettings(const QByteArray& ini) const
    {
        testsupport::writeFile(m_root, QStringLiteral("etc/kavix.ini"), ini);
    }

private:
    QTemporaryDir m_root;
    testsupport::ScopedEnv m_env{"KAVIX_ROOT", m_root.path().toUtf8()};
};

/// A band .info document of another camera than the default one.
QByteArray infoXml(const QByteArray& band, const QByteArray& serial = "2004", const QByteArray& type = "ZEL")
{
    QByteArray xml = testsupport::fullInfoXml(band);
    xml.replace("<sensor_serialnumber>2004<", "<sensor_serialnumber>" + serial + "<");
    xml.replace("<sensor_type>ZEL<", "<sensor_type>" + type + "<");
    return xml;
}

void makeDir(const std::string& path)
{
    if (!QDir().mkpath(QString::fromStdString(path)))
        throw std::runtime_error("test setup: cannot create " + path);
}

std::vector<std::string> namesOf(const std::vector<Take*>& takes)
{
    std::vector<std::string> names;
    for (const Take* take : takes)
        names.push_back(take->name());
    return names;
}

std::vector<std::string> bandsOf(const Take& take)
{
    std::vector<std::string> bands;
    for (const datamodel::L0Image* image : take.imagesL0())
        bands.push_back(image->bandName());
    return bands;
}

/// Two takes of band files: B1 (PAN and red, one under a name that holds a
/// second band code) and C1 (PAN and near infrared), plus the recorder's
/// rawdownload.info.
void writeTwoTakes(const SessionDir& dir)
{
    dir.infoFile(QStringLiteral("B1PANN00A"), "PANN00A");
    dir.infoFile(QStringLiteral("B1REDN00APANN00B"), "REDN00A");
    dir.infoFile(QStringLiteral("C1_NIRN00A"), "NIRN00A");
    dir.infoFile(QStringLiteral("C1_PANN00A"), "PANN00A");
    dir.write("raw/rawdownload.info", "<rawdownload/>");
}

/// A flight-data file: `lines` is the XML of the Line elements.
QByteArray flightDataXml(const QByteArray& generation, const QByteArray& head, const QByteArray& firstTakeUtc,
                         const QByteArray& lines = {})
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<FlightData version=\"1.0\">"
           "<Session id=\"EAST_0042\">"
           "<Sensor generation=\"" + generation + "\" head=\"" + head + "\" serial=\"2004\" type=\"ZEL\"/>"
           "<FlightStart utc=\"20260513235950\" gpsWeek=\"2418\" gpsSeconds=\"345608.000000\"/>"
           "<FirstTakeTime utc=\"" + firstTakeUtc + "\" gpsWeek=\"2418\" gpsSeconds=\"345628.000000\"/>"
           + lines + "</Session></FlightData>";
}

QByteArray takeXml(const QByteArray& label, const QByteArray& type, const QByteArrayList& infoFiles)
{
    QByteArray xml = "<Take label=\"" + label + "\" type=\"" + type
        + "\" lines=\"100\" lineRate=\"800\" utc=\"20260514000010\" gpsWeek=\"2418\" gpsSeconds=\"345628.000000\">";
    for (const QByteArray& info : infoFiles)
        xml += "<Band name=\"" + info.mid(info.size() - 12, 7) + "\" analogChannel=\"0\" integrationTimeMs=\"1.25\""
               " tdiStages=\"1\" info=\"" + info + "\"/>";
    return xml + "</Take>";
}

/// The flight data of a ZELM9 recording: line 1 with the dark take DK001 and
/// the take L001, line 2 with the unplanned line UL002.
QByteArray zelM9FlightData(const QByteArray& head)
{
    return flightDataXml("ZELM9", head, "20260514000010",
                         "<Line number=\"1\" label=\"L001\">"
                         + takeXml("DK001", "dark", {"DK001PANN00A.info"})
                         + takeXml("L001", "image", {"L001PANN00A.info", "L001REDN00A.info"})
                         + "</Line><Line number=\"2\" label=\"UL002\">"
                         + takeXml("UL002", "image", {"UL002PANN00A.info"}) + "</Line>");
}

void writeZelM9Session(const SessionDir& dir, const QByteArray& head)
{
    for (const char* name : {"DK001PANN00A", "L001PANN00A", "L001REDN00A", "UL002PANN00A", "X9PANN00A"})
        dir.infoFile(QString::fromLatin1(name), QByteArray(name).right(7));
    makeDir(dir.path() + "/mm");
    dir.write("mm/FlightData.xml", zelM9FlightData(head));
}

Take* takeNamed(const RecordingSession& session, const std::string& name)
{
    for (Take* take : session.takes())
        if (take->name() == name)
            return take;
    return nullptr;
}

} // namespace

TEST(RecordingSession, ConstructionChecksThePathAndRefusesRawRecordings)
{
    Installation installation;
    SessionDir dir;

    // Opened through a path that is not canonical, the session keeps the canonical one.
    const RecordingSession session(dir.path() + "/images/..");
    EXPECT_EQ(session.sessionPath(), dir.path());
    EXPECT_EQ(session.directory(), dir.path());
    EXPECT_EQ(session.outputDirectory(), dir.path());
    EXPECT_FALSE(session.isFromRaw());
    EXPECT_EQ(thrownMessage([&] { session.splitSessionNumber(); }), "This RecordingSession not from a .raw file.");

    const std::string missing = dir.path() + "/nowhere";
    EXPECT_EQ(thrownMessage([&] { RecordingSession s(missing); }),
              "Can't find path provided for RecordingSession: " + missing);

    dir.write("notes.txt", "not a session");
    EXPECT_EQ(thrownMessage([&] { RecordingSession s(dir.path() + "/raw/../notes.txt"); }),
              "Cannot find directory: " + dir.path() + "/notes.txt");

    SessionDir recording;
    recording.write("x.raw", "raw");
    const std::string holdsRaw = thrownMessage([&] { RecordingSession s(recording.path()); });
    EXPECT_NE(holdsRaw.find("not supported yet"), std::string::npos) << holdsRaw;
    const std::string rawFile = thrownMessage([&] { RecordingSession s(recording.path() + "/x.raw"); });
    EXPECT_NE(rawFile.find("not supported yet"), std::string::npos) << rawFile;
    recording.write("raw/y.raw.xml", "<raw/>");
    const std::string rawIndex = thrownMessage([&] { RecordingSession s(recording.raw("y.raw.xml")); });
    EXPECT_NE(rawIndex.find("not supported yet"), std::string::npos) << rawIndex;
}

TEST(RecordingSession, FindGpsImuDirectory)
{
    Installation installation;
    SessionDir dir;
    makeDir(dir.path() + "/gps-imu/S1");
    const RecordingSession one(dir.path());
    EXPECT_EQ(one.findGpsImuDirectory(), dir.path() + "/gps-imu/S1");

    // With two sub-folders the count reported is that of the GnssImu.dat files.
    makeDir(dir.path() + "/gps-imu/S2");
    dir.write("gps-imu/GnssImu.dat", "not in the session folder");
    const RecordingSession two(dir.path());
    EXPECT_EQ(thrownMessage([&] { two.findGpsImuDirectory(); }),
              "Expected exactly one subdirectory under " + dir.path() + "/gps-imu/, but found 0");

    dir.write("GnssImu.dat", "recorder file");
    const RecordingSession own(dir.path());
    EXPECT_EQ(own.findGpsImuDirectory(), dir.path());

    SessionDir bare;
    const RecordingSession none(bare.path());
    EXPECT_EQ(thrownMessage([&] { none.findGpsImuDirectory(); }),
              "Expected exactly one subdirectory under " + bare.path() + "/gps-imu/, but found 0");
}

TEST(RecordingSession, ImuTrajectoriesAreTheProcessedThenTheRealtimeFiles)
{
    Installation installation;
    SessionDir dir;
    makeDir(dir.path() + "/gps-imu/S1/proc");
    makeDir(dir.path() + "/gps-imu/S1/extract");
    const QDateTime modified = QDateTime::fromSecsSinceEpoch(1600000000, Qt::UTC);
    auto write = [&](const std::string& relative, qint64 offsetSec) {
        QFile file(QString::fromStdString(dir.write("gps-imu/S1/" + relative, "trajectory")));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(modified.addSecs(offsetSec), QFileDevice::FileModificationTime));
    };
    write("proc/sbet_01.out", 1);
    write("proc/b.sol", 2);
    write("proc/a.sbet", 3);
    write("proc/x.sol.1.2sbet", 4);
    write("proc/x.sol.12.sbet", 4);
    write("proc/trajectory.log", 5);
    write("proc/smrmsg_01.out", 6);
    write("extract/S1.rnv", 7);
    write("extract/S1.tm", 8);

    const RecordingSession session(dir.path());
    const std::vector<ImuTrajectoryId*> ids = session.imuTrajectories();
    ASSERT_EQ(ids.size(), 4u);
    EXPECT_EQ(*ids[0], ImuTrajectoryId("a.sbet", 1600000003u));
    EXPECT_EQ(*ids[1], ImuTrajectoryId("b.sol", 1600000002u));
    EXPECT_EQ(*ids[2], ImuTrajectoryId("sbet_01.out", 1600000001u));
    EXPECT_EQ(*ids[3], ImuTrajectoryId("S1.rnv", 1600000007u));
    EXPECT_FALSE(ids[2]->isRealtime());
    EXPECT_TRUE(ids[3]->isRealtime());

    // The list is kept: a file that appears later is not seen.
    write("proc/c.sbet", 9);
    EXPECT_EQ(session.imuTrajectories(), ids);

    RecordingSession changing(dir.path());
    ASSERT_EQ(changing.imuTrajectories().size(), 5u);
    auto* added = new ImuTrajectoryId("later.sbet", 42u);
    EXPECT_EQ(changing.addTrajectoryId(added), added);
    ASSERT_EQ(changing.imuTrajectories().size(), 6u);
    EXPECT_EQ(changing.imuTrajectories().back(), added);

    // Without a GNSS/IMU folder there is nothing to list.
    SessionDir bare;
    const RecordingSession none(bare.path());
    EXPECT_EQ(thrownMessage([&] { none.imuTrajectories(); }),
              "Expected exactly one subdirectory under " + bare.path() + "/gps-imu/, but found 0");
}

TEST(RecordingSession, ImuTrajectoryIdStringForms)
{
    const ImuTrajectoryId id("flight.sbet", 1234567890u);
    EXPECT_EQ(id.toString(), "1234567890;flight.sbet");
    EXPECT_EQ(std::string(id), "1234567890;flight.sbet");
    EXPECT_EQ(ImuTrajectoryId(id.toString()), id);
    EXPECT_EQ(ImuTrajectoryId("7;name;with;separators").name(), "name;with;separators");
    EXPECT_EQ(id.brief(), "flight.sbet");
    EXPECT_EQ(id.description().rfind("flight.sbet modified on ", 0), 0u) << id.description();
    const ImuTrajectoryId realtime("S1.RNV", 5u);
    EXPECT_TRUE(realtime.isRealtime());
    EXPECT_EQ(realtime.description().rfind("REALTIME: S1.RNV modified on ", 0), 0u) << realtime.description();
    EXPECT_FALSE(ImuTrajectoryId("rv", 5u).isRealtime());

    // Ordered by name, then time.
    EXPECT_TRUE(ImuTrajectoryId("a.sol", 9u) < ImuTrajectoryId("b.sol", 1u));
    EXPECT_TRUE(ImuTrajectoryId("a.sol", 1u) < ImuTrajectoryId("a.sol", 2u));
    EXPECT_FALSE(ImuTrajectoryId("a.sol", 2u) < ImuTrajectoryId("a.sol", 2u));

    EXPECT_EQ(thrownMessage([] { ImuTrajectoryId("flight.sbet"); }),
              "Can't construct ImuTrajectoryId; string is invalid: \"flight.sbet\".");
    EXPECT_EQ(thrownMessage([] { ImuTrajectoryId("12x;flight.sbet"); }), "Can't convert to timestamp: 12x");
}

TEST(RecordingSession, TakesFromInfoFiles)
{
    Installation installation;
    SessionDir dir;
    writeTwoTakes(dir);
    const RecordingSession session(dir.path());
    const std::vector<Take*> takes = session.takes();
    // Strip names by minimal matching, takes in the order their files are listed.
    ASSERT_EQ(namesOf(takes), (std::vector<std::string>{"B1", "C1"}));
    EXPECT_EQ(bandsOf(*takes[0]), (std::vector<std::string>{"PANN00A", "REDN00A"}));
    EXPECT_EQ(bandsOf(*takes[1]), (std::vector<std::string>{"NIRN00A", "PANN00A"}));
    EXPECT_EQ(takes[0]->imagesL0()[1]->infoFileName(), dir.raw("B1REDN00APANN00B.info"));
    EXPECT_EQ(takes[0]->sensorId(), "2004");
    EXPECT_EQ(takes[0]->sensorType(), "ZEL");
    EXPECT_EQ(takes[0]->label(), "L12");
    EXPECT_EQ(session.availableBands(), (std::vector<std::string>{"PANN00A", "REDN00A", "NIRN00A"}));
    EXPECT_EQ(session.takes(), takes);
    EXPECT_EQ(session.collections().size(), 2u);
    EXPECT_EQ(session.directory(*takes[1]), dir.path());

    SessionDir empty;
    empty.write("raw/rawdownload.info", "<rawdownload/>");
    const RecordingSession none(empty.path());
    EXPECT_EQ(thrownMessage([&] { none.takes(); }),
              "Can't get a list of takes (no .info files found) for " + empty.path());

    SessionDir noRaw;
    ASSERT_TRUE(QDir(QString::fromStdString(noRaw.path() + "/raw")).removeRecursively());
    const RecordingSession withoutRaw(noRaw.path());
    EXPECT_EQ(thrownMessage([&] { withoutRaw.takes(); }), "Can't find raw folder: " + noRaw.path() + "/raw");

    SessionDir twoCameras;
    twoCameras.infoFile(QStringLiteral("A1PANN00A"), {}, infoXml("PANN00A", "2004"));
    twoCameras.infoFile(QStringLiteral("A1REDN00A"), {}, infoXml("REDN00A", "2004"));
    twoCameras.infoFile(QStringLiteral("B1PANN00A"), {}, infoXml("PANN00A", "3011"));
    const RecordingSession mixedIds(twoCameras.path());
    EXPECT_EQ(thrownMessage([&] { mixedIds.takes(); }),
              "Inconsistent camera identifiers in .info files; found 2004 and 3011");

    SessionDir twoTypes;
    twoTypes.infoFile(QStringLiteral("A1PANN00A"), {}, infoXml("PANN00A", "2004", "ZELM4"));
    twoTypes.infoFile(QStringLiteral("B1PANN00A"), {}, infoXml("PANN00A", "2004", "ZEL"));
    const RecordingSession mixedTypes(twoTypes.path());
    EXPECT_EQ(thrownMessage([&] { mixedTypes.takes(); }),
              "Inconsistent camera types in .info files; found ZELM4 and ZEL");

    // A broken info file keeps the reader's message; the full message names it.
    SessionDir broken;
    QByteArray badTime = infoXml("PANN00A");
    const qsizetype time = badTime.indexOf("<time>") + 6;
    badTime.replace(time, badTime.indexOf("</time>") - time, "garbage");
    broken.write("raw/A1PANN00A.info", badTime);
    const RecordingSession brokenInfo(broken.path());
    try {
        brokenInfo.takes();
        ADD_FAILURE() << "a broken info file was taken";
    } catch (const std::exception& e) {
        const std::string full = util::fullMessage(e);
        EXPECT_EQ(full, std::string(e.what()) + ": in the info file " + broken.raw("A1PANN00A.info"));
    }
}

TEST(RecordingSession, StripFilesWinOverInfoFiles)
{
    Installation installation;
    SessionDir dir;
    writeTwoTakes(dir);
    RecordingSession session(dir.path());
    ASSERT_EQ(namesOf(session.takes()), (std::vector<std::string>{"B1", "C1"}));
    Take* c1 = session.takes()[1];
    EXPECT_EQ(session.buildSpecificTake("C1"), c1);

    // A strip file needs a calibration version.
    session.setSensorVersion(3);
    EXPECT_EQ(session.sensor().calibrationVersion(), 3);
    EXPECT_EQ(c1->sensorVersion(), 3);
    session.takes()[0]->writeStpFile();
    ASSERT_TRUE(QFileInfo::exists(QString::fromStdString(dir.raw("B1.stp"))));

    // Only the take with a strip file is left, read from that file.
    const RecordingSession reopened(dir.path());
    const std::vector<Take*> fromStrip = reopened.takes();
    ASSERT_EQ(namesOf(fromStrip), std::vector<std::string>{"B1"});
    EXPECT_EQ(fromStrip[0]->stpFilename(), dir.raw("B1.stp"));
    EXPECT_EQ(fromStrip[0]->sensorVersion(), 3);
    EXPECT_EQ(bandsOf(*fromStrip[0]), (std::vector<std::string>{"PANN00A", "REDN00A"}));

    // Rebuilt, the first session also reads the strip file.
    session.updateTakes(false);
    ASSERT_EQ(namesOf(session.takes()), std::vector<std::string>{"B1"});
    EXPECT_EQ(session.takes()[0]->stpFilename(), dir.raw("B1.stp"));
    EXPECT_EQ(session.availableBands(), (std::vector<std::string>{"PANN00A", "REDN00A"}));

    // A specific take comes from its strip file, once; a take without one is not found.
    RecordingSession specific(dir.path());
    Take* b1 = specific.buildSpecificTake("B1");
    ASSERT_NE(b1, nullptr);
    EXPECT_EQ(b1->name(), "B1");
    EXPECT_EQ(b1->stpFilename(), dir.raw("B1.stp"));
    EXPECT_EQ(specific.buildSpecificTake("B1"), b1);
    EXPECT_EQ(specific.takes(), std::vector<Take*>{b1});
    EXPECT_EQ(thrownMessage([&] { specific.buildSpecificTake("C1"); }), "Can't find Take: C1");
}

TEST(RecordingSession, Remove)
{
    Installation installation;
    SessionDir dir;
    writeTwoTakes(dir);
    RecordingSession session(dir.path());
    ASSERT_EQ(session.takes().size(), 2u);
    Take* b1 = session.takes()[0];
    Take* c1 = session.takes()[1];
    ASSERT_EQ(session.availableBands().size(), 3u);

    EXPECT_EQ(thrownMessage([&] { session.remove(static_cast<datamodel::ImageCollection*>(&session)); }),
              "Not a take.");
    Take stranger(session);
    EXPECT_EQ(thrownMessage([&] { session.remove(&stranger); }), "Trying to remove a take not in this session.");
    EXPECT_EQ(thrownMessage([&] { session.remove(b1->imagesL0().front()); }), "No images in RecordingSessions.");
    EXPECT_EQ(session.takes().size(), 2u);
    EXPECT_EQ(b1->imagesL0().size(), 2u);

    // A removed dark take is no longer listed by the take it belonged to.
    b1->addDarkTake(c1);
    session.remove(c1);
    EXPECT_EQ(session.takes(), std::vector<Take*>{b1});
    EXPECT_TRUE(b1->darkTakes().empty());
    EXPECT_EQ(session.availableBands(), (std::vector<std::string>{"PANN00A", "REDN00A"}));
}

TEST(RecordingSession, SensorOfTheTakes)
{
    Installation installation;
    SessionDir dir;
    auto addTake = [](RecordingSession& session, const std::string& id, const std::string& type) {
        auto* take = new Take(session);
        take->setSensorId(id);
        take->setSensorType(type);
        session.addTake(take);
        return take;
    };

    RecordingSession ids(dir.path());
    addTake(ids, "2004", "ZEL");
    Take* other = addTake(ids, "2005", "ZEL");
    EXPECT_EQ(thrownMessage([&] { ids.sensor(); }), "Inconsistent sensor IDs");
    // A failed lookup keeps nothing: without the odd take the sensor is found.
    ids.remove(other);
    EXPECT_EQ(ids.sensor().id(), "2004");
    EXPECT_EQ(ids.sensorType(), "ZEL");
    EXPECT_FALSE(ids.sensor().hasCalibration());

    RecordingSession types(dir.path());
    addTake(types, "2004", "ZEL");
    addTake(types, "2004", "ZELM4");
    EXPECT_EQ(thrownMessage([&] { types.sensor(); }), "Inconsistent sensor types");

    RecordingSession same(dir.path());
    Take* first = addTake(same, "3011", "ZELM4");
    Take* second = addTake(same, "3011", "ZELM4");
    EXPECT_EQ(same.sensorId(), "3011");
    EXPECT_EQ(same.sensorType(), "ZELM4");
    same.setSensorVersion(5);
    EXPECT_EQ(same.sensor().calibrationVersion(), 5);
    EXPECT_EQ(first->sensorVersion(), 5);
    EXPECT_EQ(second->sensorVersion(), 5);
}

TEST(RecordingSession, FlightDataAndFlightDate)
{
    Installation installation;
    SessionDir dir;
    writeTwoTakes(dir);
    RecordingSession session(dir.path());
    EXPECT_EQ(thrownMessage([&] { session.flightDataSession(); }),
              "Can't find flight data XML; expected it in: " + dir.path() + "/mm/");
    // Without flight data the first take's info file tells the date of the flight start.
    EXPECT_EQ(session.flightDate(), QDate(2009, 3, 7));

    // The flight data's first take wins (a take after midnight of a flight started the day before).
    makeDir(dir.path() + "/mm");
    dir.write("mm/FlightData.xml", flightDataXml("ZELM8", "QX310", "20260514000010"));
    ASSERT_NE(session.flightDataSession(), nullptr);
    EXPECT_EQ(session.flightDataSession()->id(), "EAST_0042");
    EXPECT_EQ(session.flightDataSession(), session.flightDataSession());
    EXPECT_EQ(session.flightDate(), QDate(2026, 5, 14));
    EXPECT_EQ(RecordingSession(dir.path()).flightDate(), QDate(2026, 5, 14));

    // No takes left.
    for (Take* take : session.takes())
        session.remove(take);
    ASSERT_TRUE(session.takes().empty());
    EXPECT_EQ(thrownMessage([&] { session.flightDate(); }), "Looking for flight date, but there are no takes at all.");

    SessionDir imageless;
    RecordingSession noImages(imageless.path());
    noImages.addTake(new Take(noImages));
    EXPECT_EQ(thrownMessage([&] { noImages.flightDate(); }), "Looking for flight date, but all takes have no images.");
}

TEST(RecordingSession, TakesFromZelM9FlightData)
{
    SessionDir dir;
    writeZelM9Session(dir, "QX310");
    {
        Installation installation;
        const RecordingSession session(dir.path());
        // The flight data list the takes (X9 has band files but is not recorded there),
        // dark takes among them, each attached to the take of its line.
        const std::vector<Take*> takes = session.takes();
        ASSERT_EQ(namesOf(takes), (std::vector<std::string>{"DK001", "L001", "UL002"}));
        EXPECT_EQ(takes[1]->lineNumber(), 1u);
        EXPECT_EQ(takes[2]->lineNumber(), 2u);
        EXPECT_EQ(bandsOf(*takes[1]), (std::vector<std::string>{"PANN00A", "REDN00A"}));
        EXPECT_EQ(takes[1]->darkTakes(), std::vector<Take*>{takes[0]});
        EXPECT_TRUE(takes[2]->darkTakes().empty());
        EXPECT_EQ(takes[1]->sensorId(), "2004");
    }
    {
        Installation installation;
        installation.writeSettings("[Ingest]\ninclude_unplanned_lines=false\n");
        const RecordingSession session(dir.path());
        EXPECT_EQ(namesOf(session.takes()), (std::vector<std::string>{"DK001", "L001"}));
    }

    // A band file that the flight data name but that is missing.
    Installation installation;
    ASSERT_TRUE(QFile::remove(QString::fromStdString(dir.raw("UL002PANN00A.info"))));
    const RecordingSession missing(dir.path());
    EXPECT_EQ(thrownMessage([&] { missing.takes(); }),
              "Wrong file path in FlightData.xml, named: " + dir.raw("UL002PANN00A.info"));
}

TEST(RecordingSession, DarkTakesAreAttachedForTheQX310HeadOnly)
{
    Installation installation;
    for (const QByteArray head : {"QX310", "QX200"}) {
        SCOPED_TRACE(head.toStdString());
        SessionDir dir;
        // Band files only: the takes come from the info files; the flight data
        // tell which dark take belongs to which take.
        dir.infoFile(QStringLiteral("DK001PANN00A"), "PANN00A");
        dir.infoFile(QStringLiteral("L001PANN00A"), "PANN00A");
        dir.infoFile(QStringLiteral("L001REDN00A"), "REDN00A");
        makeDir(dir.path() + "/mm");
        QByteArray flight = zelM9FlightData(head);
        flight.replace("ZELM9", "ZELM8");
        dir.write("mm/FlightData.xml", flight);

        RecordingSession session(dir.path());
        Take* dark = takeNamed(session, "DK001");
        Take* take = takeNamed(session, "L001");
        ASSERT_NE(dark, nullptr);
        ASSERT_NE(take, nullptr);
        if (head == "QX310")
            EXPECT_EQ(take->darkTakes(), std::vector<Take*>{dark});
        else
            EXPECT_TRUE(take->darkTakes().empty());
        // Asked again, nothing is attached twice.
        session.handleDarkTakes();
        EXPECT_EQ(take->darkTakes().size(), head == "QX310" ? 1u : 0u);
        EXPECT_TRUE(dark->darkTakes().empty());
    }
}

TEST(RecordingSession, Name)
{
    Installation installation;
    SessionDir dir;
    writeTwoTakes(dir);
    RecordingSession session(dir.path());
    const std::string dirName = QFileInfo(QString::fromStdString(dir.path())).fileName().toStdString();
    EXPECT_EQ(session.name(), dirName);

    // Without flight data the start comes from the first take.
    session.setSessionNamingPattern("$LINENAME$_$SERIAL$_$yyMMdd$_$hhmm$");
    EXPECT_EQ(session.sessionNamingPattern(), "$LINENAME$_$SERIAL$_$yyMMdd$_$hhmm$");
    EXPECT_EQ(session.name(), "L12_2004_090307_1004");
    session.resetName("Custom");
    EXPECT_EQ(session.name(), "Custom");
    session.resetName("");
    EXPECT_EQ(session.name(), "L12_2004_090307_1004");
    session.resetName("Custom");
    session.setSessionNamingPattern("$SENSORTYPE$$LINENAME$");
    EXPECT_EQ(session.name(), "ZELL12");
    session.setSessionNamingPattern("");
    EXPECT_EQ(session.name(), dirName);

    // The flight data give the session identifier, without its trailing number.
    makeDir(dir.path() + "/mm");
    dir.write("mm/FlightData.xml", flightDataXml("ZELM8", "QX310", "20260514000010"));
    RecordingSession withFlightData(dir.path());
    withFlightData.setSessionNamingPattern("$SESSIONID$-$LINENAME$");
    EXPECT_EQ(withFlightData.name(), "EAST-L12");

    // With a pattern but no takes left, the directory name again.
    for (Take* take : withFlightData.takes())
        withFlightData.remove(take);
    withFlightData.setSessionNamingPattern("$SESSIONID$-$LINENAME$");
    EXPECT_EQ(withFlightData.name(), dirName);

    SessionDir letters;
    letters.infoFile(QStringLiteral("A1PANN00A"), {}, infoXml("PANN00A", "20A4"));
    RecordingSession notNumeric(letters.path());
    notNumeric.setSessionNamingPattern("$SERIAL$");
    EXPECT_EQ(thrownMessage([&] { notNumeric.name(); }), "The sensor ID for this camera is not numeric! (20A4)");
}

TEST(RecordingSession, FileNamingPatterns)
{
    EXPECT_STREQ(RecordingSession::sSessionNamingRegKey, "DataprepSessionNaming");
    EXPECT_STREQ(RecordingSession::sFileNamingRegKey, "DataprepFileNaming");

    SessionDir dir;
    {
        // Without the file nothing is loaded, and no schema is needed.
        Installation installation;
        RecordingSession session(dir.path());
        EXPECT_TRUE(session.fileNamingPattern().empty());
        EXPECT_FALSE(session.loadFileNamePattern());

        installation.installSchema();
        session.setFileNamingPattern("<Pattern>$LINENAME$_$BAND$</Pattern>");
        EXPECT_TRUE(session.saveFileNamePattern());
        EXPECT_EQ(QString::fromStdString(RecordingSession(dir.path()).fileNamingPattern()).trimmed(),
                  QStringLiteral("<Pattern>$LINENAME$_$BAND$</Pattern>"));
    }
    {
        // The installation's setting wins over the session's file.
        Installation installation;
        installation.installSchema();
        installation.writeSettings("[NamingConfig]\nDataprepFileNaming=$SERIAL$$BAND$\n");
        RecordingSession session(dir.path());
        EXPECT_EQ(session.fileNamingPattern(), "$SERIAL$$BAND$");
        session.setFileNamingPattern("other");
        EXPECT_TRUE(session.loadFileNamePattern());
        EXPECT_EQ(session.fileNamingPattern(), "$SERIAL$$BAND$");
    }
    {
        // A session file needs the schema.
        Installation installation;
        EXPECT_EQ(thrownMessage([&] { RecordingSession s(dir.path()); }),
                  "Missing installation file " + datamodel::SessionDataFile::schemaPath().toStdString());
    }
}

TEST(RecordingSession, SetOutputDirectory)
{
    Installation installation;
    SessionDir dir;
    RecordingSession session(dir.path());
    session.resetName("FLIGHT_A");
    QTemporaryDir out;
    ASSERT_TRUE(out.isValid());
    const std::string outPath = QDir(out.path()).canonicalPath().toStdString();

    session.setOutputDirectory(outPath);
    const std::string root = outPath + "/FLIGHT_A";
    EXPECT_EQ(session.outputDirectory(), root);
    EXPECT_EQ(session.directory(), dir.path());
    for (const char* folder : {"images", "raw", "mm", "gps-imu", "gps-imu/FLIGHT_A/extract", "gps-imu/FLIGHT_A/gps",
                               "gps-imu/FLIGHT_A/ground", "gps-imu/FLIGHT_A/proc", "gps-imu/FLIGHT_A/raw"})
        EXPECT_TRUE(QFileInfo(QString::fromStdString(root + "/" + folder)).isDir()) << folder;

    const std::string blocker = testsupport::writeFile(out, QStringLiteral("blocker"), "a file");
    EXPECT_EQ(thrownMessage([&] { session.setOutputDirectory(blocker); }), "Failed to create: " + blocker + "/FLIGHT_A");
    EXPECT_EQ(session.outputDirectory(), root);
}
