#include "TestSupport.h"

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/IntegrationTime.h>
#include <datamodel/timing/TdiData.h>

#include <gtest/gtest.h>

#include <QDateTime>

#include <ctime>
#include <optional>
#include <string>

using namespace datamodel;
using testsupport::thrownMessage;

namespace {

QDateTime utc(int y, int mo, int d, int h, int mi, int s = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s), Qt::UTC);
}

// File names carry the UTC start time; a local zone with an offset makes a
// slip into local time visible.
class L0ImageNamesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        zone.emplace("TZ", QByteArray("Europe/Berlin"));
        tzset();
        take.setSensorId("2004");
        take.setLabel("L12");
        take.setStartTimePosHeight(utc(2009, 3, 7, 10, 4, 31), geo::XYPoint(-12.5, 47.2), 1000.0f);
    }
    void TearDown() override
    {
        zone.reset();
        tzset();
    }

    /// An image of the take as read from a strip: every file name as given
    /// (empty ones are derived).
    L0Image* image(const std::string& band, const std::string& pixelFile = "")
    {
        auto* made = new L0Image(take, unsigned(take.imagesL0().size()), pixelFile, band, nullptr, nullptr, 12000, 0,
                                 "", "", "", "");
        take.addImage(made);
        return made;
    }

    std::optional<testsupport::ScopedEnv> zone;
    testsupport::SessionDir session;
    RecordingSession recording{session.path()};
    Take take{recording};
};

} // namespace

TEST(L0ImageStaticName, LabelSerialStartAndBand)
{
    const QDateTime start = utc(2009, 3, 7, 10, 4, 59);
    EXPECT_EQ(L0Image::staticName("L12", start, 2004, "PANF02A"), "L12_2004_090307_1004_PANF02A");
    EXPECT_EQ(L0Image::staticName("L12", start, 7, "PANF02A"), "L12_007_090307_1004_PANF02A");
    EXPECT_EQ(L0Image::staticName("L12", start, 123456, "PANF02A"), "L12_3456_090307_1004_PANF02A");
    EXPECT_EQ(L0Image::staticName("L12", start, 10000, "PANF02A"), "L12_000_090307_1004_PANF02A");
    EXPECT_EQ(L0Image::staticName("Line 3", utc(2011, 12, 31, 23, 59), 999, "REDN00B"),
              "Line 3_999_111231_2359_REDN00B");
}

TEST_F(L0ImageNamesTest, PixelFileIsDerivedFromTheStaticName)
{
    const L0Image* pan = image("PANF02A");
    EXPECT_EQ(pan->filename(), session.images("L12_2004_090307_1004_PANF02A.lri"));

    // Side files lie in raw/ and carry the pixel file's name.
    const std::string base = session.raw("L12_2004_090307_1004_PANF02A");
    EXPECT_EQ(pan->ctFilename(), base + ".ct");
    EXPECT_EQ(pan->ctgFilename(), base + ".ctg");
    EXPECT_EQ(pan->itFilename(), base + ".it");
    EXPECT_EQ(pan->tdiFilename(), base + ".tdi");
    EXPECT_EQ(pan->fptFilename(), base + ".fpt");
    EXPECT_EQ(pan->darkFilename(), base + ".dark");
}

TEST_F(L0ImageNamesTest, SideFilesOfAGivenPixelFileLieInTheSessionsRawFolder)
{
    testsupport::SessionDir elsewhere;
    const L0Image* red = image("REDN00A", elsewhere.images("L1REDN00A.zel"));
    EXPECT_EQ(red->filename(), elsewhere.images("L1REDN00A.zel"));
    EXPECT_EQ(red->ctFilename(), session.raw("L1REDN00A.ct"));
    EXPECT_EQ(red->ctgFilename(), session.raw("L1REDN00A.ctg"));
    EXPECT_EQ(red->fptFilename(), session.raw("L1REDN00A.fpt"));
}

TEST_F(L0ImageNamesTest, LabelComesFromTheFirstInfoFileWhenTheTakeHasNone)
{
    take.setLabel("");
    const InfoFile info = session.infoFile("L12_PANF28A", "PANF28A");  // line label L12
    take.addImage(new L0Image(take, 0, info, session.images("given.zel"), "", "", ""));
    take.setSensorId("7");
    const L0Image* red = image("REDN00A");
    EXPECT_EQ(red->filename(), session.images("L12_007_090307_1004_REDN00A.lri"));
}

