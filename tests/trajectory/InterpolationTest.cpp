// The interpolation rules shared by the trajectory readers: linear values,
// angles along the shorter way round, and the ties at the interval's ends.

#include <datamodel/trajectory/PosFile.h>

#include <gtest/gtest.h>

#include <QTemporaryFile>

#include <cmath>
#include <numbers>

using datamodel::ImuRecord;
using datamodel::PosFile;

namespace {

constexpr double sPi = std::numbers::pi;
constexpr double sDeg = sPi / 180.0;

} // namespace

TEST(TrajectoryInterpolation, HeadingsEitherSideOfHalfATurnInterpolateThroughIt)
{
    // +179 and -179 degrees lie 2 degrees apart across 180, not 358 across 0.
    EXPECT_DOUBLE_EQ(PosFile::linearInterpolateAngle(0.0, 179.0 * sDeg, 1.0, -179.0 * sDeg, 0.5, true), sPi);
    EXPECT_NEAR(PosFile::linearInterpolateAngle(0.0, 179.0 * sDeg, 1.0, -179.0 * sDeg, 0.25, true), 179.5 * sDeg, 1e-12);
    EXPECT_NEAR(PosFile::linearInterpolateAngle(0.0, 179.0 * sDeg, 1.0, -179.0 * sDeg, 0.75, true), -179.5 * sDeg, 1e-12);
    EXPECT_NEAR(PosFile::linearInterpolateAngle(0.0, -179.0 * sDeg, 1.0, 179.0 * sDeg, 0.75, true), 179.5 * sDeg, 1e-12);
    // The same in degrees; results lie in (-180, 180].
    EXPECT_DOUBLE_EQ(PosFile::linearInterpolateAngle(10.0, 179.0, 20.0, -179.0, 15.0, false), 180.0);
    EXPECT_DOUBLE_EQ(PosFile::linearInterpolateAngle(10.0, -170.0, 20.0, 170.0, 12.5, false), -175.0);
    // Angles that need no unwrapping, also given outside (-180, 180].
    EXPECT_DOUBLE_EQ(PosFile::linearInterpolateAngle(0.0, 10.0, 4.0, 30.0, 1.0, false), 15.0);
    EXPECT_DOUBLE_EQ(PosFile::linearInterpolateAngle(0.0, 370.0, 4.0, 30.0, 1.0, false), 15.0);
}

TEST(TrajectoryInterpolation, EndsOfTheIntervalReturnTheirAnglesAsGiven)
{
    // At x0 or x1 the angle comes back untouched, not normalised.
    EXPECT_EQ(PosFile::linearInterpolateAngle(1.0, 400.0, 2.0, 10.0, 1.0, false), 400.0);
    EXPECT_EQ(PosFile::linearInterpolateAngle(1.0, 10.0, 2.0, -200.0, 2.0, false), -200.0);
    // A zero-length interval gives the first angle, normalised.
    EXPECT_EQ(PosFile::linearInterpolateAngle(1.0, 370.0, 1.0, 20.0, 1.0, false), 10.0);
    EXPECT_EQ(PosFile::linear(5.0, 7.0, 1.0, 1.0, 3.0), 5.0);
    EXPECT_EQ(PosFile::linear(5.0, 7.0, 1.0, 2.0, 1.0), 5.0);
    EXPECT_EQ(PosFile::linear(5.0, 7.0, 1.0, 2.0, 2.0), 7.0);
    EXPECT_DOUBLE_EQ(PosFile::linear(5.0, 7.0, 1.0, 2.0, 1.25), 5.5);
    EXPECT_DOUBLE_EQ(PosFile::linear(5.0, 7.0, 1.0, 2.0, 3.0), 9.0); // extrapolates
}

