// The elevation model that the flight simulator writes, read into a grid of
// an LSR system, against the simulator's own terrain.

#include <platform/dsm/ProjectedElevationSourceFactory.h>
#include <platform/geo/coordSysFactory.h>

#include <flightsim/FlightSimulator.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/Terrain.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cmath>
#include <numbers>

TEST(SimulatedTerrain, TheSimulatorsElevationModelReadsBackAsItsTerrain)
{
    QTemporaryDir dir;
    const QString session = dir.path() + QStringLiteral("/session");
    flightsim::SimulationConfig config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
    config.lineAzimuthDeg = 60.0;
    flightsim::FlightSimulator(config).run(session);

    dsm::ProjectedElevationSourceFactory factory;
    factory.setElevationModel(dsm::ProjectedElevationSourceFactory::findElevationModel(session.toStdString() + "/dem"));
    ASSERT_EQ(factory.elevationModel(), session.toStdString() + "/dem/terrain.tif");
    // A grid finer than the model's 50 m, so that what remains is the
    // model's own interpolation of the sine waves (a few centimetres).
    factory.setGridSpacing(5.0);
    const auto& systems = geo::coordSysFactory::getInstance();
    const auto lsr = systems.createLSR84({config.centerLonDeg, config.centerLatDeg, 0.0});
    const auto wgs84 = systems.createGEO84();
    const auto grid = factory.getAvailProjectedSource(*lsr, -1200.0, -1000.0, 1200.0, 1000.0);
    EXPECT_DOUBLE_EQ(grid->coveredFraction(), 1.0);

    const flightsim::LocalPlane plane(config.centerLatDeg, config.centerLonDeg, config.lineAzimuthDeg);
    const flightsim::Terrain terrain(config.terrainHeightM, config.terrainReliefM, config.seed);
    constexpr double sDegToRad = std::numbers::pi / 180.0;
    double largest = 0.0;
    for (double x = -1200.0; x <= 1200.0; x += 37.3) {
        for (double y = -1000.0; y <= 1000.0; y += 41.1) {
            geo::XYZPoint point(x, y, grid->height(x, y));
            lsr->transform(*wgs84, point);
            double planeX = 0.0, planeY = 0.0;
            plane.toPlane(point.y * sDegToRad, point.x * sDegToRad, planeX, planeY);
            largest = std::max(largest, std::abs(point.z - terrain.heightAt(planeX, planeY)));
        }
    }
    EXPECT_LT(largest, 0.05);
}