TEST_F(L0ImageNamesTest, ResetFilenameDerivesOnlyThePixelFileAgain)
{
    L0Image* pan = image("PANN00A");
    const std::string oldBase = session.raw("L12_2004_090307_1004_PANN00A");
    ASSERT_EQ(pan->filename(), session.images("L12_2004_090307_1004_PANN00A.lri"));
    ASSERT_EQ(pan->ctFilename(), oldBase + ".ct");
    ASSERT_EQ(pan->ctgFilename(), oldBase + ".ctg");
    ASSERT_EQ(pan->itFilename(), oldBase + ".it");

    // Cached: a new label changes nothing until the reset.
    take.setLabel("L13");
    EXPECT_EQ(pan->filename(), session.images("L12_2004_090307_1004_PANN00A.lri"));

    pan->resetFilename();
    EXPECT_EQ(pan->filename(), session.images("L13_2004_090307_1004_PANN00A.lri"));
    EXPECT_EQ(pan->ctFilename(), oldBase + ".ct");
    EXPECT_EQ(pan->ctgFilename(), oldBase + ".ctg");
    EXPECT_EQ(pan->itFilename(), oldBase + ".it");
    // Names not derived before the reset follow the new pixel file.
    const std::string newBase = session.raw("L13_2004_090307_1004_PANN00A");
    EXPECT_EQ(pan->tdiFilename(), newBase + ".tdi");
    EXPECT_EQ(pan->fptFilename(), newBase + ".fpt");
    EXPECT_EQ(pan->darkFilename(), newBase + ".dark");

    // A pixel file given at construction is forgotten as well.
    L0Image* given = image("REDN00A", session.images("recorded.zel"));
    given->resetFilename();
    EXPECT_EQ(given->filename(), session.images("L13_2004_090307_1004_REDN00A.lri"));
}

TEST_F(L0ImageNamesTest, SensorIdMustBeNumeric)
{
    take.setSensorId("ZEL7");
    const L0Image* pan = image("PANN00A");
    EXPECT_EQ(thrownMessage([&] { pan->filename(); }), "The sensor ID for this camera is not numeric! (ZEL7)");
    // Nothing was cached: a usable id gives the name.
    take.setSensorId("42");
    EXPECT_EQ(pan->filename(), session.images("L12_042_090307_1004_PANN00A.lri"));
}

TEST_F(L0ImageNamesTest, StatisticsAndMinimumFilesLieBesideThePixelFile)
{
    const L0Image* pan = image("PANN00A", session.images("L1.v2.lri"));
    EXPECT_EQ(pan->statFilename(), session.images("L1.v2.stat"));
    EXPECT_FALSE(pan->hasStatistics());
    session.write("images/L1.v2.stat");
    EXPECT_TRUE(pan->hasStatistics());

    // The minimum file drops everything after the first dot.
    EXPECT_FALSE(pan->hasMinFile());
    session.write("images/L1.v2.min");
    EXPECT_FALSE(pan->hasMinFile());
    session.write("images/L1.min");
    EXPECT_TRUE(pan->hasMinFile());

    const L0Image* lost = image("REDN00A", session.path() + "/missing/L1REDN00A.lri");
    EXPECT_FALSE(lost->hasStatistics());
    EXPECT_FALSE(lost->hasMinFile());
}

TEST_F(L0ImageNamesTest, MaskFilesLieBesideThePixelFile)
{
    auto endsWith = [](const std::string& text, const std::string& end) {
        return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
    };
    const std::string panA = image("PANN00A", session.images("L1PANN00A.lri"))->maskFilename();
    const std::string panB = image("PANN00B", session.images("L1PANN00B.lri"))->maskFilename();
    const std::string red = image("REDN00A", session.images("L1REDN00A.lri"))->maskFilename();

    EXPECT_TRUE(endsWith(panA, "A_mask.zel")) << panA;
    EXPECT_TRUE(endsWith(panB, "B_mask.zel")) << panB;
    EXPECT_NE(panA, panB);
    EXPECT_TRUE(endsWith(red, "_mask.zel")) << red;
    EXPECT_FALSE(endsWith(red, "A_mask.zel")) << red;
    for (const std::string& mask : {panA, panB, red})
        EXPECT_EQ(mask.rfind(session.images(""), 0), 0u) << mask;
}