TEST(TrajectoryInterpolation, UnwrapMovesTheNegativeAngleUpByATurn)
{
    double a = 179.0, b = -179.0;
    PosFile::UnwrapAngle(a, b, false);
    EXPECT_EQ(a, 179.0);
    EXPECT_EQ(b, 181.0);

    a = -179.0;
    b = 179.0;
    PosFile::UnwrapAngle(a, b, false);
    EXPECT_EQ(a, 181.0);
    EXPECT_EQ(b, 179.0);

    // Normalised into (-180, 180] first; close angles stay as they are.
    a = 540.0;
    b = -180.0;
    PosFile::UnwrapAngle(a, b, false);
    EXPECT_EQ(a, 180.0);
    EXPECT_EQ(b, 180.0);
    a = 10.0;
    b = 380.0;
    PosFile::UnwrapAngle(a, b, false);
    EXPECT_EQ(a, 10.0);
    EXPECT_EQ(b, 20.0);

    // Exactly half a turn apart: the second angle moves.
    a = 90.0;
    b = -90.0;
    PosFile::UnwrapAngle(a, b, false);
    EXPECT_EQ(a, 90.0);
    EXPECT_EQ(b, 270.0);
    a = -90.0;
    b = 90.0;
    PosFile::UnwrapAngle(a, b, false);
    EXPECT_EQ(a, -90.0);
    EXPECT_EQ(b, -270.0);

    a = 0.5 * sPi;
    b = -0.75 * sPi;
    PosFile::UnwrapAngle(a, b, true);
    EXPECT_DOUBLE_EQ(a, 0.5 * sPi);
    EXPECT_DOUBLE_EQ(b, 1.25 * sPi);
}

TEST(TrajectoryInterpolation, RecordsInterpolateRollAndPitchLinearlyAndHeadingAsAnAngle)
{
    // interpolate() needs a reader for the rollover rule; a stand-in on an
    // empty file, without rollover, does.
    QTemporaryFile empty;
    ASSERT_TRUE(empty.open());
    struct NoFile : PosFile {
        explicit NoFile(const QString& path)
            : PosFile(path.toStdString())
        {
        }
        void readRecord(int, ImuRecord&) override {}
        void readNextRecord(ImuRecord&) override {}
    } reader(empty.fileName());

    ImuRecord a;
    a.time = 100.0;
    a.latitude = 0.5;
    a.longitude = 179.9 * sDeg;
    a.height = 1000.0;
    a.roll = 3.1;
    a.pitch = -3.1;
    a.heading = 179.0 * sDeg;
    a.stdDev() = {1.0f, 2.0f, 3.0f, 0.001f, 0.002f, 0.003f};
    ImuRecord b = a;
    b.time = 101.0;
    b.latitude = 0.7;
    b.longitude = -179.9 * sDeg;
    b.height = 1010.0;
    b.roll = -3.1;
    b.pitch = 3.1;
    b.heading = -179.0 * sDeg;
    b.stdDev() = {3.0f, 4.0f, 5.0f, 0.003f, 0.004f, 0.005f};

    ImuRecord out;
    out.time = 100.25;
    reader.interpolate(a, b, out);
    EXPECT_DOUBLE_EQ(out.latitude, 0.55);
    EXPECT_DOUBLE_EQ(out.height, 1002.5);
    // Roll and pitch go the long way through zero: they are not unwrapped.
    EXPECT_NEAR(out.roll, 1.55, 1e-12);
    EXPECT_NEAR(out.pitch, -1.55, 1e-12);
    EXPECT_NEAR(out.longitude, 179.95 * sDeg, 1e-12);
    EXPECT_NEAR(out.heading, 179.5 * sDeg, 1e-12);
    EXPECT_FLOAT_EQ(out.stdDev()[0], 1.5f);
    EXPECT_FLOAT_EQ(out.stdDev()[5], 0.0035f);
    EXPECT_EQ(out.time, 100.25);

    // Equal record times give the first record's values.
    b.time = a.time;
    reader.interpolate(a, b, out);
    EXPECT_EQ(out.latitude, a.latitude);
    EXPECT_EQ(out.roll, a.roll);
}
