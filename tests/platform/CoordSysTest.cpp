#include <platform/geo/XYZPoint.h>
#include <platform/geo/coordSys.h>
#include <platform/geo/coordSysFactory.h>

#include <gtest/gtest.h>

#include <proj.h>

#include <memory>
#include <stdexcept>
#include <vector>

using geo::coordSys;
using geo::coordSysFactory;
using geo::XYZPoint;

namespace {

class CoordSysTest : public ::testing::Test {
protected:
    const coordSysFactory& factory = coordSysFactory::getInstance();
    std::unique_ptr<coordSys> wgs84 = factory.createGEO84();
    std::unique_ptr<coordSys> mercator = factory.createMercator(0);
    // Anchor of the local system: longitude, latitude (degrees), height (m).
    const XYZPoint anchor{11.0, 47.0, 500.0};
    std::unique_ptr<coordSys> lsr = factory.createLSR84(anchor);
};

XYZPoint transformed(const coordSys& from, const coordSys& to, XYZPoint p)
{
    from.transform(to, p);
    return p;
}

} // namespace

TEST_F(CoordSysTest, SystemsDescribeThemselves)
{
    EXPECT_TRUE(wgs84->isGeographic());
    EXPECT_FALSE(mercator->isGeographic());
    EXPECT_FALSE(lsr->isGeographic());
    EXPECT_EQ(mercator->name(), "Mercator");
    EXPECT_EQ(lsr->name(), "LSR System");
    EXPECT_FALSE(*mercator == *wgs84);
    EXPECT_TRUE(*mercator == *factory.createMercator(0));
    EXPECT_FALSE(*mercator == *factory.createMercator(10));
}

TEST_F(CoordSysTest, MercatorOfKnownPoints)
{
    const XYZPoint origin = transformed(*wgs84, *mercator, {0.0, 0.0, 0.0});
    EXPECT_NEAR(origin.x, 0.0, 1e-6);
    EXPECT_NEAR(origin.y, 0.0, 1e-6);

    const XYZPoint p = transformed(*wgs84, *mercator, {10.0, 50.0, 250.0});
    EXPECT_NEAR(p.x, 1113194.908, 1e-3);
    EXPECT_NEAR(p.y, 6413524.594, 1e-3);
    EXPECT_NEAR(p.z, 250.0, 1e-6);

    // The central meridian moves the origin of x.
    const XYZPoint shifted = transformed(*wgs84, *factory.createMercator(10.0), {10.0, 50.0, 0.0});
    EXPECT_NEAR(shifted.x, 0.0, 1e-6);
    EXPECT_NEAR(shifted.y, 6413524.594, 1e-3);
}

TEST_F(CoordSysTest, LocalSystemIsEastNorthUpAtItsAnchor)
{
    const XYZPoint origin = transformed(*wgs84, *lsr, anchor);
    EXPECT_NEAR(origin.x, 0.0, 1e-6);
    EXPECT_NEAR(origin.y, 0.0, 1e-6);
    EXPECT_NEAR(origin.z, 0.0, 1e-6);

    // One degree of latitude north, same height: about 111 km north and
    // below the tangent plane by the earth's curvature.
    const XYZPoint north = transformed(*wgs84, *lsr, {11.0, 48.0, 500.0});
    EXPECT_NEAR(north.x, 0.0, 1e-3);
    EXPECT_NEAR(north.y, 111183.67, 0.5);
    EXPECT_NEAR(north.z, -970.31, 0.5);

    const XYZPoint east = transformed(*wgs84, *lsr, {12.0, 47.0, 500.0});
    EXPECT_NEAR(east.x, 76058.09, 0.5);
    EXPECT_GT(east.y, 0.0);

    const XYZPoint up = transformed(*wgs84, *lsr, {11.0, 47.0, 600.0});
    EXPECT_NEAR(up.x, 0.0, 1e-6);
    EXPECT_NEAR(up.y, 0.0, 1e-6);
    EXPECT_NEAR(up.z, 100.0, 1e-6);

    EXPECT_THROW(factory.createLSR84({11.0, 91.0, 0.0}), std::runtime_error);
}

