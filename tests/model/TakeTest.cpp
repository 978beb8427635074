#include "TestSupport.h"

#include <datamodel/block/Block.h>
#include <datamodel/model/Band.h>
#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/IntegrationTime.h>

#include <gtest/gtest.h>

#include <QDateTime>

#include <memory>
#include <string>
#include <vector>

using namespace datamodel;
using testsupport::thrownMessage;

namespace {

using Bands = std::vector<std::string>;

// The complete band file with some of its values replaced.
QByteArray infoXml(const QByteArray& band, const QByteArray& label, int lineNumber, const QByteArray& startTime)
{
    QByteArray xml = testsupport::fullInfoXml(band);
    xml.replace("<line_label>L12</line_label>", "<line_label>" + label + "</line_label>");
    xml.replace("<line_number>12</line_number>", "<line_number>" + QByteArray::number(lineNumber) + "</line_number>");
    xml.replace("<time>7 March 2009, 10:04:31</time>", "<time>" + startTime + "</time>");
    return xml;
}

class TakeTest : public ::testing::Test {
protected:
    /// A take of the session with one image per band, from raw/L001_<band>.info.
    std::unique_ptr<Take> makeTake(const Bands& bands, const std::string& name = "L001")
    {
        infos.clear();
        for (const std::string& band : bands)
            infos.push_back(session.infoFile(QStringLiteral("L001_") + QString::fromStdString(band),
                                             QByteArray::fromStdString(band)));
        std::vector<InfoFile*> pointers;
        for (InfoFile& info : infos)
            pointers.push_back(&info);
        return std::make_unique<Take>(recording, name, pointers, 250.0f, 1500.0f, "2004", "ZEL", 3);
    }

    static Bands bandsOf(const Take& take)
    {
        Bands bands;
        for (const L0Image* image : take.imagesL0())
            bands.push_back(image->bandName());
        return bands;
    }

    testsupport::SessionDir session;
    RecordingSession recording{session.path()};
    std::vector<InfoFile> infos;
};

} // namespace

// ---- Construction from info files -----------------------------------------

TEST_F(TakeTest, InfoFileConstructorNeedsInfoFiles)
{
    EXPECT_EQ(thrownMessage([&] { Take(recording, "L001", {}, 0.0f, 0.0f, "2004", "ZEL", 3); }),
              "No info files given to Take constructor");
}

TEST_F(TakeTest, InfoFileConstructorMakesOneImagePerInfoFileInOrder)
{
    const auto take = makeTake({"PANN00A", "REDN00A", "PANB14A", "PANN00B"});

    const std::vector<L0Image*> images = take->imagesL0();
    ASSERT_EQ(images.size(), 4u);
    EXPECT_EQ(bandsOf(*take), (Bands{"PANN00A", "REDN00A", "PANB14A", "PANN00B"}));
    for (unsigned i = 0; i < images.size(); ++i) {
        EXPECT_EQ(images[i]->index(), i);
        EXPECT_EQ(&images[i]->take(), take.get());
        EXPECT_EQ(images[i]->infoFileName(), infos[i].infoFileName());
        EXPECT_EQ(images[i]->swathWidth(), 12000u);
        EXPECT_EQ(images[i]->sampleOffset(), 0u);
        // The recorded integration time of the band (5.2 ms).
        EXPECT_DOUBLE_EQ(images[i]->integrationTime().value().value(), double(float(0.0052)));
    }
    EXPECT_TRUE(take->imagesL2().empty());

    EXPECT_EQ(take->name(), "L001");
    EXPECT_EQ(take->sensorId(), "2004");
    EXPECT_EQ(take->sensorType(), "ZEL");
    EXPECT_EQ(take->sensorVersion(), 3);
    EXPECT_EQ(take->meanTerrainHeight(), 250.0f);
    EXPECT_EQ(take->meanFlyingHeight(), 1500.0f);
    EXPECT_EQ(&take->manager(), &recording);
}

TEST_F(TakeTest, InfoFileConstructorNamesTheSideFilesAfterEachInfoFile)
{
    const auto take = makeTake({"PANN00A", "REDN00A"});
    for (const L0Image* image : take->imagesL0()) {
        const std::string base = "L001_" + image->bandName();
        EXPECT_EQ(image->filename(), session.images(base + ".lri")) << "no pixel file exists: .lri is assumed";
        EXPECT_EQ(image->ctFilename(), session.raw(base + ".ct"));
        EXPECT_EQ(image->ctgFilename(), session.raw(base + ".ctg"));
        EXPECT_EQ(image->fptFilename(), session.raw(base + ".fpt"));
    }
}

