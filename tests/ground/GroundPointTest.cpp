#include <datamodel/ground/CheckPoint.h>
#include <datamodel/ground/ControlPoint.h>
#include <datamodel/ground/GroundPoint.h>
#include <datamodel/ground/SurveyedGroundPoint.h>
#include <datamodel/ground/TiePoint.h>
#include <datamodel/model/ImagePoint.h>

#include <platform/geo/coordSys.h>
#include <platform/geo/coordSysFactory.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

using namespace datamodel;

namespace {

class GroundPointTest : public ::testing::Test {
protected:
    std::unique_ptr<geo::coordSys> wgs84 = geo::coordSysFactory::getInstance().createGEO84();
    std::unique_ptr<geo::coordSys> mercator = geo::coordSysFactory::getInstance().createMercator(0);
};

std::string messageOf(const std::function<void()>& f)
{
    try {
        f();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "<nothing thrown>";
}

using Type = SurveyedGroundPoint::Type;

} // namespace

TEST_F(GroundPointTest, TypeCodesOfTheGroundPointFile)
{
    const auto control = [&](int type) {
        return GroundPoint::typeToInt(ControlPoint("C", *wgs84, 0, 0, 0, 0, 0, 0, static_cast<Type>(type)));
    };
    const auto check = [&](int type) {
        return GroundPoint::typeToInt(CheckPoint("K", *wgs84, 0, 0, 0, 0, 0, 0, static_cast<Type>(type)));
    };
    EXPECT_EQ(control(0), 0);
    EXPECT_EQ(control(1), 1);
    EXPECT_EQ(control(2), 2);
    EXPECT_EQ(GroundPoint::typeToInt(TiePoint("T", *wgs84, 0, 0, 0, 0, 0, 0)), 3);
    EXPECT_EQ(check(0), 4);
    EXPECT_EQ(check(1), 5);
    EXPECT_EQ(check(2), 6);
}

TEST_F(GroundPointTest, PointsWithoutACodeAreRejected)
{
    const CheckPoint odd("K", *wgs84, 0, 0, 0, 0, 0, 0, static_cast<Type>(3));
    EXPECT_EQ(messageOf([&] { GroundPoint::typeToInt(odd); }), "Unhandled case.");
    const ControlPoint alsoOdd("C", *wgs84, 0, 0, 0, 0, 0, 0, static_cast<Type>(3));
    EXPECT_EQ(messageOf([&] { GroundPoint::typeToInt(alsoOdd); }), "Unhandled case.");
    const GroundPoint plain("G", *wgs84, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(messageOf([&] { GroundPoint::typeToInt(plain); }), "Unknown ground point type.");
}

TEST_F(GroundPointTest, NewPointsAreActiveAndCompareById)
{
    TiePoint a("A", *wgs84, 1, 2, 3, 0.1, 0.2, 0.3);
    const TiePoint otherA("A", *mercator, 9, 9, 9, 0, 0, 0);
    const TiePoint b("B", *wgs84, 1, 2, 3, 0.1, 0.2, 0.3);
    EXPECT_TRUE(a.isActive());
    EXPECT_EQ(a[0], 1.0);
    EXPECT_EQ(a[2], 3.0);
    EXPECT_EQ(a.stdDev(), (std::vector<double>{0.1, 0.2, 0.3}));
    EXPECT_TRUE(a == otherA);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a < b);
    EXPECT_FALSE(b < a);

    a.set(4, 5, 6);
    a[1] = 7;
    a.setStdDev(1, 1, 2);
    EXPECT_EQ(a.x(), 4.0);
    EXPECT_EQ(a.y(), 7.0);
    EXPECT_EQ(a.z(), 6.0);
    EXPECT_EQ(a.stdDev(), (std::vector<double>{1, 1, 2}));
}

TEST_F(GroundPointTest, CloneKeepsClassIdValuesAndType)
{
    ImagePoint measurement{"K1", 10.5, 20.25};
    CheckPoint check("K1", *wgs84, 11.0, 47.0, 500.0, 0.01, 0.02, 0.05, SurveyedGroundPoint::Height);
    check.setActive(false);
    check.addImagePoint(&measurement);

    std::unique_ptr<GroundPoint> clone(GroundPoint::clone(check, nullptr));

    auto* checkClone = dynamic_cast<CheckPoint*>(clone.get());
    ASSERT_NE(checkClone, nullptr);
    EXPECT_EQ(checkClone->type(), SurveyedGroundPoint::Height);
    EXPECT_EQ(clone->id(), "K1");
    EXPECT_EQ(clone->x(), 11.0);
    EXPECT_EQ(clone->y(), 47.0);
    EXPECT_EQ(clone->z(), 500.0);
    EXPECT_EQ(clone->stdDev(), check.stdDev());
    EXPECT_EQ(&clone->coordSys(), wgs84.get());
    // A clone starts afresh: active and without measurements.
    EXPECT_TRUE(clone->isActive());
    EXPECT_TRUE(clone->imagePoints().empty());

    const ControlPoint control("C1", *wgs84, 1, 2, 3, 0, 0, 0, SurveyedGroundPoint::Planimetric);
    std::unique_ptr<GroundPoint> controlClone(GroundPoint::clone(control, nullptr));
    ASSERT_NE(dynamic_cast<ControlPoint*>(controlClone.get()), nullptr);
    EXPECT_EQ(GroundPoint::typeToInt(*controlClone), 1);

    const TiePoint tie("T1", *wgs84, 1, 2, 3, 0, 0, 0);
    std::unique_ptr<GroundPoint> tieClone(GroundPoint::clone(tie, nullptr));
    EXPECT_NE(dynamic_cast<TiePoint*>(tieClone.get()), nullptr);
}

TEST_F(GroundPointTest, CloneIntoAnotherSystemTransformsTheCoordinates)
{
    const ControlPoint point("C7", *wgs84, 10.0, 50.0, 100.0, 0.1, 0.1, 0.2, SurveyedGroundPoint::Full);

    std::unique_ptr<GroundPoint> clone(GroundPoint::clone(point, mercator.get()));

    ASSERT_NE(dynamic_cast<ControlPoint*>(clone.get()), nullptr);
    EXPECT_EQ(&clone->coordSys(), mercator.get());
    // Mercator on the WGS84 ellipsoid, central meridian 0.
    EXPECT_NEAR(clone->x(), 1113194.908, 1e-3);
    EXPECT_NEAR(clone->y(), 6413524.594, 1e-3);
    EXPECT_NEAR(clone->z(), 100.0, 1e-6);
    EXPECT_EQ(clone->stdDev(), point.stdDev());
    // The original is left alone.
    EXPECT_EQ(point.x(), 10.0);
    EXPECT_EQ(&point.coordSys(), wgs84.get());

    std::unique_ptr<GroundPoint> back(GroundPoint::clone(*clone, wgs84.get()));
    EXPECT_NEAR(back->x(), 10.0, 1e-9);
    EXPECT_NEAR(back->y(), 50.0, 1e-9);
    EXPECT_NEAR(back->z(), 100.0, 1e-6);
}

TEST_F(GroundPointTest, CloneFailures)
{
    // A latitude beyond the pole has no Mercator coordinates.
    const TiePoint outside("P", *wgs84, 0.0, 100.0, 0.0, 0, 0, 0);
    EXPECT_EQ(messageOf([&] { delete GroundPoint::clone(outside, mercator.get()); }),
              "Coordinate system transformation failed.");

    const GroundPoint plain("G", *wgs84, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(messageOf([&] { delete GroundPoint::clone(plain, nullptr); }), "Unknown subclass in GroundPoint::clone.");
}
