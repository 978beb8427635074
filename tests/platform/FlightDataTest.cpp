#include "TestSupport.h"

#include <platform/flightdata/FlightDataFactory.h>
#include <platform/flightdata/Utility.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

using testsupport::thrownMessage;

namespace {

const QByteArray sFlightData = R"(<?xml version="1.0" encoding="UTF-8"?>
<FlightData version="1.0">
    <Session id="S260514_0830">
        <Sensor generation="ZELM8" head="QX310" serial="2004" type="ZEL" cameraFile="Camera.xml"/>
        <FlightStart utc="20260514083000" gpsWeek="2418" gpsSeconds="376218.000000"/>
        <FirstTakeTime utc="20260514083030" gpsWeek="2418" gpsSeconds="376248.000000"/>
        <Line number="1" label="L001">
            <Take label="DK001" type="dark" lines="200" lineRate="800.000" utc="20260514083028" gpsWeek="2418" gpsSeconds="376246.750000">
                <Band name="PANN00A" analogChannel="0" integrationTimeMs="1.250" tdiStages="1" info="DK001PANN00A.info"/>
            </Take>
            <Take label="L001" type="image" lines="8000" lineRate="800.000" utc="20260514083030" gpsWeek="2418" gpsSeconds="376248.000000">
                <Band name="PANN00A" analogChannel="0" integrationTimeMs="1.250" tdiStages="1" info="L001PANN00A.info"/>
                <Band name="REDN00A" analogChannel="5" integrationTimeMs="2.500" tdiStages="2" info="L001REDN00A.info"/>
            </Take>
        </Line>
        <Line number="2" label="L002">
            <Take label="L002" type="image" lines="8000" lineRate="800.000" utc="20260514083233" gpsWeek="2418" gpsSeconds="376371.000000"/>
        </Line>
    </Session>
</FlightData>
)";

std::shared_ptr<flightdata::SessionInterface> load(QTemporaryDir& dir, const QByteArray& content)
{
    testsupport::writeFile(dir, QStringLiteral("FlightData.xml"), content);
    return flightdata::FlightDataFactory::instance().load(dir.path());
}

} // namespace

TEST(FlightData, ReadsSensorLinesTakesAndBands)
{
    QTemporaryDir dir;
    const auto session = load(dir, sFlightData);
    EXPECT_EQ(session->id(), "S260514_0830");
    EXPECT_EQ(session->sensorHead(), "QX310");
    EXPECT_EQ(session->sensorSerial(), "2004");
    EXPECT_EQ(session->cameraFile(), dir.filePath(QStringLiteral("Camera.xml")).toStdString());
    EXPECT_EQ(session->flightStart().gpsWeek, 2418);
    EXPECT_DOUBLE_EQ(session->firstTakeTime().gpsSeconds, 376248.0);
    EXPECT_FALSE(flightdata::Utility::isZelM9(*session));
    EXPECT_EQ(flightdata::Utility::firstTake(*session), "20260514083030");

    // The image take of a line, not its dark take.
    const flightdata::ZelTake& take = flightdata::Utility::takeFromLineNumber(*session, 1);
    EXPECT_EQ(take.label(), "L001");
    EXPECT_EQ(take.lines(), 8000);
    EXPECT_NEAR(take.getBandForAnalogChannel(5).getIntegrationTime(), 0.0025, 1e-12);
    EXPECT_EQ(take.getBandForAnalogChannel(5).tdiStages(), 2);
    EXPECT_EQ(take.bandByName("PANN00A")->analogChannel(), 0);
    EXPECT_EQ(take.bandByName("NIRN00A"), nullptr);
    EXPECT_EQ(thrownMessage([&] { take.getBandForAnalogChannel(3); }), "No band on analog channel 3 in take L001");

    const auto dark = flightdata::Utility::darkTakes(*session, 1);
    ASSERT_EQ(dark.size(), 1u);
    EXPECT_EQ(dark.front()->label(), "DK001");
    EXPECT_TRUE(flightdata::Utility::darkTakes(*session, 2).empty());
    EXPECT_EQ(thrownMessage([&] { flightdata::Utility::takeFromLineNumber(*session, 9); }),
              "No take for line number 9 in the flight data");
}

TEST(FlightData, NewerSensorGeneration)
{
    QTemporaryDir dir;
    QByteArray content = sFlightData;
    content.replace("ZELM8", "ZELM9");
    EXPECT_TRUE(flightdata::Utility::isZelM9(*load(dir, content)));
}

TEST(FlightData, BadFilesNameTheFileAndTheProblem)
{
    QTemporaryDir dir;
    const std::string path = dir.filePath(QStringLiteral("FlightData.xml")).toStdString();
    EXPECT_EQ(thrownMessage([&] { flightdata::FlightDataFactory::instance().load(dir.path()); }),
              "Cannot open flight data file: " + path);
    EXPECT_EQ(thrownMessage([&] { load(dir, "<FlightData>"); }).rfind("Cannot parse flight data file: " + path + ": ", 0), 0u);

    QByteArray noSerial = sFlightData;
    noSerial.replace(" serial=\"2004\"", "");
    EXPECT_EQ(thrownMessage([&] { load(dir, noSerial); }),
              "Invalid flight data file " + path + ": element <Sensor> has no attribute \"serial\"");
    QByteArray badTime = sFlightData;
    badTime.replace("utc=\"20260514083000\"", "utc=\"yesterday\"");
    EXPECT_EQ(thrownMessage([&] { load(dir, badTime); }),
              "Invalid flight data file " + path + ": attribute \"utc\" of <FlightStart> is not a time: yesterday");
    QByteArray badType = sFlightData;
    badType.replace("type=\"dark\"", "type=\"grey\"");
    EXPECT_EQ(thrownMessage([&] { load(dir, badType); }),
              "Invalid flight data file " + path + ": take type \"grey\" is neither \"image\" nor \"dark\"");
    QByteArray version = sFlightData;
    version.replace("<FlightData version=\"1.0\"", "<FlightData version=\"2.0\"");
    EXPECT_EQ(thrownMessage([&] { load(dir, version); }), "Invalid flight data file " + path + ": unknown version \"2.0\"");
}