TEST_F(TakeTest, InfoFileConstructorTakesTheFirstExistingPixelFile)
{
    // .zel before .lri before .rds, whatever else lies there.
    session.write("images/L001_PANN00A.zel");
    session.write("images/L001_PANN00A.lri");
    session.write("images/L001_PANN00A.rds");
    session.write("images/L001_REDN00A.lri");
    session.write("images/L001_REDN00A.rds");
    session.write("images/L001_GRNN00A.rds");
    session.write("images/L001_GRNN00A.tif");
    session.write("raw/L001_NIRN00A.zel");  // not in the images folder

    const auto take = makeTake({"PANN00A", "REDN00A", "GRNN00A", "NIRN00A"});
    const std::vector<L0Image*> images = take->imagesL0();
    ASSERT_EQ(images.size(), 4u);
    EXPECT_EQ(images[0]->filename(), session.images("L001_PANN00A.zel"));
    EXPECT_EQ(images[1]->filename(), session.images("L001_REDN00A.lri"));
    EXPECT_EQ(images[2]->filename(), session.images("L001_GRNN00A.rds"));
    EXPECT_EQ(images[3]->filename(), session.images("L001_NIRN00A.lri"));
}

TEST_F(TakeTest, InfoFileConstructorFindsTheCameraTimesInRawBeforeImages)
{
    session.write("images/L001_PANN00A.ct");  // only in images/
    session.write("raw/L001_REDN00A.ct");     // in both
    session.write("images/L001_REDN00A.ct");

    const auto take = makeTake({"PANN00A", "REDN00A", "GRNN00A"});
    const std::vector<L0Image*> images = take->imagesL0();
    ASSERT_EQ(images.size(), 3u);
    EXPECT_EQ(images[0]->ctFilename(), session.images("L001_PANN00A.ct"));
    EXPECT_EQ(images[1]->ctFilename(), session.raw("L001_REDN00A.ct"));
    EXPECT_EQ(images[2]->ctFilename(), session.raw("L001_GRNN00A.ct")) << "none exists: raw/ is assumed";
}

TEST_F(TakeTest, InfoFileConstructorTakesLineAndStartStopFromTheFirstInfoFile)
{
    InfoFile first = session.infoFile("L007_PANN00A", "PANN00A", infoXml("PANN00A", "L7", 7, "7 March 2009, 10:04:31"));
    InfoFile second
        = session.infoFile("L007_REDN00A", "REDN00A", infoXml("REDN00A", "L8", 8, "8 March 2009, 11:00:00"));
    const Take take(recording, "L007", {&first, &second}, 0.0f, 1500.0f, "2004", "ZEL", 3);

    EXPECT_EQ(take.label(), "L7");
    EXPECT_EQ(take.lineNumber(), 7u);
    EXPECT_EQ(take.startTime(), QDateTime(QDate(2009, 3, 7), QTime(10, 4, 31), Qt::UTC));
    EXPECT_EQ(take.stopTime(), QDateTime(QDate(2009, 3, 7), QTime(10, 9, 1), Qt::UTC));
    EXPECT_DOUBLE_EQ(take.startPosition().x, first.startPos().x);
    EXPECT_DOUBLE_EQ(take.startPosition().y, first.startPos().y);
    EXPECT_DOUBLE_EQ(take.stopPosition().x, first.stopPos().x);
    EXPECT_DOUBLE_EQ(take.stopPosition().y, first.stopPos().y);
}

TEST_F(TakeTest, NameIsDerivedFromThePixelFilesWhenNoneIsGiven)
{
    InfoFile pan = session.infoFile("L3PANN00A", "PANN00A");
    InfoFile red = session.infoFile("L3REDN00A", "REDN00A");
    const Take take(recording, "", {&pan, &red}, 0.0f, 0.0f, "2004", "ZEL", 3);
    EXPECT_EQ(take.name(), "L3");
}

// ---- Locating session files -------------------------------------------------

TEST_F(TakeTest, LocateFileInSessionTriesRawThenRawDataLocationThenImages)
{
    testsupport::SessionDir elsewhere;
    Take take(recording);
    take.setRawDataLocation(elsewhere.path());

    EXPECT_EQ(take.locateFileInSession("a.ct"), session.raw("a.ct")) << "nothing exists";

    session.write("images/a.ct");
    EXPECT_EQ(take.locateFileInSession("a.ct"), session.images("a.ct"));
    elsewhere.write("raw/a.ct");
    EXPECT_EQ(take.locateFileInSession("a.ct"), elsewhere.raw("a.ct"));
    session.write("raw/a.ct");
    EXPECT_EQ(take.locateFileInSession("a.ct"), session.raw("a.ct"));
}

// ---- Bands ------------------------------------------------------------------

TEST(BandLookAngle, ComesFromTheBandCode)
{
    EXPECT_EQ(Band::lookAngleFromName("PANF28A"), 28.0);
    EXPECT_EQ(Band::lookAngleFromName("PANB14A"), -14.0);
    EXPECT_EQ(Band::lookAngleFromName("REDN00A"), 0.0);
    EXPECT_EQ(Band::lookAngleFromName("GRNB02B"), -2.0);
    EXPECT_EQ(Band::lookAngleFromName("L12_NIRF07B"), 7.0);
}

