// The SOL reader: sync bytes and time validity, the record layout with its
// single-precision arc-second conversion, and its own messages.

#include "TestSupport.h"
#include "TrajectoryWriters.h"

#include <datamodel/trajectory/SolFile.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cstring>
#include <numbers>

using namespace datamodel;
using namespace trajectorytest;
using testsupport::thrownMessage;

namespace {

std::vector<SolRow> solRows(int count, double startSec)
{
    std::vector<SolRow> rows(static_cast<std::size_t>(count));
    for (int k = 0; k < count; ++k) {
        SolRow& r = rows[std::size_t(k)];
        r.time = startSec + 0.005 * k;
        r.latRad = -0.5 + 1e-7 * k;
        r.lonRad = 3.1 + 1e-7 * k;
        r.heightM = 800.0 + k;
        r.sdNorthM = 0.01f * float(k + 1);
        r.sdEastM = 0.02f * float(k + 1);
        r.sdDownM = 0.03f * float(k + 1);
        r.rollRad = 0.01 * k;
        r.pitchRad = -0.01 * k;
        r.headingRad = -3.0 - 0.1 * k;
        r.sdRollArcsec = 7.3f + float(k);
        r.sdPitchArcsec = 11.9f + float(k);
        r.sdHeadingArcsec = 29.1f + float(k);
    }
    return rows;
}

float arcsecToRad(float arcsec)
{
    return arcsec * (1.0f / 3600.0f) * (float(std::numbers::pi) / 180.0f);
}

} // namespace

TEST(SolFile, ReadsTheRecordLayoutWithArcSecondsInSinglePrecision)
{
    QTemporaryDir dir;
    const std::vector<SolRow> rows = solRows(4, 200000.0);
    SolFile sol(write(dir, "flight.sol", solBytes(rows)));
    EXPECT_EQ(sol.numSets(), 4);
    EXPECT_TRUE(sol.hasStdDevs());
    EXPECT_EQ(sol.startTime().value(), 200000.0);
    EXPECT_EQ(sol.endTime().value(), 200000.015);

    ImuRecord record;
    sol.getRecord(2, record);
    const SolRow& r = rows[2];
    EXPECT_EQ(record.time, r.time);
    EXPECT_EQ(record.latitude, r.latRad);
    EXPECT_EQ(record.longitude, r.lonRad);
    EXPECT_EQ(record.height, r.heightM);
    EXPECT_EQ(record.roll, r.rollRad);
    EXPECT_EQ(record.pitch, r.pitchRad);
    EXPECT_EQ(record.heading, r.headingRad);
    EXPECT_EQ(record.stdDev()[0], r.sdNorthM);
    EXPECT_EQ(record.stdDev()[1], r.sdEastM);
    EXPECT_EQ(record.stdDev()[2], r.sdDownM);
    EXPECT_EQ(record.stdDev()[3], arcsecToRad(r.sdRollArcsec));
    EXPECT_EQ(record.stdDev()[4], arcsecToRad(r.sdPitchArcsec));
    EXPECT_EQ(record.stdDev()[5], arcsecToRad(r.sdHeadingArcsec));

    // Between records 1 and 2: headings of -3.1 and -3.2 rad interpolate
    // the short way, and the result comes back in (-pi, pi].
    sol.getRecord(seconds(200000.0075), record);
    EXPECT_NEAR(record.longitude, 3.1 + 1.5e-7, 1e-12);
    EXPECT_NEAR(record.heading, -3.15 + 2.0 * std::numbers::pi, 1e-12);
    EXPECT_NEAR(record.stdDev()[2], 0.075f, 1e-7);
}

TEST(SolFile, DefaultRecordCarriesTheDefaultHeader)
{
    EXPECT_EQ(SolFile::ID_TESK, 0x23);
    EXPECT_EQ(SolFile::ID_BROADCAST, 0xFF);
    const SolFile::SolRecord record;
    QByteArray bytes(184, '\0');
    std::memcpy(bytes.data(), &record, 184);
    EXPECT_EQ(bytes.left(18), solHeader());
    EXPECT_EQ(bytes.mid(18), QByteArray(166, '\0'));
}

TEST(SolFile, RecordsWithoutSyncBytesOrAValidTimeAreRefused)
{
    QTemporaryDir dir;
    const QByteArray good = solBytes(solRows(3, 1000.0));
    auto open = [&](const QString& name, const QByteArray& bytes) {
        const std::string path = write(dir, name, bytes);
        return thrownMessage([&] { SolFile file(path); });
    };
    EXPECT_EQ(open("good.sol", good), "<nothing thrown>");
    EXPECT_EQ(open("empty.sol", {}), "Failed to read first record from file.");
    EXPECT_EQ(open("short.sol", good.left(183)), "Failed to read first record from file.");

    QByteArray bytes = good;
    bytes[0] = char(0xBA);
    EXPECT_EQ(open("sync1.sol", bytes), "First record is not valid.");
    bytes = good;
    bytes[1] = 'u';
    EXPECT_EQ(open("sync2.sol", bytes), "First record is not valid.");
    bytes = good;
    bytes[2 * 184 + 1] = 0;
    EXPECT_EQ(open("lastsync.sol", bytes), "Last record is not valid.");
    bytes = good;
    put(bytes, 18, 604800.0);
    EXPECT_EQ(open("week.sol", bytes), "First record is not valid.");
    bytes = good;
    put(bytes, 2 * 184 + 18, -0.5);
    EXPECT_EQ(open("negative.sol", bytes), "Last record is not valid.");
    // Fields no flight has.
    bytes = good;
    put(bytes, 42, 2.0);
    EXPECT_EQ(open("latitude.sol", bytes), "Record 0 is not valid: latitude 2 rad is outside [-pi/2, pi/2].");
    bytes = good;
    put(bytes, 2 * 184 + 66, -1.0f);
    EXPECT_EQ(open("deviation.sol", bytes), "Record 2 is not valid: north standard deviation -1 m is outside [0, 1000000].");
    // An SBET file is not a SOL file.
    EXPECT_EQ(open("sbet.sol", sbetBytes(regularSbet(3, 1000.0, 1.0))), "First record is not valid.");

    const std::string missing = dir.filePath("missing.sol").toStdString();
    EXPECT_EQ(thrownMessage([&] { SolFile file(missing); }), "Could not open " + missing);
}

TEST(SolFile, ReadingByIndexUsesItsOwnMessages)
{
    QTemporaryDir dir;
    SolFile sol(write(dir, "three.sol", solBytes(solRows(3, 10.0))));
    ImuRecord record;
    EXPECT_EQ(thrownMessage([&] { sol.readRecord(3, record); }), "Index out of range");
    EXPECT_EQ(thrownMessage([&] { sol.readRecord(-1, record); }), "Index out of range");
    EXPECT_EQ(thrownMessage([&] { sol.getRecord(3, record); }), "Index out of bounds.");
    sol.close();
    EXPECT_EQ(thrownMessage([&] { sol.readRecord(1, record); }), "Seek error");
}
