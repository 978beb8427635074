#include "TestSupport.h"

#include <datamodel/model/InfoFile.h>

#include <gtest/gtest.h>

#include <QDateTime>
#include <QTemporaryDir>

#include <ctime>
#include <initializer_list>
#include <optional>
#include <stdexcept>

using datamodel::InfoFile;
using testsupport::thrownMessage;
using testsupport::writeFile;

namespace {

// Times in .info files are UTC whatever the machine's zone; a zone with
// daylight saving makes a local-time slip visible.
class InfoFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        zone.emplace("TZ", QByteArray("Europe/Berlin"));
        tzset();
    }
    void TearDown() override
    {
        zone.reset();
        tzset();
    }

    std::string write(const QString& name, const QByteArray& content) { return writeFile(dir, name, content); }
    InfoFile parse(const std::string& path) { return InfoFile(path, InfoFile::STRIPNAMEREGEX); }

    std::optional<testsupport::ScopedEnv> zone;
    QTemporaryDir dir;
};

QDateTime utc(int y, int mo, int d, int h, int mi, int s)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s), Qt::UTC);
}

QByteArray withStart(const QByteArray& startBody)
{
    return "<info><sensor_serialnumber>1</sensor_serialnumber><start>" + startBody + "</start></info>";
}

} // namespace

TEST_F(InfoFileTest, ReadsEveryFieldOfACompleteFile)
{
    const std::string path = write("L12_PANF28A.info", testsupport::fullInfoXml());
    const InfoFile info = parse(path);

    EXPECT_EQ(info.infoFileName(), path);
    EXPECT_EQ(info.sensorId(), "2004");
    EXPECT_EQ(info.sensorType(), "ZEL");
    EXPECT_EQ(info.bandId(), "PANF28A");
    EXPECT_EQ(info.lineNumber(), 12);
    EXPECT_EQ(info.lineLabel(), "L12");
    EXPECT_EQ(info.ctFileName(), "x.ct");
    EXPECT_EQ(info.pixelFilename(), "x.lri");
    EXPECT_EQ(info.stripName(), "L12");

    EXPECT_DOUBLE_EQ(info.startPos().x, -(12.0 + 30.0 / 60.0 + 15.5 / 3600.0));
    EXPECT_DOUBLE_EQ(info.startPos().y, 47.0 + 10.0 / 60.0);
    EXPECT_DOUBLE_EQ(info.stopPos().x, -12.0);
    EXPECT_DOUBLE_EQ(info.stopPos().y, 47.0 + 40.0 / 60.0 + 30.0 / 3600.0);
    EXPECT_DOUBLE_EQ(info.centerPoint().x, (info.startPos().x + info.stopPos().x) / 2.0);
    EXPECT_DOUBLE_EQ(info.centerPoint().y, (info.startPos().y + info.stopPos().y) / 2.0);
    // The altitudes in the file are not used: the heights stay 0.
    EXPECT_EQ(info.meanFlyingHeight(), 0.0f);

    EXPECT_DOUBLE_EQ(info.integrationTime().value(), 0.0052);
    EXPECT_TRUE(info.hasIntegrationTimeSet());
}

TEST_F(InfoFileTest, TimesAreUtc)
{
    const InfoFile info = parse(write("L12_PANF28A.info", testsupport::fullInfoXml()));

    EXPECT_EQ(info.lineStart(), utc(2009, 3, 7, 10, 4, 31));
    EXPECT_EQ(info.lineStop(), utc(2009, 3, 7, 10, 9, 1));
    EXPECT_EQ(info.flightStart(), utc(2009, 3, 7, 9, 0, 0));
    EXPECT_EQ(info.lineStart().timeSpec(), Qt::UTC);
    EXPECT_EQ(info.lineStart().toSecsSinceEpoch(), 1236420271);
}

TEST_F(InfoFileTest, TimeInsideALocalDaylightSavingGapStillParses)
{
    // 02:30 on 29 March 2009 does not exist in Central European local time.
    const InfoFile info = parse(write(
        "L1_PANF28A.info", "<i><flight_start><time>29 March 2009, 02:30:00</time></flight_start></i>"));
    EXPECT_EQ(info.flightStart(), utc(2009, 3, 29, 2, 30, 0));
}

