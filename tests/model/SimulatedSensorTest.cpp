// The camera description and the flight data of a simulated flight read back
// into what the simulator was told to fly.

#include "TestSupport.h"

#include <datamodel/model/Band.h>
#include <datamodel/model/Sensor.h>

#include <platform/flightdata/FlightDataFactory.h>
#include <platform/flightdata/Utility.h>

#include <flightsim/CameraModel.h>
#include <flightsim/FlightSimulator.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cmath>
#include <utility>
#include <vector>

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
    // The sensor model sees every pixel where the simulator's camera does.
    sensor::IdentitySensorModel model = sensor.sensorModel();
    const flightsim::CameraModel simulated(config);
    for (const Sensor::BandGeometry& band : sensor.bands()) {
        SCOPED_TRACE(band.name);
        // The band code's digits are the look angle in whole degrees.
        EXPECT_NEAR(band.lookAngleDeg, datamodel::Band::lookAngleFromName(band.name), 0.05);
        EXPECT_NEAR(std::atan(band.xMm / sensor.focalLengthMm()) * 180.0 / M_PI, band.lookAngleDeg, 1e-6);
        EXPECT_EQ(second.getBandForAnalogChannel(band.analogChannel).name(), band.name);
        model.selectBand(band.name);
        const flightsim::BandSpec& truth = simulated.bands()[std::size_t(band.analogChannel)];
        EXPECT_NEAR(model.lookAngle(), truth.lookAngleRad, 2e-8); // x is written to 1e-6 mm
        for (const double pixel : {0.0, 0.5 * (config.ccdPixels - 1), config.ccdPixels - 1.0})
            EXPECT_NEAR(model.acrossAngle(pixel), simulated.acrossAngleRad(truth, pixel), 2e-8) << pixel;
    }
    EXPECT_EQ(sensor.band("NOPE"), nullptr);
    EXPECT_EQ(testsupport::thrownMessage([] { Sensor("12", "ZEL").sensorModel(); }),
              "No camera description for sensor 12");
}

TEST(SimulatedSensor, BadCameraFilesNameTheFileAndTheProblem)
{
    using testsupport::thrownMessage;
    QTemporaryDir dir;
    const std::string missing = dir.filePath(QStringLiteral("none.xml")).toStdString();
    EXPECT_EQ(thrownMessage([&] { Sensor::fromCameraFile(missing); }), "Cannot open camera file: " + missing);
    EXPECT_EQ(thrownMessage([] { Sensor("12a", "ZEL").idAsInt(); }), "The sensor ID for this camera is not numeric! (12a)");

    const QByteArray good = R"(<Camera version="1.0"><Serial>7</Serial><Type>ZEL</Type>
        <CalibrationVersion>1</CalibrationVersion><FocalLength>62.5</FocalLength><PixelSize>0.0065</PixelSize>
        <PixelsPerLine>12000</PixelsPerLine><Misalignment omega="0.001" phi="0" kappa="0"/>
        <NominalZOffset>0.35</NominalZOffset><Bands>
        <Band name="PANF28A" analogChannel="0" tdiStages="1" x="33.2" y="-38.9" lookAngleDeg="28"/></Bands></Camera>)";
    const std::string path = dir.filePath(QStringLiteral("Camera.xml")).toStdString();
    auto read = [&](const QByteArray& content) {
        testsupport::writeFile(dir, QStringLiteral("Camera.xml"), content);
        return Sensor::fromCameraFile(path);
    };
    EXPECT_EQ(read(good).bands().front().lookAngleDeg, 28.0);

    // Each case breaks one thing; every refusal is an InvalidFileError naming the file.
    const std::vector<std::pair<std::pair<QByteArray, QByteArray>, std::string>> cases = {
        {{"<CalibrationVersion>1<", "<CalibrationVersion>-1<"}, "<CalibrationVersion> is -1; it must be 0 or more"},
        {{"<CalibrationVersion>1<", "<CalibrationVersion>v3<"}, "<CalibrationVersion> is not a whole number: v3"},
        {{"<CalibrationVersion>1<", "<CalibrationVersion>1.5<"}, "<CalibrationVersion> is not a whole number: 1.5"},
        {{"<Serial>7</Serial>", ""}, "no <Serial>"},
        {{"<Serial>7<", "<Serial> <"}, "<Serial> is empty"},
        {{"<Serial>7<", "<Serial>ABC<"}, "<Serial> is not a decimal number: ABC"},
        {{"<FocalLength>62.5<", "<FocalLength>0<"}, "<FocalLength> is 0; it must be above 0"},
        {{"<PixelSize>0.0065<", "<PixelSize>nan<"}, "<PixelSize> is not a number: nan"},
        {{"<PixelsPerLine>12000<", "<PixelsPerLine>-3<"}, "<PixelsPerLine> is -3; it must be 1 or more"},
        {{"omega=\"0.001\"", "omega=\"4\""}, "<Misalignment> omega is 4; it must be within -pi to pi radians"},
        {{"lookAngleDeg=\"28\"", "lookAngleDeg=\"95\""}, "band PANF28A lookAngleDeg is 95; it must be between -90 and 90 degrees"},
        {{"tdiStages=\"1\"", "tdiStages=\"0\""}, "band PANF28A tdiStages is 0; it must be 1 or more"},
        {{"</Bands>", "<Band name=\"PANF28A\" analogChannel=\"1\" x=\"0\" y=\"0\" lookAngleDeg=\"0\"/></Bands>"},
         "band PANF28A is described twice"},
        {{"<Bands>", "<Nothing>"}, "no <Band> in <Bands>"},
        {{"version=\"1.0\"", "version=\"2\""}, "unknown version \"2\""},
        {{"<Camera ", "<Kamera "}, "the root element is <Kamera>, not <Camera>"},
    };
    for (const auto& [edit, problem] : cases) {
        SCOPED_TRACE(problem);
        QByteArray content = good;
        content.replace(edit.first, edit.second);
        if (edit.first == "<Camera ")
            content.replace("</Camera>", "</Kamera>");
        if (edit.first == "<Bands>")
            content.replace("</Bands>", "</Nothing>");
        EXPECT_EQ(testsupport::invalidFileMessage([&] { read(content); }), "Invalid camera file " + path + ": " + problem);
    }
    EXPECT_EQ(testsupport::invalidFileMessage([&] { read("garbage"); }).rfind("Cannot parse camera file: " + path + ": ", 0), 0u);
    EXPECT_EQ(testsupport::invalidFileMessage([&] { read(testsupport::nestedXml(257, "Camera")); }),
              path + ": XML nested deeper than 256 elements");
    // A value from the file is quoted up to 200 characters.
    EXPECT_EQ(testsupport::invalidFileMessage([&] { read(QByteArray(good).replace("<Serial>7<", "<Serial>" + QByteArray(5000, 'x') + "<")); }),
              "Invalid camera file " + path + ": <Serial> is not a decimal number: " + std::string(200, 'x') + "...");
}
