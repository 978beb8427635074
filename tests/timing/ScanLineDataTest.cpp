#include "TestSupport.h"

#include <datamodel/timing/ScanLineData.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <string>

using datamodel::ScanLineData;
using testsupport::scanLineRecords;
using testsupport::thrownMessage;

namespace {

constexpr double sItScale = 1e-6;  // integration times: microseconds in the file, seconds held
constexpr double sTdiScale = 1.0;  // TDI stage counts

class ScanLineDataTest : public testsupport::FileTest {
protected:

    /// Reads `content` from a file and writes it back; the bytes written.
    QByteArray roundTrip(const QByteArray& content, double scale)
    {
        ScanLineData data = ScanLineData::read(write("in.bin", content), scale);
        data.write(path("out.bin"));
        return bytesOf(path("out.bin"));
    }

};

std::vector<std::uint32_t> lines(const ScanLineData& data)
{
    std::vector<std::uint32_t> result;
    for (const auto& entry : data.values())
        result.push_back(entry.first);
    return result;
}

} // namespace

TEST_F(ScanLineDataTest, OneRecordIsOneRunAndWritesBackTheSameBytes)
{
    const QByteArray record = scanLineRecords({{0, 5200}});
    ASSERT_EQ(record.size(), 8);
    const std::string file = write("one.it", record);

    ScanLineData data = ScanLineData::read(file, sItScale);
    EXPECT_EQ(data.fileName(), file);
    EXPECT_EQ(data.scale(), sItScale);
    ASSERT_EQ(data.values().size(), 1u);
    EXPECT_FLOAT_EQ(data.values().at(0), 0.0052f);

    data.write(path("copy.it"));
    EXPECT_EQ(bytesOf(path("copy.it")), record);
    EXPECT_EQ(data.fileName(), path("copy.it"));

    // A run need not start at line 0.
    const QByteArray late = scanLineRecords({{17, 3}});
    EXPECT_EQ(lines(ScanLineData::read(write("late.tdi", late), sTdiScale)), std::vector<std::uint32_t>{17});
    EXPECT_EQ(roundTrip(late, sTdiScale), late);
}

TEST_F(ScanLineDataTest, BrokenFilesAreRefusedWithTheirName)
{
    for (const int size : {12, 7, 1}) {
        const std::string file = write("odd.it", scanLineRecords({{0, 1000}, {100, 1500}}).left(size));
        EXPECT_EQ(thrownMessage([&] { ScanLineData::read(file, sItScale); }),
                  "File size is no multiple of the data size, in: " + file)
            << size;
    }
    // Runs start in rising line order; a line that does not rise is garbage.
    for (const std::uint32_t again : {100u, 50u}) {
        const std::string file = write("back.it", scanLineRecords({{0, 1000}, {100, 1500}, {again, 1200}}));
        EXPECT_EQ(thrownMessage([&] { ScanLineData::read(file, sItScale); }),
                  "Scan line " + std::to_string(again) + " of record 2 does not follow line 100 of the record before, in: "
                      + file);
    }
    // A file larger than any band is refused before it is read (sparse: costs no disk).
    const std::string huge = write("huge.it", {});
    ASSERT_EQ(::truncate(huge.c_str(), (ScanLineData::sMaxRecords + 1) * 8), 0);
    EXPECT_EQ(thrownMessage([&] { ScanLineData::read(huge, sItScale); }),
              "File holds 67108865 records, more than a band has scan lines (at most 67108864), in: " + huge);
}

TEST_F(ScanLineDataTest, EmptyFileGivesEmptyData)
{
    const std::string file = write("empty.it", {});
    const ScanLineData data = ScanLineData::read(file, sItScale);
    EXPECT_TRUE(data.empty());
    EXPECT_EQ(thrownMessage([&] { data.value(0.0); }), "No scan-line data in: " + file);
    EXPECT_EQ(thrownMessage([&] { data.nominalValue(); }), "No scan-line data in: " + file);
    EXPECT_EQ(thrownMessage([&] { data.minValue(); }), "No scan-line data in: " + file);
    EXPECT_EQ(thrownMessage([&] { data.maxValue(); }), "No scan-line data in: " + file);
}

