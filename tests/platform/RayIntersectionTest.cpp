// The first point where a ray meets the terrain grid: analytic planes, a
// thin ridge that a grazing ray must not pass through, rays against a
// brute-force search, and the ways a ray can fail.

#include "TestSupport.h"

#include <platform/dsm/ProjectedElevationSource.h>
#include <platform/geometry/RayToSurfaceIntersection.h>
#include <platform/sensor/IdentitySensorModel.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <random>
#include <vector>

using dsm::ProjectedElevationSource;
using geo::XYZPoint;
using geometry::RayToSurfaceIntersection;
using Outcome = geometry::RayToSurfaceIntersection::Outcome;

namespace {

constexpr double sDeg = std::numbers::pi / 180.0;

/// A grid of `nodes` x `nodes` at 25 m from (0, 0) holding height(x, y).
ProjectedElevationSource grid(int nodes, const std::function<double(double, double)>& height)
{
    std::vector<float> heights;
    for (int k = 0; k < nodes; ++k)
        for (int i = 0; i < nodes; ++i)
            heights.push_back(float(height(i * 25.0, k * 25.0)));
    return ProjectedElevationSource(0.0, 0.0, 25.0, nodes, nodes, std::move(heights), "test");
}

const sensor::IdentitySensorModel& camera()
{
    static const sensor::IdentitySensorModel model(62.5, 0.0065, 12000, {{"PANN00A", 0.0, -38.99675}});
    return model;
}

/// A unit direction `offNadirDeg` from straight down, towards `azimuthDeg`
/// (counter-clockwise from east).
XYZPoint direction(double offNadirDeg, double azimuthDeg)
{
    const double s = std::sin(offNadirDeg * sDeg);
    return {s * std::cos(azimuthDeg * sDeg), s * std::sin(azimuthDeg * sDeg), -std::cos(offNadirDeg * sDeg)};
}

XYZPoint along(const XYZPoint& origin, const XYZPoint& d, double t)
{
    return {origin.x + t * d.x, origin.y + t * d.y, origin.z + t * d.z};
}

void expectPoint(const XYZPoint& actual, const XYZPoint& expected, double tolerance)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

} // namespace

TEST(RayToSurfaceIntersection, RaysMeetFlatAndInclinedPlanesWhereTheAlgebraSays)
{
    const XYZPoint origin(1012.3, 987.6, 1000.0);
    auto incline = [](double x, double y) { return 100.0 + 0.3 * x - 0.2 * y; };
    const ProjectedElevationSource flat = grid(81, [](double, double) { return 250.0; });
    const ProjectedElevationSource inclined = grid(81, incline);
    const RayToSurfaceIntersection onFlat(camera(), flat, 0.01), onIncline(camera(), inclined, 0.01);
    for (const auto& [offNadir, azimuth] : {std::pair(0.0, 0.0), std::pair(30.0, 0.0), std::pair(30.0, 135.0),
                                            std::pair(20.0, 250.0), std::pair(45.0, 300.0)}) {
        SCOPED_TRACE(std::to_string(offNadir) + " degrees towards " + std::to_string(azimuth));
        const XYZPoint d = direction(offNadir, azimuth);
        XYZPoint hit;
        ASSERT_EQ(onFlat.intersect(origin, d, hit), Outcome::Hit);
        expectPoint(hit, along(origin, d, (250.0 - origin.z) / d.z), 1e-6);
        // Any length of direction will do.
        ASSERT_EQ(onIncline.intersect(origin, {3 * d.x, 3 * d.y, 3 * d.z}, hit), Outcome::Hit);
        const double t = (incline(origin.x, origin.y) - origin.z) / (d.z - 0.3 * d.x + 0.2 * d.y);
        expectPoint(hit, along(origin, d, t), 1e-3);
    }

    // The ray of a pixel through an exterior orientation: level flight east
    // 1000 m above the flat ground; the pixel looks across by y / f.
    sensor::EOP eop;
    eop.x = 1000.0, eop.y = 1000.0, eop.z = 1250.0;
    XYZPoint hit;
    ASSERT_EQ(onFlat.intersect(eop, 11999.0, hit), Outcome::Hit);
    expectPoint(hit, {1000.0, 1000.0 + 1000.0 * 38.99675 / 62.5, 250.0}, 1e-6);
}

