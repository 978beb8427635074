// The CTG writer, the saw-tooth repair and the time-mark gap error.

#include "TimingFiles.h"

#include <datamodel/log/VNLLog.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/CtTimeGap.h>
#include <datamodel/timing/CtgWriter.h>
#include <datamodel/timing/SawToothFixer.h>

#include <platform/sensor/CameraTime.h>

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdlib>
#include <cstring>

using namespace datamodel;
using testsupport::thrownMessage;

namespace {

std::vector<Seconds> timesOf(const std::vector<double>& values)
{
    std::vector<Seconds> times;
    for (double value : values)
        times.push_back(seconds(value));
    return times;
}

/// 16 lines 10 ms apart except the steps into lines 8 (and 16, ...), 12 ms.
std::vector<Seconds> sawTooth(std::size_t lines)
{
    std::vector<double> values{0.0};
    for (std::size_t i = 1; i < lines; ++i)
        values.push_back(values.back() + (i % 8 == 0 ? 0.012 : 0.010));
    return timesOf(values);
}

std::string writeCtg(const QTemporaryDir& dir, const char* name, const std::vector<Seconds>& times)
{
    sensor::CameraTime model;
    model.values() = times;
    model.setCtgFileName(dir.filePath(QString::fromLatin1(name)).toStdString());
    model.writeData();
    return model.ctgFileName();
}

} // namespace

// ---- CtgWriter ---------------------------------------------------------------

TEST(CtgWriter, WritesEightBytesPerLineThatReadBack)
{
    QTemporaryDir dir;
    const std::vector<Seconds> times = timesOf({300004.1, 300004.10125, 300004.1025, 604800.5});
    const auto source = CameraTime::fromCtgFile(writeCtg(dir, "source.ctg", times));
    const std::string path = dir.filePath("L001PANN00A.ctg").toStdString();
    CtgWriter(*source).write(path);

    const QByteArray bytes = timingtest::readBytes(path);
    ASSERT_EQ(bytes.size(), qsizetype(8 * times.size()));
    double third = 0.0;
    std::memcpy(&third, bytes.constData() + 16, 8);
    EXPECT_EQ(third, 300004.1025);
    EXPECT_EQ(CameraTime::fromCtgFile(path)->values(), times);

    const std::string unwritable = dir.filePath("no/such/folder/x.ctg").toStdString();
    EXPECT_EQ(thrownMessage([&] { CtgWriter(*source).write(unwritable); }), "Can't open for write: " + unwritable);
}

TEST(CtgWriter, TimesThatCannotLoadLeaveTheTargetUntouched)
{
    timingtest::TimingSession files;
    files.addBand("PANN00A", {}); // no CT, no CTG, no time marks
    const std::string target = files.raw("existing.ctg");
    timingtest::writeBytes(target, "previous");
    const std::string message = thrownMessage([&] { CtgWriter(files.image(0).cameraTime()).write(target); });
    EXPECT_EQ(message.rfind("Could not initialize the camera times object. Reason: Could not read CTG file.", 0), 0u)
        << message;
    EXPECT_EQ(timingtest::readBytes(target), QByteArray("previous"));
}

// ---- Saw-tooth ---------------------------------------------------------------

TEST(SawToothFixer, DetectsOnlyTheEightLinePattern)
{
    const SawToothFixer fixer(nullptr);
    EXPECT_TRUE(fixer.hasSawTooth(sawTooth(16)));
    EXPECT_TRUE(fixer.hasSawTooth(sawTooth(64)));
    EXPECT_FALSE(fixer.hasSawTooth(sawTooth(15))) << "too few lines";
    EXPECT_FALSE(fixer.hasSawTooth(sawTooth(20))) << "not a multiple of 8";

    std::vector<double> constant;
    for (int i = 0; i < 16; ++i)
        constant.push_back(i * 0.01);
    EXPECT_FALSE(fixer.hasSawTooth(timesOf(constant)));

    std::vector<Seconds> broken = sawTooth(32);
    for (std::size_t i = 20; i < 32; ++i)
        broken[i] += seconds(0.2); // one step of 0.21 s among the ordinary ones
    EXPECT_FALSE(fixer.hasSawTooth(broken));
}

