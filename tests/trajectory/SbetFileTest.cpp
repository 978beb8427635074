// The SBET reader with its smrmsg accuracy file: opening checks and their
// messages, record conversion, the time index, lookups by time and the GPS
// week rollover.

#include "TestSupport.h"
#include "TrajectoryWriters.h"

#include <datamodel/trajectory/SbetFile.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <string>

using namespace datamodel;
using namespace trajectorytest;
using testsupport::thrownMessage;

namespace {

const char* const sOutside = "GPS time is out side of recording time for the trajectory.";

ImuRecord recordAt(PosFile& file, double gpsSec)
{
    ImuRecord record;
    file.getRecord(seconds(gpsSec), record);
    return record;
}

} // namespace

TEST(SbetFile, ConvertsRecordsAndInterpolatesTheAccuracyAtEachRecordTime)
{
    QTemporaryDir dir;
    const std::vector<SbetRow> rows = regularSbet(5, 1000.0, 0.5);
    const std::string path = write(dir, "sbet_flight.out", sbetBytes(rows));
    // Accuracy from 1000.5 to 1001.5: the first SBET record lies before it,
    // the last after it.
    write(dir, "smrmsg_flight.out",
          accuracyBytes({{1000.5, 0.02, 0.04, 0.06, 0.6, 1.2, 1.8}, {1001.5, 0.04, 0.08, 0.10, 1.2, 2.4, 3.0}}));

    SbetFile sbet(path);
    EXPECT_EQ(sbet.numSets(), 5);
    EXPECT_TRUE(sbet.hasStdDevs());
    ASSERT_NE(sbet.accuracyFile(), nullptr);
    EXPECT_EQ(sbet.accuracyFile()->fileName(), dir.filePath("smrmsg_flight.out").toStdString());
    EXPECT_EQ(sbet.startTime().value(), 1000.0);
    EXPECT_EQ(sbet.endTime().value(), 1002.0);
    EXPECT_FALSE(sbet.hasGpsRollover());

    ImuRecord record;
    sbet.getRecord(2, record);
    EXPECT_EQ(record.time, 1001.0);
    EXPECT_EQ(record.latitude, rows[2].latRad);
    EXPECT_EQ(record.longitude, rows[2].lonRad);
    EXPECT_EQ(record.height, rows[2].heightM);
    EXPECT_EQ(record.roll, rows[2].rollRad);
    EXPECT_EQ(record.pitch, rows[2].pitchRad);
    // True heading: the platform heading less the wander angle.
    EXPECT_DOUBLE_EQ(record.heading, rows[2].platformHeadingRad - rows[2].wanderRad);
    // Half way between the accuracy records; arc minutes become radians.
    const double radPerArcmin = sDeg / 60.0;
    EXPECT_FLOAT_EQ(record.stdDev()[0], 0.03f);
    EXPECT_FLOAT_EQ(record.stdDev()[1], 0.06f);
    EXPECT_FLOAT_EQ(record.stdDev()[2], 0.08f);
    EXPECT_FLOAT_EQ(record.stdDev()[3], float(0.9 * radPerArcmin));
    EXPECT_FLOAT_EQ(record.stdDev()[4], float(1.8 * radPerArcmin));
    EXPECT_FLOAT_EQ(record.stdDev()[5], float(2.4 * radPerArcmin));
    // Before and after the accuracy file its first and last values hold.
    sbet.getRecord(0, record);
    EXPECT_FLOAT_EQ(record.stdDev()[0], 0.02f);
    sbet.getRecord(4, record);
    EXPECT_FLOAT_EQ(record.stdDev()[1], 0.08f);
    EXPECT_FLOAT_EQ(record.stdDev()[5], float(3.0 * radPerArcmin));

    EXPECT_EQ(thrownMessage([&] { sbet.getRecord(5, record); }), "Index out of bounds.");
    EXPECT_EQ(thrownMessage([&] { sbet.getRecord(-1, record); }), "Index out of bounds.");
    EXPECT_EQ(thrownMessage([&] { sbet.readRecord(5, record); }), "Index out of bounds.");
    sbet.close();
    EXPECT_EQ(thrownMessage([&] { sbet.getRecord(1, record); }), "Seek error.");
    ASSERT_TRUE(sbet.open());
    sbet.getRecord(1, record);
    EXPECT_EQ(record.time, 1000.5);
}