TEST_F(TakeTest, AvailableBandsListEachBandOnceInImageOrder)
{
    const auto take = makeTake({"REDN00A", "PANF28A", "PANB14A"});
    EXPECT_EQ(take->availableBands(), (Bands{"REDN00A", "PANF28A", "PANB14A"}));
}

TEST_F(TakeTest, HiResBandsShareTheFirstNearNadirBLineBand)
{
    // PANF28B is a B line but far from nadir, PANF05B just outside 5 degrees;
    // PANB04B is the reference, PANN00B comes too late.
    const auto take = makeTake({"PANF28B", "REDN00A", "PANF05B", "PANB04A", "PANB04B", "PANN00B", "PANN00A"});
    EXPECT_EQ(take->availableHiResBands(), (Bands{"PANB04A", "PANB04B"}));

    const auto nadir = makeTake({"REDN00B", "PANN00A", "REDN00A", "PANN00B"});
    EXPECT_EQ(nadir->availableHiResBands(), (Bands{"REDN00B", "REDN00A"}));
}

TEST_F(TakeTest, HiResBandsAreEmptyWithoutAReferenceBand)
{
    const auto take = makeTake({"PANN00A", "REDN00A", "PANF28B", "PANB05B"});
    EXPECT_TRUE(take->availableHiResBands().empty());
}

TEST_F(TakeTest, RemoveBandsExceptKeepsOnlyTheGivenBands)
{
    const auto take = makeTake({"PANN00A", "REDN00A", "PANB14A", "GRNN00A"});
    ASSERT_EQ(take->availableBands().size(), 4u);

    take->removeBandsExcept({"GRNN00A", "PANN00A"});
    EXPECT_EQ(bandsOf(*take), (Bands{"PANN00A", "GRNN00A"}));
    EXPECT_EQ(take->availableBands(), (Bands{"PANN00A", "GRNN00A"}));

    // Keeping everything there is removes nothing.
    take->removeBandsExcept({"PANN00A", "GRNN00A"});
    EXPECT_EQ(bandsOf(*take), (Bands{"PANN00A", "GRNN00A"}));
}

TEST_F(TakeTest, RemoveBandsExceptRefusesAndRemovesNothing)
{
    const auto take = makeTake({"PANN00A", "REDN00A", "PANB14A"});
    EXPECT_EQ(thrownMessage([&] { take->removeBandsExcept({}); }), "Need at least one band to keep.");
    // A known band before the unknown one changes nothing either.
    EXPECT_EQ(thrownMessage([&] { take->removeBandsExcept({"REDN00A", "NIRN00A"}); }),
              "Band NIRN00A not found in take L001");
    EXPECT_EQ(bandsOf(*take), (Bands{"PANN00A", "REDN00A", "PANB14A"}));
    EXPECT_EQ(take->availableBands(), (Bands{"PANN00A", "REDN00A", "PANB14A"}));
}

// ---- Owner ------------------------------------------------------------------

TEST_F(TakeTest, SessionAndBlockAreReachedOnlyThroughTheirOwnKind)
{
    Take inSession(recording);
    EXPECT_EQ(&inSession.session(), &recording);
    EXPECT_EQ(thrownMessage([&] { inSession.block(); }), "Take is not connected to a block");

    Block block;
    Take inBlock(block);
    EXPECT_EQ(&inBlock.block(), &block);
    EXPECT_EQ(thrownMessage([&] { inBlock.session(); }), "Take is not connected to a session");

    testsupport::PlainTakeManager plain;
    Take elsewhere(plain);
    EXPECT_EQ(thrownMessage([&] { elsewhere.session(); }), "Take is not connected to a session");
    EXPECT_EQ(thrownMessage([&] { elsewhere.block(); }), "Take is not connected to a block");
}

// ---- Start and stop -----------------------------------------------------------

TEST_F(TakeTest, StartAndStopAccessorsThrowWhileUnset)
{
    const std::string message = "No start/stop position information for take.";
    Take take(recording);
    EXPECT_FALSE(take.hasStartInformation());
    EXPECT_FALSE(take.hasStopInformation());
    EXPECT_EQ(thrownMessage([&] { take.startTime(); }), message);
    EXPECT_EQ(thrownMessage([&] { take.startPosition(); }), message);
    EXPECT_EQ(thrownMessage([&] { take.startHeight(); }), message);
    EXPECT_EQ(thrownMessage([&] { take.stopTime(); }), message);
    EXPECT_EQ(thrownMessage([&] { take.stopPosition(); }), message);
    EXPECT_EQ(thrownMessage([&] { take.stopHeight(); }), message);

    const QDateTime start(QDate(2009, 3, 7), QTime(10, 4, 31), Qt::UTC);
    take.setStartTimePosHeight(start, geo::XYPoint(11.5, 47.25), 1234.5f);
    EXPECT_TRUE(take.hasStartInformation());
    EXPECT_EQ(take.startTime(), start);
    EXPECT_EQ(take.startPosition().x, 11.5);
    EXPECT_EQ(take.startPosition().y, 47.25);
    EXPECT_EQ(take.startHeight(), 1234.5f);
    EXPECT_EQ(thrownMessage([&] { take.stopTime(); }), message) << "setting the start sets no stop";
    EXPECT_EQ(thrownMessage([&] { take.stopHeight(); }), message);
}