TEST_F(InfoFileTest, LastTimeUnderFlightStartWins)
{
    const InfoFile info = parse(write("L1_PANF28A.info",
                                      "<i><flight_start><time>7 March 2009, 09:00:00</time>"
                                      "<time>8 March 2009, 11:30:15</time></flight_start></i>"));
    EXPECT_EQ(info.flightStart(), utc(2009, 3, 8, 11, 30, 15));
}

TEST_F(InfoFileTest, AbsentElementsKeepTheirDefaults)
{
    const InfoFile info = parse(write("L1_PANF28A.info", "<nothing_here/>"));

    EXPECT_EQ(info.sensorId(), "");
    EXPECT_EQ(info.sensorType(), "");
    EXPECT_EQ(info.bandId(), "");
    EXPECT_EQ(info.lineLabel(), "");
    EXPECT_EQ(info.lineNumber(), 0);
    EXPECT_EQ(info.ctFileName(), "");
    EXPECT_EQ(info.pixelFilename(), "");
    EXPECT_EQ(info.startPos().x, 0.0);
    EXPECT_EQ(info.startPos().y, 0.0);
    EXPECT_EQ(info.stopPos().x, 0.0);
    EXPECT_EQ(info.stopPos().y, 0.0);
    EXPECT_TRUE(info.lineStart().isNull());
    EXPECT_TRUE(info.lineStop().isNull());
    EXPECT_TRUE(info.flightStart().isNull());
    EXPECT_EQ(info.integrationTime().value(), -1.0);
    EXPECT_FALSE(info.hasIntegrationTimeSet());
    EXPECT_EQ(info.stripName(), "L1");
}

TEST_F(InfoFileTest, ZeroIntegrationTimeCountsAsNotSet)
{
    const InfoFile info = parse(write("L1_PANF28A.info", "<i><int_time>0</int_time></i>"));
    EXPECT_FALSE(info.hasIntegrationTimeSet());
}

TEST_F(InfoFileTest, OnlyTheFirstElementOfAKeyIsUsed)
{
    const InfoFile info = parse(write("L1_PANF28A.info",
                                      "<i><group><sensor_type>ZEL</sensor_type></group>"
                                      "<sensor_type>OTHER</sensor_type>"
                                      "<line_number>abc</line_number></i>"));
    EXPECT_EQ(info.sensorType(), "ZEL");
    EXPECT_EQ(info.lineNumber(), 0) << "a line number that does not convert gives 0";
}

TEST_F(InfoFileTest, MissingMalformedAndTooDeepFilesAreReported)
{
    const std::string missing = dir.filePath("L1_PANF28A.info").toStdString();
    EXPECT_EQ(thrownMessage([&] { parse(missing); }), "Cannot open .info file: " + missing);

    const std::string malformed = write("L2_PANF28A.info", "<info><sensor_type>ZEL</info>");
    EXPECT_EQ(thrownMessage([&] { parse(malformed); }), "Cannot open parse XLM .info file: " + malformed);

    // Refused before a DOM is built; 256 levels still parse.
    const std::string deep = write("L3_PANF28A.info", testsupport::nestedXml(100000, "a"));
    EXPECT_EQ(testsupport::invalidFileMessage([&] { parse(deep); }), deep + ": XML nested deeper than 256 elements");
    const std::string deepest =
        write("L4_PANF28A.info", testsupport::nestedXml(255, "a", "<sensor_type>ZEL</sensor_type>"));
    EXPECT_EQ(parse(deepest).sensorType(), "ZEL");
}

TEST_F(InfoFileTest, StartAndStopPositionFailuresHaveTheirOwnMessages)
{
    const QByteArray goodTime = "<time>7 March 2009, 10:04:31</time>";
    const QByteArray goodPos = "<longitude>11:00:00</longitude><latitude>47:00:00</latitude>";

    const std::string noStartLat = write("A_PANF28A.info", withStart(goodTime + "<longitude>11:00:00</longitude>"));
    EXPECT_EQ(thrownMessage([&] { parse(noStartLat); }), "Can't find lat/lon in info file: " + noStartLat);

    const std::string badStartLon = write(
        "B_PANF28A.info", withStart(goodTime + "<longitude>east</longitude><latitude>47:00:00</latitude>"));
    EXPECT_EQ(thrownMessage([&] { parse(badStartLon); }), "Can't find lat/lon in info file: " + badStartLon);

    const std::string badStopLat = write("C_PANF28A.info",
                                         "<i><start>" + goodTime + goodPos + "</start><stop>" + goodTime
                                             + "<longitude>11:00:00</longitude><latitude>north</latitude></stop></i>");
    EXPECT_EQ(thrownMessage([&] { parse(badStopLat); }), "Can't parse lat/lon in info file: " + badStopLat);

    const std::string noStopLon = write("D_PANF28A.info",
                                        "<i><start>" + goodTime + goodPos + "</start><stop>" + goodTime
                                            + "<latitude>47:00:00</latitude></stop></i>");
    EXPECT_EQ(thrownMessage([&] { parse(noStopLon); }), "Can't parse lat/lon in info file: " + noStopLon);
}