namespace {

/// Accuracy records `count` of them from 1000 s to 1000 + `spanSec`, first
/// closer, then further apart than on average: the index estimates land
/// before or after the records around a time, and the walks go forward or
/// backward and differ from time to time.
std::vector<AccuracyRow> wavyAccuracy(int count, double spanSec)
{
    std::vector<AccuracyRow> rows;
    for (int k = 0; k < count; ++k) {
        const double f = k / double(count - 1);
        rows.push_back({1000.0 + spanSec * (f + 0.15 / (count / 40) * std::sin(2.0 * std::numbers::pi * f * (count / 40))),
                        0.01 + 0.001 * (k % 40), 0.02 + 0.0005 * (k % 7), 0.03 + 0.002 * (k % 3), 0.5 + 0.01 * (k % 40),
                        0.7 - 0.01 * (k % 5), 1.1 + 0.02 * (k % 4)});
    }
    return rows;
}

/// The SBET record `row` as the reader converts it, with the accuracy that
/// the accuracy file's own lookup gives at its time.
ImuRecord expectedRecord(const SbetRow& row, SbetFile::SmrmsFile& accuracy)
{
    ImuRecord record;
    record.time = row.time;
    record.latitude = row.latRad;
    record.longitude = row.lonRad;
    record.height = row.heightM;
    record.roll = row.rollRad;
    record.pitch = row.pitchRad;
    record.heading = row.platformHeadingRad - row.wanderRad;
    record.stdDev() = recordAt(accuracy, std::clamp(row.time, accuracy.startTime().value(),
                                                     accuracy.endTime().value())).stdDev();
    return record;
}

void expectSameRecord(const ImuRecord& actual, const ImuRecord& expected, const std::string& where)
{
    EXPECT_EQ(actual.time, expected.time) << where;
    EXPECT_EQ(actual.latitude, expected.latitude) << where;
    EXPECT_EQ(actual.longitude, expected.longitude) << where;
    EXPECT_EQ(actual.height, expected.height) << where;
    EXPECT_EQ(actual.roll, expected.roll) << where;
    EXPECT_EQ(actual.pitch, expected.pitch) << where;
    EXPECT_EQ(actual.heading, expected.heading) << where;
    EXPECT_EQ(actual.stdDev(), expected.stdDev()) << where;
}

} // namespace

TEST(SbetFile, AccuracyOfEveryRecordIsTheAccuracyFilesOwnLookup)
{
    // Lookups remember the accuracy records of the last time; whatever the
    // order of the lookups, every record and every interpolated record must
    // be what reading afresh gives: records converted one by one, their
    // accuracy from the accuracy file's own lookup at the record time, then
    // interpolated. A short accuracy file has one index interval; the long
    // one has several.
    // In the third, one accuracy record lies seconds after its neighbours:
    // the records around a time then depend on where the walk starts.
    struct Case {
        int accuracyRecords;
        int sbetRecords;
        double sbetIntervalSec;
        int lateRecord;
    };
    for (const Case c : {Case{40, 201, 0.1, -1}, Case{30000, 3001, 1.0, -1}, Case{80, 201, 0.1, 41}}) {
        SCOPED_TRACE(c.accuracyRecords);
        QTemporaryDir dir;
        const double spanSec = (c.sbetRecords - 1) * c.sbetIntervalSec;
        std::vector<AccuracyRow> accuracy = wavyAccuracy(c.accuracyRecords, spanSec);
        if (c.lateRecord >= 0)
            accuracy[std::size_t(c.lateRecord)].time += 3.0;
        write(dir, "smrmsg_walk.out", accuracyBytes(accuracy));
        const std::vector<SbetRow> rows = regularSbet(c.sbetRecords, 1000.0, c.sbetIntervalSec);
        SbetFile sbet(write(dir, "sbet_walk.out", sbetBytes(rows)));
        SbetFile::SmrmsFile own(dir.filePath("smrmsg_walk.out").toStdString());
        ASSERT_TRUE(sbet.hasStdDevs());

        std::vector<int> order(rows.size());
        for (std::size_t i = 0; i < order.size(); ++i)
            order[i] = int(i);
        for (int pass = 0; pass < 2; ++pass) {
            if (pass == 1)
                std::reverse(order.begin(), order.end());
            for (int i : order) {
                ImuRecord record;
                sbet.getRecord(i, record);
                ASSERT_EQ(record.stdDev(), expectedRecord(rows[std::size_t(i)], own).stdDev()) << "record " << i;
            }
        }

        // Random times, then times a scan line apart.
        std::mt19937_64 random(3);
        std::uniform_real_distribution<double> anywhere(1000.0, 1000.0 + spanSec);
        std::vector<double> times(3000);
        for (double& t : times)
            t = anywhere(random);
        for (int k = 0; k < 2000; ++k)
            times.push_back(1000.0 + spanSec / 3 + k * 0.00125);
        for (const double t : times) {
            // The two records around t (none lies within a microsecond of it).
            const auto next = std::upper_bound(rows.begin(), rows.end(), t,
                                               [](double time, const SbetRow& row) { return time < row.time; });
            ASSERT_TRUE(next != rows.begin() && next != rows.end());
            if (t - (next - 1)->time < 1e-5 || next->time - t < 1e-5)
                continue;
            ImuRecord expected;
            expected.time = t;
            sbet.interpolate(expectedRecord(*(next - 1), own), expectedRecord(*next, own), expected);
            expectSameRecord(recordAt(sbet, t), expected, "at " + std::to_string(t));
            if (HasFailure())
                return;
        }
    }
}

