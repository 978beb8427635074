#include "TestSupport.h"

#include <platform/flightdata/FlightDataFactory.h>
#include <platform/flightdata/Utility.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <utility>
#include <vector>

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
    // A file that is there but refused is an InvalidFileError, so that a
    // caller can tell it from a missing file.
    using testsupport::invalidFileMessage;
    EXPECT_EQ(invalidFileMessage([&] { load(dir, "<FlightData>"); }).rfind("Cannot parse flight data file: " + path + ": ", 0), 0u);
    EXPECT_EQ(invalidFileMessage([&] { load(dir, testsupport::nestedXml(100000, "FlightData")); }),
              path + ": XML nested deeper than 256 elements");

    // Each case breaks one thing.
    const std::vector<std::pair<std::pair<QByteArray, QByteArray>, std::string>> cases = {
        {{" serial=\"2004\"", ""}, "element <Sensor> has no attribute \"serial\""},
        {{"serial=\"2004\"", "serial=\" \""}, "attribute \"serial\" of <Sensor> is empty"},
        {{"utc=\"20260514083000\"", "utc=\"yesterday\""}, "attribute \"utc\" of <FlightStart> is not a time: yesterday"},
        {{"type=\"dark\"", "type=\"grey\""}, "take type \"grey\" is neither \"image\" nor \"dark\""},
        {{"<FlightData version=\"1.0\"", "<FlightData version=\"2.0\""}, "unknown version \"2.0\""},
        {{"id=\"S260514_0830\"", "id=\"../up\""}, "attribute \"id\" of <Session> is ../up; it must be a folder name"},
        {{"gpsWeek=\"2418\" gpsSeconds=\"376218.000000\"", "gpsWeek=\"-1\" gpsSeconds=\"376218.000000\""},
         "attribute \"gpsWeek\" of <FlightStart> is -1; it must be 0 or more"},
        {{"gpsSeconds=\"376218.000000\"", "gpsSeconds=\"604800\""},
         "attribute \"gpsSeconds\" of <FlightStart> is 604800; it must be at least 0 and below 604800 (seconds of a GPS week)"},
        {{"gpsSeconds=\"376218.000000\"", "gpsSeconds=\"inf\""}, "attribute \"gpsSeconds\" of <FlightStart> is not a number: inf"},
        {{"number=\"2\"", "number=\"0\""}, "attribute \"number\" of <Line> is 0; it must be 1 or more"},
        {{"lines=\"200\"", "lines=\"1e300\""}, "attribute \"lines\" of <Take> is not an integer: 1e300"},
        {{"lines=\"200\"", "lines=\"-5\""}, "attribute \"lines\" of <Take> is -5; it must be 0 or more"},
        {{"lineRate=\"800.000\"", "lineRate=\"0\""}, "attribute \"lineRate\" of <Take> is 0; it must be above 0"},
        {{"analogChannel=\"5\"", "analogChannel=\"-1\""}, "attribute \"analogChannel\" of <Band> is -1; it must be 0 or more"},
        {{"integrationTimeMs=\"2.500\"", "integrationTimeMs=\"-2.5\""},
         "attribute \"integrationTimeMs\" of <Band> is -2.5; it must be above 0"},
        {{"tdiStages=\"2\"", "tdiStages=\"two\""}, "attribute \"tdiStages\" of <Band> is not an integer: two"},
        {{"type=\"dark\"", "type=\"" + QByteArray(1000, 'd') + "\""},
         "take type \"" + std::string(200, 'd') + "...\" is neither \"image\" nor \"dark\""},
    };
    for (const auto& [edit, problem] : cases) {
        SCOPED_TRACE(problem);
        QByteArray content = sFlightData;
        ASSERT_NE(content.indexOf(edit.first), -1);
        content.replace(edit.first, edit.second);
        EXPECT_EQ(invalidFileMessage([&] { load(dir, content); }), "Invalid flight data file " + path + ": " + problem);
    }
}
