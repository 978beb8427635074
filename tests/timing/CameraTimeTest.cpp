#include "TimingFiles.h"

#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TimeAdaptor_p.h>
#include <datamodel/timing/TmFile.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <platform/sensor/CameraTime.h>

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include <exception>
#include <limits>

using namespace datamodel;
using testsupport::thrownMessage;
using timingtest::bandCt;
using timingtest::regularMarks;

namespace {

// A band of 800 lines (one second at 800 Hz) from flight second 4.1, inside
// 20 time marks.
class CameraTimeTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ct = bandCt(800, 4.1);
        files.writeMarks(regularMarks(20));
        files.addBand("PANN00A", ct);
    }

    CameraTime& times() { return files.image(0).cameraTime(); }
    std::string ctgPath() { return files.raw("L001PANN00A.ctg"); }
    std::string ctPath() { return files.raw("L001PANN00A.ct"); }

    /// The GPS times the time-mark file gives line by line.
    std::vector<double> expectedTimes(const std::vector<double>& values)
    {
        TmFile tm(files.tmPath());
        tm.load(TmFile::CT_TYPE, seconds(values.front()), seconds(values.back()));
        std::vector<double> gps;
        for (double value : values)
            gps.push_back(tm.gpsAtCT(seconds(value)).value());
        return gps;
    }

    void writeCtg(const std::vector<double>& gps)
    {
        sensor::CameraTime model;
        for (double t : gps)
            model.values().push_back(seconds(t));
        model.setCtgFileName(ctgPath());
        model.writeData();
    }

    timingtest::TimingSession files;
    std::vector<double> ct;
};

class Visits : public ValidationTraverser {
public:
    using ValidationTraverser::validate;
    void validate(CameraTime& times) override
    {
        ++visits;
        loadedWhenVisited = times.isInitialized();
    }
    int visits = 0;
    bool loadedWhenVisited = false;
};

} // namespace

// ---- Where the times come from ----------------------------------------------

TEST_F(CameraTimeTest, ACtgFileIsReadWithoutTouchingCtOrTimeMarks)
{
    writeCtg({100.0, 100.5, 101.25});
    QFile::remove(QString::fromStdString(ctPath()));
    QFile::remove(QString::fromStdString(files.tmPath()));

    EXPECT_FALSE(times().isInitialized());
    EXPECT_EQ(times().size(), 3u);
    EXPECT_TRUE(times().isInitialized());
    EXPECT_EQ(times().value(2).value(), 101.25);
    EXPECT_EQ(thrownMessage([&] { times().value(3); }), "CT index out of range.");
}

TEST_F(CameraTimeTest, WithoutCtgTheTimesAreBuiltFromCtAndTimeMarksInMemory)
{
    const std::vector<double> expected = expectedTimes(ct);
    ASSERT_EQ(times().size(), ct.size());
    for (std::size_t i = 0; i < ct.size(); ++i)
        ASSERT_EQ(times().values()[i].value(), expected[i]) << "line " << i;
    EXPECT_FALSE(times().ctgFileCreated()) << "building in memory writes nothing";

    times().createFromCtTmFiles();
    EXPECT_TRUE(times().ctgFileCreated());
    EXPECT_EQ(QFileInfo(QString::fromStdString(ctgPath())).size(), qint64(8 * ct.size()));
    const auto reread = CameraTime::fromCtgFile(ctgPath());
    ASSERT_EQ(reread->values().size(), ct.size());
    for (std::size_t i = 0; i < ct.size(); ++i)
        ASSERT_EQ(reread->values()[i].value(), expected[i]) << "line " << i;
}

TEST_F(CameraTimeTest, WhenNeitherSourceWorksBothReasonsAreGiven)
{
    // The band's CT runs on after the last time mark.
    timingtest::TimingSession late;
    late.writeMarks(regularMarks(6));
    late.addBand("PANN00A", bandCt(800, 4.5));
    const CameraTime& lateTimes = late.image(0).cameraTime();
    const std::string expected = "Could not read CTG file. Reason: Can't open CTG file: "
        + late.raw("L001PANN00A.ctg")
        + "\n\nAnd also could not create a valid CTG from CT. Inner Exception: maximum CT time in " + late.tmPath()
        + " is 3605000.1ms";
    EXPECT_EQ(thrownMessage([&] { lateTimes.size(); }), expected);
    EXPECT_FALSE(lateTimes.isInitialized());
    EXPECT_EQ(thrownMessage([&] { lateTimes.values(); }),
              "Could not initialize the camera times object. Reason: " + expected);
}

TEST_F(CameraTimeTest, AFailedLoadIsTriedAgainOnTheNextCall)
{
    QFile::remove(QString::fromStdString(files.tmPath()));
    const std::string message = thrownMessage([&] { times().size(); });
    EXPECT_NE(message.find("Inner Exception: Can't find a TM file for session "), std::string::npos) << message;
    EXPECT_FALSE(times().isInitialized());

    files.writeMarks(regularMarks(20));
    EXPECT_EQ(times().size(), ct.size());
}

TEST_F(CameraTimeTest, CtSourceFailuresNameTheCtFile)
{
    timingtest::TimingSession noCt;
    noCt.writeMarks(regularMarks(20));
    noCt.addBand("PANN00A", {});
    const std::string message = thrownMessage([&] { noCt.image(0).cameraTime().size(); });
    EXPECT_NE(message.find("Inner Exception: TimeAdaptor not initialized."), std::string::npos) << message;

    // A CT file that cannot be read: the reader's reason rides along nested.
    timingtest::writeBytes(ctPath(), "CT01");
    try {
        CameraTime::TimeAdaptor adaptor(ctPath());
        FAIL() << "a broken CT file was read";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()), "Can't read ct file: " + ctPath());
        EXPECT_EQ(thrownMessage([&] { std::rethrow_if_nested(e); }), "CT file is truncated: " + ctPath()
                      + " (4 bytes, the header alone takes 16)");
    }
}