TEST(SbetFile, AccuracyFileIsTheNameWithItsFirstSbetReplaced)
{
    EXPECT_EQ(SbetFile::accuracyFileName("/data/sbet/proc/sbet_sbet_01.out"), "/data/sbet/proc/smrmsg_sbet_01.out");
    EXPECT_EQ(SbetFile::accuracyFileName("C:\\sbet\\flight_sbet.out"), "C:\\sbet\\flight_smrmsg.out");
    EXPECT_EQ(SbetFile::accuracyFileName("flight.sbet"), "flight.smrmsg");
    EXPECT_EQ(SbetFile::accuracyFileName("/data/sbet/proc/trajectory.out"), "");
    EXPECT_EQ(SbetFile::accuracyFileName("/data/proc/SBET_01.out"), "");

    // A valid SBET whose name (not its folder) lacks "sbet" is refused.
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("sbet")));
    const std::string path = write(dir, "sbet/trajectory.out", sbetBytes(regularSbet(3, 10.0, 1.0)));
    EXPECT_EQ(thrownMessage([&] { SbetFile file(path); }), path + " is not a Sbet file.");
    const std::string missing = dir.filePath("sbet_missing.out").toStdString();
    EXPECT_EQ(thrownMessage([&] { SbetFile file(missing); }), "Could not open " + missing);
}

TEST(SbetFile, MissingOrBrokenAccuracyFileLeavesTheTrajectoryWithoutStdDevs)
{
    QTemporaryDir dir;
    const QByteArray sbet = sbetBytes(regularSbet(4, 10.0, 1.0));
    {
        SbetFile file(write(dir, "a_sbet.out", sbet));
        EXPECT_FALSE(file.hasStdDevs());
        EXPECT_EQ(file.accuracyFile(), nullptr);
        EXPECT_EQ(file.accuracyFileError(), "Could not open " + dir.filePath("a_smrmsg.out").toStdString());
        ImuRecord record;
        file.getRecord(1, record);
        for (float value : record.stdDev())
            EXPECT_EQ(value, 0.0f);
    }
    // An accuracy file whose records are not valid is not used, and the
    // reader keeps why ...
    auto refusal = [&](const char* id, const QByteArray& accuracy) {
        write(dir, QString::fromLatin1(id) + "_smrmsg.out", accuracy);
        const SbetFile file(write(dir, QString::fromLatin1(id) + "_sbet.out", sbet));
        EXPECT_FALSE(file.hasStdDevs());
        return file.accuracyFileError();
    };
    EXPECT_EQ(refusal("b", accuracyBytes({{-1.0, 1, 1, 1, 1, 1, 1}, {20.0, 1, 1, 1, 1, 1, 1}})),
              "First record is not valid.");
    EXPECT_EQ(refusal("c", QByteArray(79, '\1')), "Failed to read first record from file.");
    EXPECT_EQ(refusal("e", accuracyBytes({{9.0, std::nan(""), 1, 1, 1, 1, 1}, {10.0, 1, 1, 1, 1, 1, 1}})),
              "Record 0 is not valid: north standard deviation nan m is outside [0, 1000000].");
    EXPECT_EQ(refusal("f", accuracyBytes({{9.0, 1, 1, 1, 1, 1, 1}, {8.0, 1, 1, 1, 1, 1, 1}, {10.0, 1, 1, 1, 1, 1, 1}})),
              "Record 1 is not valid: its time 8 s is not after the time 9 s of the record before it.");
    // ... but the time of its last record is not tested.
    write(dir, "d_smrmsg.out", accuracyBytes({{9.0, 1, 1, 1, 1, 1, 1}, {-5.0, 2, 2, 2, 2, 2, 2}}));
    SbetFile d(write(dir, "d_sbet.out", sbet));
    EXPECT_TRUE(d.hasStdDevs());
    ASSERT_NE(d.accuracyFile(), nullptr);
    EXPECT_EQ(d.accuracyFile()->endTime().value(), -5.0);
}