TEST_F(InfoFileTest, UnparsableTimeNamesTheText)
{
    const QByteArray pos = "<longitude>11:00:00</longitude><latitude>47:00:00</latitude>";

    const std::string badStart = write("A_PANF28A.info", withStart("<time>2009-03-07 10:04:31</time>" + pos));
    EXPECT_EQ(thrownMessage([&] { parse(badStart); }), "Cannot parse time: 2009-03-07 10:04:31");

    // A start element without a time has nothing to parse: the text is empty.
    const std::string noTime = write("B_PANF28A.info", withStart(pos));
    EXPECT_EQ(thrownMessage([&] { parse(noTime); }), "Cannot parse time: ");

    // The time is read before the position.
    const std::string both = write("C_PANF28A.info", withStart("<time>soon</time>"));
    EXPECT_EQ(thrownMessage([&] { parse(both); }), "Cannot parse time: soon");

    const std::string badFlightStart = write(
        "D_PANF28A.info", "<i><flight_start><time>31 February 2009, 10:00:00</time></flight_start></i>");
    EXPECT_EQ(thrownMessage([&] { parse(badFlightStart); }), "Cannot parse time: 31 February 2009, 10:00:00");

    // Month names are English; a long text is cut in the message.
    const std::string germanMonth = write(
        "E_PANF28A.info", "<i><flight_start><time>7 März 2009, 10:00:00</time></flight_start></i>");
    EXPECT_EQ(thrownMessage([&] { parse(germanMonth); }), "Cannot parse time: 7 März 2009, 10:00:00");
    const std::string longText = write("F_PANF28A.info", "<i><flight_start><time>7 März " + QByteArray(5000, '9')
                                                             + "</time></flight_start></i>");
    EXPECT_EQ(thrownMessage([&] { parse(longText); }), "Cannot parse time: 7 März " + std::string(193, '9') + "...");
}

TEST_F(InfoFileTest, StripNameIsTheShortestPrefixBeforeABandCode)
{
    EXPECT_EQ(parse(write("L12_PANF28A.info", "<i/>")).stripName(), "L12");
    EXPECT_EQ(parse(write("LINE_7PANN00B.info", "<i/>")).stripName(), "LINE_7");
    EXPECT_EQ(parse(write("S3REDB01A.info", "<i/>")).stripName(), "S3");
    // Minimal matching stops at the first band code.
    EXPECT_EQ(parse(write("L1PANF28AREDN00A.info", "<i/>")).stripName(), "L1");
    // Everything from the first "." is not part of the base name.
    EXPECT_EQ(parse(write("L9_NIRB14B.raw.info", "<i/>")).stripName(), "L9");
}

TEST_F(InfoFileTest, BaseNameWithoutBandCodeIsRejectedEvenForValidXml)
{
    for (const char* name : {"L12.info", "L12_PANX28A.info", "L12_PANF2A.info", "l12_panf28a.info",
                             "PANF28A.info"}) {
        const std::string path = write(QString::fromLatin1(name), testsupport::fullInfoXml());
        EXPECT_EQ(thrownMessage([&] { parse(path); }),
                  "Could not deduct Take naming from info file name " + path)
            << name;
    }
}