TEST(RayToSurfaceIntersection, AGrazingRayMeetsAThinRidgeOnItsNearSide)
{
    // Flat ground with a ridge one node wide, 100 m high, along x = 2500 m:
    // its flanks rise 100 m over 25 m. Rays come down at 2 degrees.
    const ProjectedElevationSource ridge = grid(401, [](double x, double) { return x == 2500.0 ? 100.0 : 0.0; });
    const RayToSurfaceIntersection intersection(camera(), ridge, 0.01);
    const double tanDip = std::tan(2.0 * sDeg);
    for (const double azimuth : {0.0, 30.0, -50.0}) {
        SCOPED_TRACE(azimuth);
        const double c = std::cos(azimuth * sDeg), s = std::sin(azimuth * sDeg);
        const XYZPoint d = direction(88.0, azimuth);
        // A ray that would pass `clearance` above the ridge's crest at
        // (2500, 5000), starting 2000 m before it horizontally.
        auto rayOver = [&](double clearance) {
            return XYZPoint(2500.0 - 2000.0 * c, 5000.0 - 2000.0 * s, 100.0 + clearance + 2000.0 * tanDip);
        };
        // 5 cm under the crest: it is inside the ridge for a few centimetres
        // only, where the near flank (rising 4 m per metre of x) meets it.
        XYZPoint hit;
        ASSERT_EQ(intersection.intersect(rayOver(-0.05), d, hit), Outcome::Hit);
        const double before = 0.05 / (4.0 * c + tanDip); // horizontal distance before the crest
        expectPoint(hit, {2500.0 - before * c, 5000.0 - before * s, 99.95 + before * tanDip}, 1e-6);
        // Within the accuracy above the crest: it touches the crest.
        ASSERT_EQ(intersection.intersect(rayOver(0.005), d, hit), Outcome::Hit);
        expectPoint(hit, {2500.0, 5000.0, 100.005}, 1e-6);
        // Clear of the crest: it comes down on the ground beyond.
        ASSERT_EQ(intersection.intersect(rayOver(0.05), d, hit), Outcome::Hit);
        const double beyond = 100.05 / tanDip;
        expectPoint(hit, {2500.0 + beyond * c, 5000.0 + beyond * s, 0.0}, 1e-6);
    }
}

TEST(RayToSurfaceIntersection, RaysOverRollingTerrainMeetItWhereABruteForceSearchDoes)
{
    // 60 m of relief in crossing sine waves, rays across a 60 degree swath
    // and steeper, in every direction; the reference walks the ray in
    // 2.5 cm steps and bisects the first step that ends below the surface.
    const ProjectedElevationSource terrain = grid(121, [](double x, double y) {
        return 300.0 + 30.0 * std::sin(x / 140.0) * std::cos(y / 95.0) + 8.0 * std::sin((x + 2 * y) / 37.0);
    });
    const RayToSurfaceIntersection intersection(camera(), terrain, 0.001);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int n = 0; n < 200; ++n) {
        const XYZPoint origin(1000.0 + 1000.0 * unit(random), 1000.0 + 1000.0 * unit(random),
                              350.0 + 650.0 * unit(random));
        const XYZPoint d = direction(60.0 * unit(random), 360.0 * unit(random));
        auto clearance = [&](double t) {
            const XYZPoint p = along(origin, d, t);
            return p.z - terrain.height(p.x, p.y);
        };
        double t = (terrain.maxHeight() + 1.0 - origin.z) / d.z, step = 0.025;
        while (clearance(t + step) > 0.0)
            t += step;
        double low = t, high = t + step;
        for (int i = 0; i < 60; ++i)
            (clearance(0.5 * (low + high)) > 0.0 ? low : high) = 0.5 * (low + high);
        XYZPoint hit;
        ASSERT_EQ(intersection.intersect(origin, d, hit), Outcome::Hit) << n;
        expectPoint(hit, along(origin, d, high), 1e-6);
    }
}

TEST(RayToSurfaceIntersection, RaysThatCannotMeetTheTerrainSaySo)
{
    std::vector<float> heights(41 * 41, 100.0f);
    for (int k = 18; k < 22; ++k)
        for (int i = 18; i < 22; ++i)
            heights[std::size_t(k) * 41 + std::size_t(i)] = NAN;
    const ProjectedElevationSource holed(0.0, 0.0, 25.0, 41, 41, heights, "holed");
    const RayToSurfaceIntersection intersection(camera(), holed, 0.01);
    XYZPoint hit(-1.0, -2.0, -3.0);
    const XYZPoint above(500.0, 300.0, 1100.0);
    EXPECT_EQ(intersection.intersect(above, {0.1, 0.0, 0.0}, hit), Outcome::NotDownward);
    EXPECT_EQ(intersection.intersect(above, {0.0, 0.1, 0.2}, hit), Outcome::NotDownward);
    EXPECT_EQ(intersection.intersect({500.0, 300.0, 99.0}, {0.0, 0.0, -1.0}, hit), Outcome::BelowSurface);
    // Out over the grid's edge at a shallow angle; into it from the side
    // below the surface.
    EXPECT_EQ(intersection.intersect(above, direction(89.0, 180.0), hit), Outcome::Missed);
    EXPECT_EQ(intersection.intersect({-100.0, 300.0, 99.5}, direction(89.0, 0.0), hit), Outcome::Missed);
    EXPECT_EQ(intersection.intersect({500.0, 500.0, 1100.0}, {0.0, 0.0, -1.0}, hit), Outcome::NoData);
    EXPECT_EQ(hit, XYZPoint(-1.0, -2.0, -3.0));
    EXPECT_STREQ(RayToSurfaceIntersection::describe(Outcome::Missed),
                 "the ray leaves the elevation grid without meeting the terrain");

    EXPECT_EQ(testsupport::thrownMessage([&] { RayToSurfaceIntersection(camera(), holed, 0.0); }),
              "The accuracy of a ray intersection must be above 0 m, not 0");
}