TEST(SbetFile, TruncatedAndCorruptFilesAreRefusedWithTheirMessages)
{
    QTemporaryDir dir;
    const QByteArray good = sbetBytes(regularSbet(3, 100.0, 1.0));
    auto open = [&](const QString& name, const QByteArray& bytes) {
        const std::string path = write(dir, name, bytes);
        return thrownMessage([&] { SbetFile file(path); });
    };
    EXPECT_EQ(open("empty_sbet.out", {}), "Failed to read first record from file.");
    EXPECT_EQ(open("short_sbet.out", good.left(135)), "Failed to read first record from file.");

    // Times outside the GPS week.
    for (const double time : {-0.001, std::nan(""), 604800.0}) {
        QByteArray bytes = good;
        put(bytes, 0, time);
        EXPECT_EQ(open("first_sbet.out", bytes), "First record is not valid.") << time;
        bytes = good;
        put(bytes, 2 * 136, time);
        EXPECT_EQ(open("last_sbet.out", bytes), "Last record is not valid.") << time;
    }

    // Records that hold no trajectory: a field no flight has in the first,
    // the last or a record of the index; times that do not rise record by
    // record at the start; text; zeros where a file was extended unwritten.
    struct Damage {
        int record;
        int field; // in doubles
        double value;
        const char* message;
    };
    const QByteArray longer = sbetBytes(regularSbet(12500, 100.0, 0.005));
    for (const Damage& d : {Damage{0, 1, 5e185, "Record 0 is not valid: latitude 5e+185 rad is outside [-pi/2, pi/2]."},
                            Damage{12499, 2, -3.2, "Record 12499 is not valid: longitude -3.2 rad is outside [-pi, pi]."},
                            Damage{12000, 3, std::nan(""), "Record 12000 is not valid: height nan m is outside [-1000, 100000]."},
                            Damage{12000, 0, -5.0, "Record 12000 is not valid: its time -5 s is not a GPS time of the week."},
                            Damage{0, 7, 3.5, "Record 0 is not valid: roll 3.5 rad is outside [-3.14159265359, 3.14159265359]."},
                            Damage{2, 0, 100.0, "Record 2 is not valid: its time 100 s is not after the time 100.005 s of the record before it."},
                            Damage{1, 0, 7300.0, "Record 1 is not valid: its time 7300 s lies more than 3600 s after the time 100 s of the record before it."}}) {
        QByteArray bytes = longer;
        put(bytes, qsizetype(d.record) * 136 + 8 * d.field, d.value);
        EXPECT_EQ(open("damaged_sbet.out", bytes), d.message);
    }
    QByteArray text;
    while (text.size() < 20 * 136)
        text += "376337.125 0.8392115 0.2007001 2000.25 -0.0123\n";
    EXPECT_EQ(open("text_sbet.out", text.left(20 * 136)).rfind("Record ", 0), 0u);
    EXPECT_EQ(open("holed_sbet.out", longer + QByteArray(3 * 136, '\0')),
              "Record 12502 is not valid: position 0 rad, 0 rad, 0 m (a record never written).");

    // A record cut short at the end is not part of the trajectory.
    SbetFile cut(write(dir, "cut_sbet.out", good + good.left(68)));
    EXPECT_EQ(cut.numSets(), 3);
    EXPECT_EQ(cut.endTime().value(), 102.0);
    EXPECT_EQ(recordAt(cut, 102.0).time, 102.0);
}