TEST_F(InfoFileTest, CopiesCarryEveryField)
{
    const InfoFile original = parse(write("L12_PANF28A.info", testsupport::fullInfoXml()));
    InfoFile assigned = parse(write("X_REDB01B.info", "<i/>"));
    assigned = original;
    const InfoFile copied(original);

    for (const InfoFile* copy : std::initializer_list<const InfoFile*>{&assigned, &copied}) {
        EXPECT_EQ(copy->infoFileName(), original.infoFileName());
        EXPECT_EQ(copy->pixelFilename(), original.pixelFilename());
        EXPECT_EQ(copy->ctFileName(), original.ctFileName());
        EXPECT_EQ(copy->sensorType(), original.sensorType());
        EXPECT_EQ(copy->sensorId(), original.sensorId());
        EXPECT_EQ(copy->bandId(), original.bandId());
        EXPECT_EQ(copy->stripName(), original.stripName());
        EXPECT_EQ(copy->startPos(), original.startPos());
        EXPECT_EQ(copy->stopPos(), original.stopPos());
        EXPECT_EQ(copy->flightStart(), original.flightStart());
        EXPECT_EQ(copy->lineStart(), original.lineStart());
        EXPECT_EQ(copy->lineStop(), original.lineStop());
        EXPECT_EQ(copy->integrationTime(), original.integrationTime());
        EXPECT_EQ(copy->lineNumber(), original.lineNumber());
        EXPECT_EQ(copy->lineLabel(), original.lineLabel());
    }
}

TEST(InfoFileAngle, ParsesSexagesimalDegrees)
{
    double value = 99.0;
    ASSERT_TRUE(InfoFile::angleFromString("-12:30:15.5", value));
    EXPECT_DOUBLE_EQ(value, -(12.0 + 30.0 / 60.0 + 15.5 / 3600.0));
    ASSERT_TRUE(InfoFile::angleFromString("47:10:00", value));
    EXPECT_DOUBLE_EQ(value, 47.0 + 10.0 / 60.0);
}

TEST(InfoFileAngle, OneColonReadsMinutesAndSecondsFromTheSameText)
{
    double value = 0.0;
    ASSERT_TRUE(InfoFile::angleFromString("12:30", value));
    EXPECT_DOUBLE_EQ(value, 12.0 + 30.0 / 60.0 + 30.0 / 3600.0);
}

TEST(InfoFileAngle, SignComesFromTheDegreeTextOrTheMinutes)
{
    double value = 0.0;
    ASSERT_TRUE(InfoFile::angleFromString("-0:30:00", value));
    EXPECT_DOUBLE_EQ(value, -0.5);
    ASSERT_TRUE(InfoFile::angleFromString("0:-30:00", value));
    EXPECT_DOUBLE_EQ(value, -0.5);
    // Minutes and seconds are not made absolute.
    ASSERT_TRUE(InfoFile::angleFromString("10:-30:00", value));
    EXPECT_DOUBLE_EQ(value, 9.5);
}

TEST(InfoFileAngle, MalformedTextGivesFalseAndZero)
{
    for (const char* text : {"12", "", "ab:30:00", "12:xx:00", "12:30:yy", "1.5:30:00"}) {
        double value = 42.0;
        EXPECT_FALSE(InfoFile::angleFromString(QString::fromLatin1(text), value)) << text;
        EXPECT_EQ(value, 0.0) << text;
    }
}

TEST(InfoFileValidator, RequiresSensorIdThenSensorType)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    InfoFile::Validator validator;

    const std::string noId = writeFile(dir, "A_PANF28A.info", "<i><sensor_type>ZEL</sensor_type></i>");
    InfoFile withoutId(noId, InfoFile::STRIPNAMEREGEX);
    EXPECT_EQ(thrownMessage([&] { validator.validate(withoutId); }), "The SensorId is empty in: " + noId);

    const std::string neither = writeFile(dir, "B_PANF28A.info", "<i/>");
    InfoFile empty(neither, InfoFile::STRIPNAMEREGEX);
    EXPECT_EQ(thrownMessage([&] { validator.validate(empty); }), "The SensorId is empty in: " + neither);

    const std::string noType = writeFile(dir, "C_PANF28A.info", "<i><sensor_serialnumber>7</sensor_serialnumber></i>");
    InfoFile withoutType(noType, InfoFile::STRIPNAMEREGEX);
    EXPECT_EQ(thrownMessage([&] { validator.validate(withoutType); }), "The SensorType is empty in: " + noType);

    InfoFile complete = testsupport::makeInfoFile(dir, "L12_PANF28A");
    EXPECT_NO_THROW(validator.validate(complete));
}