TEST_F(CameraTimeTest, TimeAdaptorReadsTheCtValues)
{
    const CameraTime::TimeAdaptor adaptor(files.image(0));
    ASSERT_EQ(adaptor.size(), ct.size());
    EXPECT_EQ(adaptor.value(799).value(), ct[799]);
    EXPECT_EQ(thrownMessage([&] { adaptor.value(800); }), ctPath() + ": time out of range.");
}

// ---- Derived values ---------------------------------------------------------

TEST_F(CameraTimeTest, AverageTimeDeltaIsRoundedToTenMicroseconds)
{
    std::vector<double> gps;
    for (int i = 0; i < 10; ++i)
        gps.push_back(i * 0.001234567);
    writeCtg(gps);
    EXPECT_DOUBLE_EQ(times().averageTimeDelta(4).value(), 0.00123);

    writeCtg({5.0});
    files.image(0).uncache();
    EXPECT_EQ(thrownMessage([&] { times().averageTimeDelta(4); }),
              "Not computing average delta with less than 2 times");
}

TEST_F(CameraTimeTest, ComputeMinMaxUsesTheEndLinesWithoutMakingACtg)
{
    const std::vector<double> expected = expectedTimes({ct.front(), ct.back()});
    Seconds min, max;
    times().computeMinMax(min, max);
    EXPECT_EQ(min.value(), expected[0]);
    EXPECT_EQ(max.value(), expected[1]);
    EXPECT_FALSE(times().isInitialized());
    EXPECT_FALSE(times().ctgFileCreated());

    // An empty CTG file is a band without lines.
    writeCtg({});
    EXPECT_EQ(thrownMessage([&] { times().computeMinMax(min, max); }), "No ctg data available.");
}

TEST_F(CameraTimeTest, TakeRangeSpansItsBandsAndSkipsBandsThatFail)
{
    timingtest::TimingSession session;
    session.writeMarks(regularMarks(20));
    session.addBand("PANN00A", bandCt(800, 4.1));
    session.addBand("REDN00A", bandCt(800, 4.3));
    session.addBand("GRNN00A", {});
    double min = 0.0, max = 0.0;
    session.take().minMaxGpsTimes(min, max);
    EXPECT_NEAR(min, 300004.1, 1e-6);
    EXPECT_NEAR(max, 300004.3 + 799.0 / 800.0, 1e-6);

    timingtest::TimingSession broken;
    broken.writeMarks(regularMarks(20));
    broken.addBand("PANN00A", {});
    EXPECT_EQ(thrownMessage([&] { broken.take().minMaxGpsTimes(min, max); }),
              "Cannot compute min/max times for the image lines.");
}

// ---- Writing, copying, ownership ----------------------------------------------

TEST_F(CameraTimeTest, WriteTakesANewCtgNameAndCopiesStartFromTheOtherModel)
{
    const std::string elsewhere = files.raw("elsewhere.ctg");
    times().write(elsewhere);
    EXPECT_EQ(QFileInfo(QString::fromStdString(elsewhere)).size(), qint64(8 * ct.size()));
    EXPECT_FALSE(times().ctgFileCreated()) << "the image's own CTG name is unchanged";

    // The copy reads the other's CTG file on first use.
    const CameraTime copy(files.image(0), times());
    EXPECT_FALSE(copy.isInitialized());
    EXPECT_EQ(copy.value(5), times().value(5));
    EXPECT_EQ(copy.model()->ctgFileName(), elsewhere);
}

TEST_F(CameraTimeTest, WithoutAnImageThereIsNoCtgName)
{
    CameraTime alone;
    const std::string message = "CameraTime not initialized.";
    EXPECT_EQ(thrownMessage([&] { alone.ctgFileName(); }), message);
    EXPECT_EQ(thrownMessage([&] { alone.img(); }), message);
    EXPECT_EQ(thrownMessage([&] { alone.createFromCtTmFiles(); }), message);
    EXPECT_EQ(thrownMessage([&] { alone.createFromCtTm(ctPath(), files.tmPath()); }), message);
}

TEST_F(CameraTimeTest, CreateFromCtAndTimeMarkPathsUsesItsOwnTimeMarkFile)
{
    timingtest::TimingSession other;
    other.writeMarks(regularMarks(20, 400000.0));
    other.addBand("PANN00A", bandCt(800, 4.1));
    CameraTime& otherTimes = other.image(0).cameraTime();
    otherTimes.createFromCtTm(ctPath(), files.tmPath());
    EXPECT_NEAR(otherTimes.value(0).value(), 300004.1, 1e-6) << "the marks named, not the session's";
    EXPECT_FALSE(otherTimes.ctgFileCreated());
}

TEST_F(CameraTimeTest, TheImageOwnsItsTimesUntilUncachedAndTraversalLoadsThem)
{
    Visits traverser;
    traverser.traverse(times());
    EXPECT_EQ(traverser.visits, 1);
    EXPECT_TRUE(traverser.loadedWhenVisited);
    EXPECT_EQ(&files.image(0).cameraTime(), &times());

    files.image(0).uncache();
    EXPECT_FALSE(times().isInitialized());
    EXPECT_FALSE(times().isNonUniformCT());
    EXPECT_NEAR(times().cycleTime(10.5f).value(), 1.0 / 800.0, 1e-9);
}