TEST(SbetFile, RecordsAtTimesComeFromTheSparseIndexAndTheRecordsAroundThem)
{
    QTemporaryDir dir;
    // 30 000 records at 200 Hz: index entries at records 0, 12 000, 24 000
    // and the last record.
    const std::vector<SbetRow> rows = regularSbet(30000, 5000.0, 0.005);
    SbetFile sbet(write(dir, "long_sbet.out", sbetBytes(rows)));
    EXPECT_TRUE(sbet.isOrdered());
    EXPECT_EQ(sbet.indexEntries(), std::size_t(4));
    EXPECT_NEAR(sbet.frequency(), 0.005, 1e-9);

    for (int k : {0, 1, 11999, 12000, 12001, 23999, 24000, 29998}) {
        SCOPED_TRACE(k);
        // Half way between records k and k + 1.
        const double t = rows[std::size_t(k)].time + 0.0025;
        const ImuRecord r = recordAt(sbet, t);
        EXPECT_EQ(r.time, t);
        EXPECT_NEAR(r.latitude, 0.5 * (rows[std::size_t(k)].latRad + rows[std::size_t(k) + 1].latRad), 1e-15);
        EXPECT_NEAR(r.height, 1500.0 + 0.01 * (k + 0.5), 1e-9);
        EXPECT_NEAR(r.heading, std::remainder(1.0 + 0.1 * sDeg * (k + 0.5), 2 * std::numbers::pi), 1e-12);
        EXPECT_EQ(sbet.getNearestIndex(seconds(t), true), k);
        EXPECT_EQ(sbet.getNearestIndex(seconds(t), false), k + 1);
    }
    // Within a microsecond of a record, the record itself, with its own time.
    const ImuRecord exact = recordAt(sbet, rows[17000].time + 4e-7);
    EXPECT_EQ(exact.time, rows[17000].time);
    EXPECT_EQ(exact.latitude, rows[17000].latRad);
    EXPECT_EQ(sbet.getNearestIndex(seconds(rows[17000].time - 4e-7), false), 17000);
    EXPECT_EQ(recordAt(sbet, rows.back().time).latitude, rows.back().latRad);

    EXPECT_EQ(thrownMessage([&] { recordAt(sbet, 4999.999); }), sOutside);
    EXPECT_EQ(thrownMessage([&] { recordAt(sbet, rows.back().time + 0.001); }), sOutside);
    EXPECT_EQ(thrownMessage([&] { recordAt(sbet, std::nan("")); }), sOutside);
    EXPECT_EQ(thrownMessage([&] { sbet.getNearestIndex(seconds(4000.0), true); }), sOutside);
}

TEST(SbetFile, FileWithOneRecordAnswersOnlyItsOwnTime)
{
    QTemporaryDir dir;
    SbetFile sbet(write(dir, "one_sbet.out", sbetBytes(regularSbet(1, 300.0, 1.0))));
    EXPECT_EQ(sbet.numSets(), 1);
    EXPECT_EQ(sbet.indexEntries(), std::size_t(1));
    EXPECT_TRUE(sbet.isOrdered());
    EXPECT_EQ(recordAt(sbet, 300.0).time, 300.0);
    EXPECT_EQ(sbet.getNearestIndex(seconds(300.0), false), 0);
    EXPECT_EQ(thrownMessage([&] { recordAt(sbet, 300.5); }), sOutside);
    EXPECT_TRUE(std::isnan(sbet.frequency()));
}