TEST(SawToothFixer, RespacesEveryBlockBetweenItsAnchors)
{
    std::vector<Seconds> values = sawTooth(16);
    const std::vector<Seconds> before = values;
    SawToothFixer(nullptr).fixSawTooth(values);

    EXPECT_EQ(values[0], before[0]);
    EXPECT_EQ(values[8], before[8]);
    const double step = (before[8] - before[0]).value() / 8.0; // 10.25 ms
    for (std::size_t i = 1; i < 16; ++i)
        EXPECT_NEAR(values[i].value(), before[0].value() + double(i) * step, 1e-12) << "line " << i;
}

TEST(SawToothFixer, RewritesTheCtgOfABandWithTheSawToothOnly)
{
    QTemporaryDir dir;
    const std::string faulty = writeCtg(dir, "faulty.ctg", sawTooth(64));
    auto times = CameraTime::fromCtgFile(faulty);
    SawToothFixer fixer(times.get());
    fixer();
    const auto repaired = CameraTime::fromCtgFile(faulty);
    EXPECT_FALSE(fixer.hasSawTooth(repaired->values()));
    EXPECT_NEAR((repaired->value(9) - repaired->value(8)).value(), 0.01025, 1e-12);

    const std::vector<Seconds> clean = timesOf({0.0, 0.01, 0.02, 0.03, 0.04, 0.05, 0.06, 0.07,
                                                0.08, 0.09, 0.1, 0.11, 0.12, 0.13, 0.14, 0.15});
    const std::string good = writeCtg(dir, "good.ctg", clean);
    const QByteArray bytes = timingtest::readBytes(good);
    auto goodTimes = CameraTime::fromCtgFile(good);
    SawToothFixer{goodTimes.get()}();
    EXPECT_EQ(timingtest::readBytes(good), bytes);
    EXPECT_EQ(goodTimes->values(), clean);
}

// The repair logs on "datamodel.CtFile" at debug level; logging is set up
// once per process, so the check runs in a fresh one.
[[noreturn]] static void repairWithDebugLogging(const std::string& configuration)
{
    qputenv(VNLLog::sConfigVariable, QByteArray::fromStdString(configuration));
    std::vector<Seconds> values = sawTooth(16);
    SawToothFixer(nullptr).fixSawTooth(values);
    std::exit(0);
}

TEST(SawToothFixerDeathTest, LogsTheRepairOnTheCtFileLogger)
{
    QTemporaryDir dir;
    const std::string configuration = testsupport::writeFile(dir, "log.properties",
        "log4j.logger.datamodel=DEBUG, err\n"
        "log4j.appender.err=org.apache.log4j.ConsoleAppender\n"
        "log4j.appender.err.Target=System.err\n"
        "log4j.appender.err.layout=org.apache.log4j.PatternLayout\n"
        "log4j.appender.err.layout.ConversionPattern=%c|%p|%m%n\n");
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(repairWithDebugLogging(configuration), ::testing::ExitedWithCode(0),
                "datamodel.CtFile\\|DEBUG\\|SawToothEffect removed");
}

// ---- CtTimeGap ---------------------------------------------------------------

TEST(CtTimeGap, SaysWhereTheGapIsInMilliseconds)
{
    const CtTimeGap gap(seconds(12.3456));
    EXPECT_STREQ(gap.what(), "TM file has gap at CT time 12345.6ms");
    EXPECT_EQ(gap.ctTime().value(), 12.3456);
    CtTimeGap copy(seconds(1.0));
    copy = gap;
    EXPECT_STREQ(copy.what(), gap.what());
    EXPECT_EQ(copy.ctTime(), gap.ctTime());
    EXPECT_THROW(throw gap, std::runtime_error);
}