// ---- Trajectory ids -----------------------------------------------------------

using ImuTrajectoryId = RecordingSession::ImuTrajectoryId;

TEST(ImuTrajectoryIdTest, StringFormIsTimeSemicolonName)
{
    const ImuTrajectoryId id("flight.sbet", 1234567890u);
    EXPECT_EQ(id.toString(), "1234567890;flight.sbet");
    EXPECT_EQ(std::string(id), "1234567890;flight.sbet");
    EXPECT_EQ(id.brief(), "flight.sbet");

    const ImuTrajectoryId parsed("1234567890;flight.sbet");
    EXPECT_EQ(parsed.name(), "flight.sbet");
    EXPECT_EQ(parsed.time(), 1234567890u);
    EXPECT_EQ(parsed, id);

    // Split at the first ";"; the rest, further ";" included, is the name.
    const ImuTrajectoryId odd("0;a;b.sol");
    EXPECT_EQ(odd.time(), 0u);
    EXPECT_EQ(odd.name(), "a;b.sol");
    EXPECT_EQ(ImuTrajectoryId(odd.toString()), odd);

    const ImuTrajectoryId latest("4294967295;x.sbet");
    EXPECT_EQ(latest.time(), ImuTrajectoryId::sUnsetTime);
}

TEST(ImuTrajectoryIdTest, BadStringsAreRefused)
{
    EXPECT_EQ(thrownMessage([] { ImuTrajectoryId("flight.sbet"); }),
              "Can't construct ImuTrajectoryId; string is invalid: \"flight.sbet\".");
    EXPECT_EQ(thrownMessage([] { ImuTrajectoryId(""); }), "Can't construct ImuTrajectoryId; string is invalid: \"\".");
    EXPECT_EQ(thrownMessage([] { ImuTrajectoryId("12ab;flight.sbet"); }), "Can't convert to timestamp: 12ab");
    EXPECT_EQ(thrownMessage([] { ImuTrajectoryId(";flight.sbet"); }), "Can't convert to timestamp: ");
    EXPECT_EQ(thrownMessage([] { ImuTrajectoryId("-5;flight.sbet"); }), "Can't convert to timestamp: -5");
}

TEST(ImuTrajectoryIdTest, RealtimeTrajectoriesEndInRnv)
{
    EXPECT_TRUE(ImuTrajectoryId("flight.rnv", 1).isRealtime());
    EXPECT_TRUE(ImuTrajectoryId("FLIGHT.RNV", 1).isRealtime());
    EXPECT_TRUE(ImuTrajectoryId("flight.Rnv", 1).isRealtime());
    EXPECT_FALSE(ImuTrajectoryId("flight.sbet", 1).isRealtime());
    EXPECT_FALSE(ImuTrajectoryId("rnv.sol", 1).isRealtime());
    EXPECT_FALSE(ImuTrajectoryId("nv", 1).isRealtime());

    const std::string realtime = ImuTrajectoryId("flight.rnv", 1).description();
    EXPECT_EQ(realtime.rfind("REALTIME: flight.rnv modified on ", 0), 0u) << realtime;
    const std::string processed = ImuTrajectoryId("flight.sbet", 1).description();
    EXPECT_EQ(processed.rfind("flight.sbet modified on ", 0), 0u) << processed;
}

TEST(ImuTrajectoryIdTest, OrderedByNameThenTime)
{
    const ImuTrajectoryId a1("a.sbet", 1);
    const ImuTrajectoryId a2("a.sbet", 2);
    const ImuTrajectoryId b0("b.sbet", 0);
    EXPECT_TRUE(a1 < a2);
    EXPECT_FALSE(a2 < a1);
    EXPECT_TRUE(a2 < b0) << "the name decides before the time";
    EXPECT_FALSE(b0 < a2);
    EXPECT_FALSE(a1 < a1);
    EXPECT_FALSE(a1 == a2);
    EXPECT_FALSE(a1 == ImuTrajectoryId("b.sbet", 1));
    EXPECT_TRUE(a1 == ImuTrajectoryId("1;a.sbet"));
}