TEST(SbetFile, FlightAcrossTheWeekBoundaryIsServedInTheFollowingWeek)
{
    // 604790 .. 604799, then 0 .. 10: one record a second.
    QTemporaryDir dir;
    const std::vector<SbetRow> rows = regularSbet(21, 604790.0, 1.0);
    ASSERT_EQ(rows.back().time, 10.0);
    write(dir, "week_smrmsg.out", accuracyBytes({{604790.0, 0.01, 0, 0, 0, 0, 0}, {10.0, 0.03, 0, 0, 0, 0, 0}}));
    SbetFile sbet(write(dir, "week_sbet.out", sbetBytes(rows)));
    EXPECT_TRUE(sbet.hasGpsRollover());
    ASSERT_TRUE(sbet.hasStdDevs());
    EXPECT_TRUE(sbet.accuracyFile()->hasGpsRollover());
    EXPECT_TRUE(sbet.isOrdered());
    EXPECT_EQ(sbet.gpstime(seconds(5.0)).value(), 604805.0);
    EXPECT_EQ(sbet.gpstime(seconds(604795.0)).value(), 604795.0);
    EXPECT_TRUE(sbet.isTimeInsideFile(seconds(5.0)));
    EXPECT_TRUE(sbet.isTimeInsideFile(seconds(10.0)));
    EXPECT_FALSE(sbet.isTimeInsideFile(seconds(10.5)));
    EXPECT_FALSE(sbet.isTimeInsideFile(seconds(604789.5)));

    // 5.5 s into the new week is record 15.5.
    const ImuRecord r = recordAt(sbet, 5.5);
    EXPECT_EQ(r.time, 5.5);
    EXPECT_NEAR(r.latitude, 0.8 + 1e-7 * 15.5, 1e-15);
    // The accuracy, too, is taken 15.5 s after the start.
    EXPECT_FLOAT_EQ(r.stdDev()[0], 0.01f + 0.02f * 15.5f / 20.0f);
    // Across the boundary itself, between 604799 and 0.
    EXPECT_NEAR(recordAt(sbet, 604799.25).height, 1500.0 + 0.01 * 9.25, 1e-9);
    EXPECT_EQ(recordAt(sbet, 5.0).latitude, rows[15].latRad);
    EXPECT_EQ(sbet.getNearestIndex(seconds(0.5), true), 10);
    EXPECT_EQ(thrownMessage([&] { recordAt(sbet, 20.0); }), sOutside);
    EXPECT_EQ(thrownMessage([&] { recordAt(sbet, 604789.0); }), sOutside);
}

TEST(SbetFile, UnorderedFileIsIndexedRecordByRecord)
{
    QTemporaryDir dir;
    // Record 24 000 carries the time of record 100: the sampled times stop
    // increasing there.
    std::vector<SbetRow> rows = regularSbet(30000, 5000.0, 0.005);
    rows[24000] = rows[100];
    SbetFile sbet(write(dir, "unordered_sbet.out", sbetBytes(rows)));
    EXPECT_FALSE(sbet.isOrdered());
    // Every record, less the one whose time is a duplicate.
    EXPECT_EQ(sbet.indexEntries(), std::size_t(29999));
    // Times away from the damage are still found.
    EXPECT_NEAR(recordAt(sbet, rows[500].time + 0.0025).height, 1500.0 + 0.01 * 500.5, 1e-9);
    EXPECT_NEAR(recordAt(sbet, rows[28000].time + 0.001).height, 1500.0 + 0.01 * 28000.2, 1e-9);

    // An end time that is not after the last sampled time also counts as
    // unordered, though the index stays sparse.
    rows = regularSbet(13000, 5000.0, 0.005);
    rows.back().time = rows[11000].time;
    SbetFile endBefore(write(dir, "end_sbet.out", sbetBytes(rows)));
    EXPECT_FALSE(endBefore.isOrdered());
    EXPECT_EQ(endBefore.indexEntries(), std::size_t(3));

    // A file starting at exactly 0 s is not later than the smallest
    // positive time the index starts from: it is indexed record by record.
    SbetFile zero(write(dir, "zero_sbet.out", sbetBytes(regularSbet(20, 0.0, 1.0))));
    EXPECT_FALSE(zero.isOrdered());
    EXPECT_EQ(zero.indexEntries(), std::size_t(20));
    EXPECT_NEAR(recordAt(zero, 3.5).height, 1500.035, 1e-9);
}

TEST(SbetFile, FrequencyIsTheTrimmedMeanOfTheMiddleIntervals)
{
    QTemporaryDir dir;
    // 1000 records at 100 Hz with a one-second gap and a doubled record in
    // the middle: the outliers fall into the trimmed quarters.
    std::vector<SbetRow> rows = regularSbet(1000, 50.0, 0.01);
    for (std::size_t k = 500; k < rows.size(); ++k)
        rows[k].time += 1.0;
    rows[520].time = rows[519].time;
    SbetFile sbet(write(dir, "gap_sbet.out", sbetBytes(rows)));
    EXPECT_NEAR(sbet.frequency(), 0.01, 1e-12);

    SbetFile three(write(dir, "three_sbet.out", sbetBytes(regularSbet(3, 50.0, 0.25))));
    EXPECT_DOUBLE_EQ(three.frequency(), 0.25);
}