// The local system converts in closed form; PROJ's own pipeline of the same
// definition is the reference, to a micrometre, near and far from anchors
// at the equator, in the middle latitudes, near the poles and near the
// antimeridian.
TEST_F(CoordSysTest, LocalSystemAgreesWithProjsPipeline)
{
    PJ_CONTEXT* ctx = proj_context_create();
    for (const XYZPoint& at : {XYZPoint{0.0, 0.0, 0.0}, XYZPoint{11.5, 48.1, 0.0}, XYZPoint{-75.2, 75.0, 120.0},
                               XYZPoint{179.9, -60.0, 0.0}}) {
        const std::unique_ptr<coordSys> local = factory.createLSR84(at);
        PJ* pipeline = proj_create(ctx, local->definition().c_str());
        ASSERT_NE(pipeline, nullptr);
        std::vector<XYZPoint> points;
        for (double dLon : {-1.5, -0.01, 0.0, 0.3, 1.2})
            for (double dLat : {-1.0, 0.0, 0.02, 0.9})
                for (double h : {-80.0, 0.0, 2500.0, 9000.0})
                    points.push_back({at.x + dLon, at.y + dLat, h});
        std::vector<XYZPoint> closed = points;
        wgs84->transform(*local, closed);
        for (std::size_t i = 0; i < points.size(); ++i) {
            const PJ_COORD reference = proj_trans(pipeline, PJ_FWD, proj_coord(points[i].x, points[i].y, points[i].z, 0));
            EXPECT_NEAR(closed[i].x, reference.xyz.x, 1e-6) << local->definition() << " point " << i;
            EXPECT_NEAR(closed[i].y, reference.xyz.y, 1e-6) << local->definition() << " point " << i;
            EXPECT_NEAR(closed[i].z, reference.xyz.z, 1e-6) << local->definition() << " point " << i;
        }
        proj_destroy(pipeline);
    }
    proj_context_destroy(ctx);
}

TEST_F(CoordSysTest, RoundTripsReturnTheStartingPoint)
{
    const XYZPoint start{-12.504, 47.168, 1234.5};
    for (const coordSys* via : {mercator.get(), lsr.get()}) {
        const XYZPoint there = transformed(*wgs84, *via, start);
        const XYZPoint back = transformed(*via, *wgs84, there);
        EXPECT_NEAR(back.x, start.x, 1e-9) << via->name();
        EXPECT_NEAR(back.y, start.y, 1e-9) << via->name();
        EXPECT_NEAR(back.z, start.z, 1e-5) << via->name();
    }

    // Between two projected systems, through geographic coordinates.
    const XYZPoint local{1500.0, -2500.0, 30.0};
    const XYZPoint inMercator = transformed(*lsr, *mercator, local);
    const XYZPoint again = transformed(*mercator, *lsr, inMercator);
    EXPECT_NEAR(again.x, local.x, 1e-5);
    EXPECT_NEAR(again.y, local.y, 1e-5);
    EXPECT_NEAR(again.z, local.z, 1e-5);
}

TEST_F(CoordSysTest, ManyPointsAtOnceMatchOneByOne)
{
    std::vector<XYZPoint> points{{11.0, 47.0, 500.0}, {11.5, 47.5, 800.0}, {10.2, 46.1, 0.0}};
    std::vector<XYZPoint> expected;
    for (const XYZPoint& p : points)
        expected.push_back(transformed(*wgs84, *lsr, p));

    wgs84->transform(*lsr, points);

    ASSERT_EQ(points.size(), expected.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_DOUBLE_EQ(points[i].x, expected[i].x);
        EXPECT_DOUBLE_EQ(points[i].y, expected[i].y);
        EXPECT_DOUBLE_EQ(points[i].z, expected[i].z);
    }
}

TEST_F(CoordSysTest, DefinitionsRecreateTheSameSystem)
{
    const XYZPoint p{11.25, 47.75, 900.0};
    for (const coordSys* original : {mercator.get(), lsr.get(), wgs84.get()}) {
        const std::unique_ptr<coordSys> copy = factory.createCoordSys(original->definition());
        EXPECT_TRUE(*copy == *original) << original->definition();
        EXPECT_EQ(copy->isGeographic(), original->isGeographic());
        // A separately made system with an equal definition transforms alike.
        const XYZPoint a = transformed(*wgs84, *original, p);
        const XYZPoint b = transformed(*factory.createGEO84(), *copy, p);
        EXPECT_NEAR(a.x, b.x, 1e-6);
        EXPECT_NEAR(a.y, b.y, 1e-6);
        EXPECT_NEAR(a.z, b.z, 1e-6);
    }

    // An LSR system rebuilt from its definition keeps its anchor.
    const XYZPoint origin = transformed(*wgs84, *factory.createCoordSys(lsr->definition()), anchor);
    EXPECT_NEAR(origin.x, 0.0, 1e-6);
    EXPECT_NEAR(origin.y, 0.0, 1e-6);
    EXPECT_NEAR(origin.z, 0.0, 1e-6);
}

TEST_F(CoordSysTest, FailuresThrow)
{
    XYZPoint outside{0.0, 100.0, 0.0};
    EXPECT_THROW(wgs84->transform(*mercator, outside), std::runtime_error);
    std::vector<XYZPoint> some{{0.0, 10.0, 0.0}, {0.0, 100.0, 0.0}};
    EXPECT_THROW(wgs84->transform(*lsr, some), std::runtime_error);
    EXPECT_THROW(factory.createCoordSys("+proj=no_such_projection"), std::runtime_error);
    EXPECT_THROW(factory.createCoordSys("EPSG:999999999"), std::runtime_error);
}
