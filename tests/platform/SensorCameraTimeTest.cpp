#include "TestSupport.h"

#include <platform/sensor/CameraTime.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cmath>

using datamodel::seconds;
using testsupport::thrownMessage;

namespace {

/// `lines` times at `stepSec` from `startSec`.
sensor::CameraTime model(std::size_t lines, double stepSec, double startSec = 1000.0)
{
    sensor::CameraTime times;
    for (std::size_t i = 0; i < lines; ++i)
        times.values().push_back(seconds(startSec + double(i) * stepSec));
    return times;
}

} // namespace

TEST(SensorCameraTime, TimeIsLinearBetweenLinesAndContinuesBeyondTheEnds)
{
    sensor::CameraTime times;
    for (double t : {10.0, 10.5, 12.0})
        times.values().push_back(seconds(t));
    EXPECT_EQ(times.gpsTime(1.0f).value(), 10.5);
    EXPECT_DOUBLE_EQ(times.gpsTime(0.25f).value(), 10.125);
    EXPECT_DOUBLE_EQ(times.gpsTime(1.5f).value(), 11.25);
    EXPECT_DOUBLE_EQ(times.gpsTime(-1.0f).value(), 9.5);
    EXPECT_DOUBLE_EQ(times.gpsTime(3.0f).value(), 13.5);
    EXPECT_DOUBLE_EQ(times.cycleTime(0.9f).value(), 0.5);
    EXPECT_DOUBLE_EQ(times.cycleTime(1.0f).value(), 1.5);
    EXPECT_DOUBLE_EQ(times.cycleTime(7.0f).value(), 1.5);

    sensor::CameraTime one = model(1, 0.0);
    EXPECT_EQ(one.gpsTime(4.5f).value(), 1000.0);
    one.setCtgFileName("band.ctg");
    EXPECT_EQ(thrownMessage([&] { one.cycleTime(0.0f); }),
              "No cycle time with fewer than two camera times for: band.ctg");
    EXPECT_EQ(thrownMessage([&] { sensor::CameraTime().gpsTime(0.0f); }), "No camera times for: ");
}

TEST(SensorCameraTime, OnlyAPersistentChangeOfLinePeriodIsNonUniform)
{
    sensor::CameraTime uniform = model(100, 0.00125);
    EXPECT_FALSE(uniform.isNonUniformCT());
    const auto single = uniform.getInternalCtglRepresentation();
    ASSERT_EQ(single.size(), 1u);
    EXPECT_EQ(single.begin()->second.lines, 100u);
    EXPECT_NEAR(single.begin()->second.cycleTime.value(), 0.00125, 1e-15);

    // A glitch, a step backwards and an eight-line saw-tooth stay in their stretch.
    sensor::CameraTime odd = model(64, 0.01);
    odd.values()[20] += seconds(0.004);
    odd.values()[40] -= seconds(0.03);
    for (std::size_t i = 48; i < 64; ++i)
        odd.values()[i] += seconds(i % 8 == 0 ? 0.0 : -0.0003 * double(i % 8));
    EXPECT_FALSE(odd.isNonUniformCT());

    // The camera switches from 1.25 ms to 2 ms at line 50.
    sensor::CameraTime changed = model(51, 0.00125);
    for (int i = 1; i < 50; ++i)
        changed.values().push_back(changed.values().back() + seconds(0.002));
    EXPECT_TRUE(changed.isNonUniformCT());
    const auto stretches = changed.getInternalCtglRepresentation();
    ASSERT_EQ(stretches.size(), 2u);
    const sensor::CtglEntry second = std::next(stretches.begin())->second;
    EXPECT_EQ(std::next(stretches.begin())->first, changed.values()[50]);
    EXPECT_EQ(second.firstLine, 50u);
    EXPECT_EQ(second.lines, 50u);
    EXPECT_NEAR(second.cycleTime.value(), 0.002, 1e-12);
    EXPECT_EQ(stretches.begin()->second.lines, 50u);
}

TEST(SensorCameraTime, CtgFilesRoundTripAndBrokenOnesAreRefused)
{
    QTemporaryDir dir;
    const std::string path = dir.filePath("L001PANN00A.ctg").toStdString();
    sensor::CameraTime written = model(5, 0.25, 604799.5);
    written.setCtgFileName(path);
    written.writeData();
    EXPECT_EQ(QFileInfo(QString::fromStdString(path)).size(), 40);
    EXPECT_EQ(sensor::CameraTime(path).values(), written.values());

    const std::string odd = testsupport::writeFile(dir, "odd.ctg", QByteArray(12, '\0'));
    EXPECT_EQ(thrownMessage([&] { sensor::CameraTime{odd}; }), "CTG file size is no multiple of 8 bytes: " + odd);
    const std::string missing = dir.filePath("missing.ctg").toStdString();
    EXPECT_EQ(thrownMessage([&] { sensor::CameraTime{missing}; }), "Can't open CTG file: " + missing);
    EXPECT_EQ(sensor::CameraTime(testsupport::writeFile(dir, "empty.ctg", {})).size(), 0u);

    // A failed load keeps the times; without a name nothing is read or written.
    sensor::CameraTime kept = written;
    kept.setCtgFileName(missing);
    EXPECT_THROW(kept.loadData(), std::runtime_error);
    EXPECT_EQ(kept.size(), 5u);
    EXPECT_EQ(thrownMessage([&] { sensor::CameraTime().loadData(); }), "No CTG file name set.");
    EXPECT_EQ(thrownMessage([&] { sensor::CameraTime().writeData(); }), "No CTG file name set.");
    sensor::CameraTime unwritable = written;
    unwritable.setCtgFileName(dir.filePath("no/dir/x.ctg").toStdString());
    EXPECT_EQ(thrownMessage([&] { unwritable.writeData(); }), "Can't write CTG file: " + unwritable.ctgFileName() + " (No such file or directory)");
}
