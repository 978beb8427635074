// The camera description and the flight data of a simulated flight read back
// into what the simulator was told to fly.

#include "TestSupport.h"

#include <datamodel/model/Band.h>
#include <datamodel/model/Sensor.h>

#include <platform/flightdata/FlightDataFactory.h>
#include <platform/flightdata/Utility.h>

#include <flightsim/FlightSimulator.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cmath>

using datamodel::Sensor;

TEST(SimulatedSensor, CameraFileAndFlightDataMatchTheSimulation)
{
    QTemporaryDir dir;
    const QString sessionPath = dir.path() + QStringLiteral("/session");
    flightsim::SimulationConfig config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
    config.bands = flightsim::SimulationConfig::defaultBands();
    config.takes = 2;
    config.linesPerTake = 300;
    config.calibrationVersion = 4;
    flightsim::FlightSimulator(config).run(sessionPath);

    const auto flight = flightdata::FlightDataFactory::instance().load(sessionPath + QStringLiteral("/mm"));
    EXPECT_EQ(flight->sensorSerial(), config.sensorSerial.toStdString());
    EXPECT_EQ(flightdata::Utility::isZelM9(*flight), config.sensorGeneration == QLatin1String("ZELM9"));
    const flightdata::ZelTake& second = flightdata::Utility::takeFromLineNumber(*flight, 2);
    EXPECT_EQ(second.lines(), 300);
    EXPECT_EQ(second.bands().size(), std::size_t(config.bands.size()));
    EXPECT_NEAR(second.bands().front().getIntegrationTime(), config.integrationTimeUs() * 1e-6, 1e-9);

    const Sensor sensor = Sensor::fromCameraFile(flight->cameraFile());
    EXPECT_TRUE(sensor.hasCalibration());
    EXPECT_EQ(sensor.id(), config.sensorSerial.toStdString());
    EXPECT_EQ(sensor.idAsInt(), config.sensorSerial.toUInt());
    EXPECT_EQ(sensor.calibrationVersion(), 4);
    EXPECT_DOUBLE_EQ(sensor.focalLengthMm(), config.focalLengthMm);
    EXPECT_NEAR(sensor.misalignment().x, config.misalignmentDeg[0] * M_PI / 180.0, 1e-12);
    EXPECT_NEAR(sensor.misalignment().z, config.misalignmentDeg[2] * M_PI / 180.0, 1e-12);
    EXPECT_NEAR(sensor.nominalZOffsetM(), config.nominalZOffsetM, 1e-6);
    ASSERT_EQ(sensor.bands().size(), std::size_t(config.bands.size()));
    for (const Sensor::BandGeometry& band : sensor.bands()) {
        SCOPED_TRACE(band.name);
        // The band code's digits are the look angle in whole degrees.
        EXPECT_NEAR(band.lookAngleDeg, datamodel::Band::lookAngleFromName(band.name), 0.05);
        EXPECT_NEAR(std::atan(band.xMm / sensor.focalLengthMm()) * 180.0 / M_PI, band.lookAngleDeg, 1e-6);
        EXPECT_EQ(second.getBandForAnalogChannel(band.analogChannel).name(), band.name);
    }
    EXPECT_EQ(sensor.band("NOPE"), nullptr);
}

TEST(SimulatedSensor, BadCameraFiles)
{
    using testsupport::thrownMessage;
    QTemporaryDir dir;
    const std::string missing = dir.filePath(QStringLiteral("none.xml")).toStdString();
    EXPECT_EQ(thrownMessage([&] { Sensor::fromCameraFile(missing); }), "Cannot open camera file: " + missing);
    const std::string noFocal = testsupport::writeFile(
        dir, QStringLiteral("c.xml"),
        "<Camera version=\"1.0\"><Serial>7</Serial><Type>ZEL</Type><CalibrationVersion>1</CalibrationVersion></Camera>");
    EXPECT_EQ(thrownMessage([&] { Sensor::fromCameraFile(noFocal); }), "Invalid camera file " + noFocal + ": no <FocalLength>");
    EXPECT_EQ(thrownMessage([] { Sensor("12a", "ZEL").idAsInt(); }), "The sensor ID for this camera is not numeric! (12a)");
}