TEST_F(ScanLineDataTest, EachRunIsHeldByItsFirstAndLastLine)
{
    const ScanLineData data
        = ScanLineData::read(write("two.it", scanLineRecords({{0, 1000}, {100, 1500}})), sItScale);
    EXPECT_EQ(lines(data), (std::vector<std::uint32_t>{0, 99, 100}));
    EXPECT_FLOAT_EQ(data.values().at(99), 0.001f);
    for (const double line : {0.0, 1.0, 50.0, 98.0, 99.0, 99.9})
        EXPECT_FLOAT_EQ(data.value(line), 0.001f) << line;
    for (const double line : {100.0, 100.5, 101.0, 5000.0})
        EXPECT_FLOAT_EQ(data.value(line), 0.0015f) << line;

    // Runs on neighbouring lines need no extra line.
    const ScanLineData tight
        = ScanLineData::read(write("tight.tdi", scanLineRecords({{0, 1}, {1, 2}, {2, 1}, {4, 3}})), sTdiScale);
    EXPECT_EQ(lines(tight), (std::vector<std::uint32_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(tight.values().at(3), 1.0f);
}

TEST_F(ScanLineDataTest, RecordedFilesWriteBackTheSameBytes)
{
    const QByteArray integrationTimes = scanLineRecords(
        {{0, 5200}, {1500, 5400}, {1501, 5100}, {3000, 5200}, {12000, 6000}, {12001, 5200}, {250000, 12345}});
    EXPECT_EQ(roundTrip(integrationTimes, sItScale), integrationTimes);

    const QByteArray stages = scanLineRecords({{0, 1}, {250, 2}, {251, 4}, {9000, 1}, {9001, 8}});
    EXPECT_EQ(roundTrip(stages, sTdiScale), stages);
}

TEST_F(ScanLineDataTest, NegativeValuesAndHighLinesWriteBackTheSameBytes)
{
    // Found by fuzzing: adding one half and truncating moved -7680 to -7679,
    // so every read-write cycle of such a file changed it.
    const QByteArray stages = scanLineRecords({{0u, -7680}, {12u, -1}, {0xE2008F80u, INT32_MIN}, {0xFFFFFFFFu, INT32_MAX}});
    EXPECT_EQ(roundTrip(stages, sTdiScale), stages);
    const QByteArray integrationTimes = scanLineRecords({{0u, -7680}, {12u, -1}, {0xE2008F80u, -250}});
    EXPECT_EQ(roundTrip(integrationTimes, sItScale), integrationTimes);
}

TEST_F(ScanLineDataTest, WritingKeepsOnlyChangesOfValueRoundedToFileUnits)
{
    ScanLineData data(sTdiScale);
    data.set(0, 2.4f);
    data.set(5, 2.4f);
    data.set(10, 2.6f);
    data.set(11, 2.6f);
    data.set(20, 1.0f);
    data.write(path("set.tdi"));
    EXPECT_EQ(bytesOf(path("set.tdi")), scanLineRecords({{0, 2}, {10, 3}, {20, 1}}));
    EXPECT_EQ(data.fileName(), path("set.tdi"));
}

TEST_F(ScanLineDataTest, FilesThatCannotBeOpenedAreReported)
{
    const std::string missing = path("missing.it");
    EXPECT_EQ(thrownMessage([&] { ScanLineData::read(missing, sItScale); }), "Can't open file: " + missing);

    ScanLineData data = ScanLineData::read(write("two.it", scanLineRecords({{0, 1000}, {100, 1500}})), sItScale);
    const std::string unwritable = path("no/such/folder/out.it");
    EXPECT_EQ(thrownMessage([&] { data.write(unwritable); }), "Can't open file for writing: " + unwritable);
    EXPECT_EQ(data.fileName(), path("two.it")) << "a failed write keeps the file name";
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(unwritable)));
}

TEST_F(ScanLineDataTest, ValuesBetweenBeforeAndAfterTheStoredLines)
{
    const ScanLineData data = ScanLineData::read(
        write("three.it", scanLineRecords({{10, 1000}, {20, 2000}, {30, 3000}})), sItScale);
    EXPECT_FLOAT_EQ(data.value(0.0), 0.001f) << "before the first line the first value holds";
    EXPECT_FLOAT_EQ(data.value(-4.0), 0.001f);
    EXPECT_FLOAT_EQ(data.value(15.0), 0.001f);
    EXPECT_FLOAT_EQ(data.value(19.99), 0.001f);
    EXPECT_FLOAT_EQ(data.value(20.0), 0.002f);
    EXPECT_FLOAT_EQ(data.value(25.0), 0.002f);
    EXPECT_FLOAT_EQ(data.value(29.5), 0.002f);
    EXPECT_FLOAT_EQ(data.value(30.0), 0.003f);
    EXPECT_FLOAT_EQ(data.value(1e7), 0.003f) << "after the last line the last value holds";
    EXPECT_FLOAT_EQ(data.value(1e12), 0.003f);
}

TEST_F(ScanLineDataTest, MinimumMaximumAndNominalValue)
{
    // 1000 us over 5000 lines, 3000 us over 10, then 1000 us again; 500 us once at the end.
    const ScanLineData data = ScanLineData::read(
        write("runs.it", scanLineRecords({{0, 1000}, {5000, 3000}, {5010, 1000}, {5020, 500}})), sItScale);
    EXPECT_FLOAT_EQ(data.minValue(), 0.0005f);
    EXPECT_FLOAT_EQ(data.maxValue(), 0.003f);
    EXPECT_FLOAT_EQ(data.nominalValue(), 0.001f);

    // The value in force over most lines wins even when it is met late.
    const ScanLineData late = ScanLineData::read(
        write("late.it", scanLineRecords({{0, 2000}, {100, 4000}, {150, 2500}, {10000, 2000}})), sItScale);
    EXPECT_FLOAT_EQ(late.nominalValue(), 0.0025f);
    EXPECT_FLOAT_EQ(late.minValue(), 0.002f);
    EXPECT_FLOAT_EQ(late.maxValue(), 0.004f);

    const ScanLineData single = ScanLineData::read(write("single.tdi", scanLineRecords({{3, 4}})), sTdiScale);
    EXPECT_EQ(single.nominalValue(), 4.0f);
    EXPECT_EQ(single.minValue(), 4.0f);
    EXPECT_EQ(single.maxValue(), 4.0f);
}
