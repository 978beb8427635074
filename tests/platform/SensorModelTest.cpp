// The push-broom camera's image rays in the camera frame and, through an
// exterior orientation, in the mapping frame (docs/formats/camera-file.md,
// docs/exterior-orientation.md).

#include "TestSupport.h"

#include <platform/sensor/IdentitySensorModel.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using sensor::IdentitySensorModel;
using testsupport::thrownMessage;

namespace {

constexpr double sFocalMm = 62.5;
constexpr double sPixelMm = 0.0065;
constexpr int sPixels = 12000;
constexpr double sDeg = std::numbers::pi / 180.0;

IdentitySensorModel camera()
{
    const double firstY = -0.5 * (sPixels - 1) * sPixelMm;
    return IdentitySensorModel(sFocalMm, sPixelMm, sPixels,
                               {{"PANN00A", 0.0, firstY}, {"PANF28A", sFocalMm * std::tan(28 * sDeg), firstY}});
}

/// The EOP quaternion of omega, phi, kappa as the exterior orientation stores
/// it: the half angles of -omega, -phi, -kappa.
sensor::EOP eopOf(double omega, double phi, double kappa, double x = 0.0, double y = 0.0, double z = 1000.0)
{
    const double a = -omega / 2, b = -phi / 2, g = -kappa / 2;
    const double ca = std::cos(a), sa = std::sin(a), cb = std::cos(b), sb = std::sin(b), cg = std::cos(g),
                 sg = std::sin(g);
    sensor::EOP eop;
    eop.q = {float(ca * cb * cg + sa * sb * sg), float(sa * cb * cg - ca * sb * sg), float(sa * cb * sg + ca * sb * cg),
             float(ca * cb * sg - sa * sb * cg)};
    eop.x = x, eop.y = y, eop.z = z;
    return eop;
}

void expectDirection(const geo::XYZPoint& actual, double x, double y, double z)
{
    const double length = std::sqrt(x * x + y * y + z * z);
    EXPECT_NEAR(actual.x, x / length, 1e-6);
    EXPECT_NEAR(actual.y, y / length, 1e-6);
    EXPECT_NEAR(actual.z, z / length, 1e-6);
}

} // namespace

TEST(IdentitySensorModel, ImageRaysLookForwardForPositiveXAndLeftForPositiveY)
{
    IdentitySensorModel model = camera();
    EXPECT_EQ(model.band().name, "PANN00A");
    const double centre = 0.5 * (sPixels - 1);
    expectDirection(model.imageRay(centre), 0.0, 0.0, -1.0);
    // The last pixel lies at +y: it looks to the left.
    const double edgeY = 0.5 * (sPixels - 1) * sPixelMm;
    expectDirection(model.imageRay(sPixels - 1), 0.0, edgeY, -sFocalMm);
    EXPECT_NEAR(model.acrossAngle(sPixels - 1), std::atan(edgeY / sFocalMm), 1e-12);
    EXPECT_NEAR(model.pixelFootprintM(centre, 1000.0), 1000.0 * sPixelMm / sFocalMm, 1e-9);

    model.selectBand("PANF28A");
    EXPECT_NEAR(model.lookAngle(), 28 * sDeg, 1e-12);
    const geo::XYZPoint forward = model.imageRay(centre);
    EXPECT_NEAR(std::atan2(forward.x, -forward.z), 28 * sDeg, 1e-12);
    EXPECT_NEAR(forward.y, 0.0, 1e-12);
}

TEST(IdentitySensorModel, RaysInTheMappingFrameFollowTheExteriorOrientation)
{
    IdentitySensorModel model = camera();
    model.selectBand("PANF28A");
    const double centre = 0.5 * (sPixels - 1);
    const double tan28 = std::tan(28 * sDeg);
    geo::XYZPoint origin, direction;

    // Level flight east: the camera frame is the mapping frame; the forward
    // band looks east and down, the last pixel north (left).
    model.rayAt(eopOf(0, 0, 0, 10.0, 20.0, 1500.0), centre, origin, direction);
    EXPECT_EQ(origin, geo::XYZPoint(10.0, 20.0, 1500.0));
    expectDirection(direction, tan28, 0.0, -1.0);
    model.rayAt(eopOf(0, 0, 0), sPixels - 1, origin, direction);
    EXPECT_GT(direction.y, 0.1);

    // Heading north (kappa 90 degrees): forward is north, left is west.
    model.rayAt(eopOf(0, 0, 90 * sDeg), centre, origin, direction);
    expectDirection(direction, 0.0, tan28, -1.0);
    model.rayAt(eopOf(0, 0, 90 * sDeg), sPixels - 1, origin, direction);
    EXPECT_LT(direction.x, -0.1);

    // Flying east, rolled by omega 10 degrees about the flight axis: the
    // nadir ray turns to the left (north) by 10 degrees; phi 5 degrees
    // pitches it backward (west).
    model.selectBand("PANN00A");
    model.rayAt(eopOf(10 * sDeg, 0, 0), centre, origin, direction);
    expectDirection(direction, 0.0, std::sin(10 * sDeg), -std::cos(10 * sDeg));
    model.rayAt(eopOf(0, 5 * sDeg, 0), centre, origin, direction);
    expectDirection(direction, -std::sin(5 * sDeg), 0.0, -std::cos(5 * sDeg));
}

TEST(IdentitySensorModel, RefusesImpossibleCamerasAndUnknownBands)
{
    using Bands = std::vector<IdentitySensorModel::Band>;
    EXPECT_EQ(thrownMessage([] { IdentitySensorModel(0.0, sPixelMm, sPixels, Bands{{"A", 0, 0}}); }),
              "Invalid sensor model: focal length 0 mm is not above 0");
    EXPECT_EQ(thrownMessage([] { IdentitySensorModel(sFocalMm, NAN, sPixels, Bands{{"A", 0, 0}}); }),
              "Invalid sensor model: pixel size nan mm is not above 0");
    EXPECT_EQ(thrownMessage([] { IdentitySensorModel(sFocalMm, sPixelMm, sPixels, Bands{{"A", 0, 0}, {"A", 1, 0}}); }),
              "Invalid sensor model: band A is described twice");
    IdentitySensorModel model = camera();
    EXPECT_EQ(thrownMessage([&] { model.selectBand("RGBN00A"); }), "The camera has no band RGBN00A");
    EXPECT_EQ(model.band().name, "PANN00A");
}
