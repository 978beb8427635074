#include "TimingFiles.h"

#include <datamodel/timing/TmFile.h>

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>

using namespace datamodel;
using testsupport::thrownMessage;
using timingtest::Mark;
using timingtest::regularMarks;

namespace {

class TmFileTest : public ::testing::Test {
protected:
    std::string write(const std::vector<Mark>& marks, const char* name = "tm_S1.dat")
    {
        const std::string path = dir.filePath(QString::fromLatin1(name)).toStdString();
        timingtest::writeBytes(path, timingtest::tmBytes(marks));
        return path;
    }

    QTemporaryDir dir;
};

std::string outOfRangeMessage(const std::function<void()>& f)
{
    try {
        f();
    } catch (const std::out_of_range& e) {
        return e.what();
    } catch (const std::exception& e) {
        return std::string("other error: ") + e.what();
    }
    return "<nothing thrown>";
}

} // namespace

// ---- Reading ---------------------------------------------------------------

TEST_F(TmFileTest, ReadsWholeRecordsOnlyAndRefusesFilesWithoutOne)
{
    QByteArray oneRecord = timingtest::tmBytes({{300000.0, 3600.5}});
    const std::string seventeen = testsupport::writeFile(dir, "tm17.dat", oneRecord + "x");
    const TmFile tm(seventeen);
    EXPECT_EQ(tm.numLoadedSets(), 1);
    EXPECT_EQ(tm.gpsAtIndex(0).value(), 300000.0);
    EXPECT_EQ(tm.ctAtIndex(0).value(), 3600.5);
    EXPECT_EQ(tm.name(), seventeen);
    EXPECT_TRUE(std::isnan(tm.ctPeriod().value())) << "one record has no step";

    const std::string fifteen = testsupport::writeFile(dir, "tm15.dat", oneRecord.left(15));
    EXPECT_EQ(thrownMessage([&] { TmFile{fifteen}; }), "TM file: " + fifteen + " has zero size");
    const std::string missing = dir.filePath("nothere.dat").toStdString();
    EXPECT_EQ(thrownMessage([&] { TmFile{missing}; }), "Failed to open TM file: " + missing);
    EXPECT_EQ(thrownMessage([&] { TmFile{dir.path().toStdString()}; }),
              "Failed to open TM file: " + dir.path().toStdString());
    // More records than a week of marks: refused before anything is read.
    const std::string huge = testsupport::writeFile(dir, "tmhuge.dat", {});
    ASSERT_EQ(::truncate(huge.c_str(), (TmFile::sMaxRecords + 1) * 16), 0);
    EXPECT_EQ(thrownMessage([&] { TmFile{huge}; }),
              "TM file: " + huge + " holds 9676801 records, more than a week of time marks (at most 9676800)");
}

TEST_F(TmFileTest, MarksThatCannotBeTimeMarksFailThePlausibilityCheck)
{
    std::vector<Mark> marks = regularMarks(20);
    EXPECT_NO_THROW(TmFile(write(marks)).checkPlausible());
    // Irregular but plausible marks are the validators' business.
    marks[7].gpsTime += 0.5;
    EXPECT_NO_THROW(TmFile(write(marks)).checkPlausible());

    const double nan = std::numeric_limits<double>::quiet_NaN();
    auto refusal = [&](const std::function<void(std::vector<Mark>&)>& spoil) {
        std::vector<Mark> spoilt = regularMarks(20);
        spoil(spoilt);
        const std::string path = write(spoilt, "spoilt.dat");
        const std::string message = thrownMessage([&] { TmFile(path).checkPlausible(); });
        EXPECT_EQ(message.rfind("Time-mark file " + path, 0), 0u) << message;
        return message.substr(std::min(message.size(), ("Time-mark file " + path).size()));
    };
    EXPECT_EQ(refusal([&](auto& m) { m[3].gpsTime = nan; }), ", record 3: the GPS time is not a finite number");
    EXPECT_EQ(refusal([&](auto& m) { m[4].ctTime = -nan; }), ", record 4: the camera time is not a finite number");
    EXPECT_EQ(refusal([&](auto& m) { m[0].gpsTime = -1.0; }), ", record 0: GPS time -1 s lies outside the GPS week");
    EXPECT_EQ(refusal([&](auto& m) { m[19].gpsTime = 604800.0; }),
              ", record 19: GPS time 604800 s lies outside the GPS week");
    EXPECT_EQ(refusal([&](auto& m) { m[2].ctTime = -2.5; }), ", record 2: camera time -2.5 s is negative");
    EXPECT_EQ(refusal([&](auto& m) { m[0].gpsTime = 0.0; }),
              ", record 1: the GPS time steps by 300001 s where the camera time steps by 1.0000125 s");
    EXPECT_EQ(refusal([&](auto& m) { std::fill(m.begin(), m.end(), m[0]); }),
              ": the GPS times of the marks do not advance (period 0 s)");
    EXPECT_EQ(refusal([&](auto& m) { for (Mark& mark : m) mark.ctTime = 3600.0; }),
              ": the camera times of the marks do not advance (period 0 s)");
    EXPECT_EQ(refusal([&](auto& m) { m.resize(1); }), " holds one time mark; converting camera times needs at least two");
}

TEST(TmFile, AFileShorterThanItsStatedSizeIsAReadError)
{
    // Kernel attribute files state a size of a page but hold a few bytes:
    // the one block read comes back short.
    const std::string path = "/sys/devices/system/cpu/online";
    const QFileInfo info(QString::fromStdString(path));
    if (!info.isReadable() || info.size() < 16 || timingtest::readBytes(path).size() >= 16)
        GTEST_SKIP() << "no short kernel attribute file here";
    EXPECT_EQ(thrownMessage([&] { TmFile{path}; }), "IO Error reading .tm file:" + path);
}

// ---- Periods ---------------------------------------------------------------

TEST_F(TmFileTest, PeriodsAreTrimmedMeansOverTheMiddleOfTheFlight)
{
    // 300 marks: the first 50 steps (before the window of records 50 to 149)
    // are two seconds long, and one step inside the window is three seconds.
    std::vector<Mark> marks;
    double gps = 300000.0;
    for (int i = 0; i < 300; ++i) {
        marks.push_back({gps, 3600.0 + (gps - 300000.0) * timingtest::sCtRate});
        gps += i < 50 ? 2.0 : (i == 120 ? 3.0 : 1.0);
    }
    const TmFile tm(write(marks));
    EXPECT_EQ(tm.gpsPeriod().value(), 1.0);
    EXPECT_NEAR(tm.ctPeriod().value(), timingtest::sCtRate, 1e-12);

    // Without the window, a small file averages what it has.
    const TmFile three(write({{10.0, 100.0}, {11.0, 101.0}, {13.0, 103.5}}, "three.dat"));
    EXPECT_DOUBLE_EQ(three.gpsPeriod().value(), 1.5);
    EXPECT_DOUBLE_EQ(three.ctPeriod().value(), 1.75);
    const TmFile two(write({{10.0, 100.0}, {11.0, 101.25}}, "two.dat"));
    EXPECT_DOUBLE_EQ(two.ctPeriod().value(), 1.25);

    // 101 to 199 marks: half the count is less than the window's length, so
    // the window starts at the first mark (a two-minute flight has 126).
    std::vector<Mark> short126;
    for (int i = 0; i < 126; ++i)
        short126.push_back({300000.0 + i, 3600.0 + i * timingtest::sCtRate});
    const TmFile shortFlight(write(short126, "short.dat"));
    EXPECT_DOUBLE_EQ(shortFlight.gpsPeriod().value(), 1.0);
    EXPECT_NEAR(shortFlight.ctPeriod().value(), timingtest::sCtRate, 1e-12);
    EXPECT_TRUE(TmFile(write(short126, "short2.dat")).analyzeAndFix());
}

// ---- Week rollover -----------------------------------------------------------

TEST_F(TmFileTest, RolloverIsRepairedSoThatGpsTimeKeepsRising)
{
    std::vector<Mark> marks = regularMarks(20, TmFile::sWeekSec - 10.0);
    for (Mark& mark : marks)
        if (mark.gpsTime >= TmFile::sWeekSec)
            mark.gpsTime -= TmFile::sWeekSec; // as the receiver writes it: 604799, then 0
    TmFile tm(write(marks));

    EXPECT_TRUE(tm.hasGpsRollover());
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(tm.gpsAtIndex(unsigned(i)).value(), TmFile::sWeekSec - 10.0 + i) << "record " << i;
    // Across the boundary the conversion carries on past the end of the week.
    EXPECT_NEAR(tm.gpsAtCT(seconds(3600.0 + 10.5 * timingtest::sCtRate)).value(), TmFile::sWeekSec + 0.5, 1e-9);
    EXPECT_TRUE(tm.analyzeAndFix());

    // Marks missing around the week's end: still a rollover, repaired, and
    // the marks pass the plausibility check.
    std::vector<Mark> gapped;
    for (std::size_t i = 0; i < marks.size(); ++i)
        if (i < 8 || i > 12)
            gapped.push_back(marks[i]);
    const TmFile across(write(gapped, "gapped.dat"));
    EXPECT_TRUE(across.hasGpsRollover());
    EXPECT_EQ(across.gpsAtIndex(8).value(), TmFile::sWeekSec + 3.0);
    EXPECT_NO_THROW(across.checkPlausible());

    // The same marks without the jump know no rollover.
    EXPECT_FALSE(TmFile(write(regularMarks(20), "plain.dat")).hasGpsRollover());
}

TEST_F(TmFileTest, RolloverRepairBringsTheEarlierRecordsCtBackIntoTheWeek)
{
    // Camera times above a week: the record before the rollover has its CT
    // field (not its GPS field) reduced by a week, as these files are corrected.
    std::vector<Mark> marks = regularMarks(12, TmFile::sWeekSec - 6.0, 700000.0);
    for (Mark& mark : marks)
        if (mark.gpsTime >= TmFile::sWeekSec)
            mark.gpsTime -= TmFile::sWeekSec;
    const TmFile tm(write(marks));
    EXPECT_TRUE(tm.hasGpsRollover());
    EXPECT_EQ(tm.ctAtIndex(5).value(), marks[5].ctTime - TmFile::sWeekSec);
    EXPECT_EQ(tm.gpsAtIndex(5).value(), TmFile::sWeekSec - 1.0);
    EXPECT_EQ(tm.ctAtIndex(6).value(), marks[6].ctTime);
    EXPECT_EQ(tm.gpsAtIndex(6).value(), TmFile::sWeekSec);
}

// ---- Regularity ------------------------------------------------------------

TEST_F(TmFileTest, IrregularStepsAreReportedButNeverRepaired)
{
    std::vector<Mark> jitter4 = regularMarks(30);
    jitter4[10].ctTime += 0.004;
    EXPECT_TRUE(TmFile(write(jitter4, "j4.dat")).analyzeAndFix());

    std::vector<Mark> jitter6 = regularMarks(30);
    jitter6[10].ctTime += 0.006;
    TmFile jittered(write(jitter6, "j6.dat"));
    EXPECT_FALSE(jittered.analyzeAndFix());
    EXPECT_TRUE(jittered.diagnoseStep(10).isolatedMark);
    ASSERT_EQ(jittered.records().size(), jitter6.size());
    for (std::size_t i = 0; i < jitter6.size(); ++i) {
        EXPECT_EQ(jittered.records()[i].ctTime, jitter6[i].ctTime) << "record " << i;
        EXPECT_EQ(jittered.records()[i].gpsTime, jitter6[i].gpsTime) << "record " << i;
    }

    // Three marks missing: a four-period step that still converts.
    std::vector<Mark> gap = regularMarks(30);
    gap.erase(gap.begin() + 12, gap.begin() + 15);
    TmFile withGap(write(gap, "gap.dat"));
    EXPECT_FALSE(withGap.analyzeAndFix());
    const TmFile::StepDiagnosis diagnosis = withGap.diagnoseStep(12);
    EXPECT_FALSE(diagnosis.isolatedMark);
    EXPECT_EQ(diagnosis.missingMarks, 3);
    EXPECT_NEAR(withGap.gpsAtCT(seconds(3600.0 + 13.5 * timingtest::sCtRate)).value(), 300013.5, 1e-9);
}

// ---- load --------------------------------------------------------------------

TEST_F(TmFileTest, LoadChecksTheEndAndChoosesTheStartRecord)
{
    std::vector<Mark> marks = regularMarks(10, 604800.0 - 0.25, 3603.0);
    marks.back().ctTime = 3612.3457;
    const std::string path = write(marks);
    TmFile tm(path);

    tm.load(TmFile::CT_TYPE, seconds(3605.5), seconds(3612.3457)); // up to the last mark exactly
    EXPECT_EQ(tm.startIndex(), 2);
    tm.load(TmFile::CT_TYPE, marks[5].ctTime * kavixunits::seconds, seconds(3610.0));
    EXPECT_EQ(tm.startIndex(), 5) << "a mark equal to `from` is the start";
    tm.load(TmFile::CT_TYPE, seconds(1.0), seconds(3610.0));
    EXPECT_EQ(tm.startIndex(), 0) << "before the file's start";

    EXPECT_EQ(thrownMessage([&] { tm.load(TmFile::CT_TYPE, seconds(3605.0), seconds(3612.35)); }),
              "maximum CT time in " + path + " is 3612345.7ms");
    EXPECT_EQ(thrownMessage([&] { tm.load(TmFile::GPS_TYPE, seconds(604800.0), seconds(604900.0)); }),
              "maximum GPS time in " + path + " is 604809");
    EXPECT_EQ(thrownMessage([&] { tm.load(TmFile::CT_TYPE, seconds(3612.3457), seconds(3612.0)); }),
              " invalid data range");
    EXPECT_EQ(tm.startIndex(), 0);
}

// ---- Conversions ---------------------------------------------------------------

TEST_F(TmFileTest, GpsAtCtInterpolatesBetweenTheBracketingMarks)
{
    const std::vector<Mark> marks = regularMarks(50);
    TmFile tm(write(marks));
    tm.load(TmFile::CT_TYPE, seconds(3610.0), seconds(3640.0));
    EXPECT_NEAR(tm.gpsAtCT(seconds(3600.0 + 17.25 * timingtest::sCtRate)).value(), 300017.25, 1e-9);
    EXPECT_EQ(tm.gpsAtCT(seconds(marks.front().ctTime)).value(), marks.front().gpsTime);
    EXPECT_NEAR(tm.ctAtGPS(seconds(300033.75)).value(), 3600.0 + 33.75 * timingtest::sCtRate, 1e-9);

    const Seconds last = seconds(marks.back().ctTime);
    EXPECT_TRUE(tm.hasCtTime(last));
    EXPECT_EQ(thrownMessage([&] { tm.gpsAtCT(last); }), "CTTime too big.");
    EXPECT_EQ(thrownMessage([&] { tm.gpsAtCT(seconds(3599.999)); }), "CTTime too small.");
    EXPECT_FALSE(tm.hasCtTime(seconds(3599.999)));
    EXPECT_TRUE(tm.hasGpsTime(seconds(300049.0)));
    EXPECT_FALSE(tm.hasGpsTime(seconds(300049.001)));
    // ctAtGPS checks only the records: the last mark's bracket is past the end.
    EXPECT_EQ(outOfRangeMessage([&] { tm.ctAtGPS(seconds(300049.0)); }), "invalid vector<T> subscript");
}

TEST_F(TmFileTest, SearchFailuresAreReportedNotLooped)
{
    // A mark whose CT is not a number: the search turns back at it.
    std::vector<Mark> marks = regularMarks(12);
    marks[6].ctTime = std::numeric_limits<double>::quiet_NaN();
    const TmFile broken(write(marks, "nan.dat"));
    EXPECT_EQ(thrownMessage([&] { broken.gpsAtCT(seconds(3600.0 + 6.5 * timingtest::sCtRate)); }),
              "Can't find CT time.");

    // Ten seconds missing at the start: the period of the rest predicts an
    // index past the last record for a late camera time.
    std::vector<Mark> late = regularMarks(12);
    for (std::size_t i = 1; i < late.size(); ++i) {
        late[i].gpsTime += 20.0;
        late[i].ctTime += 20.0;
    }
    const TmFile overshoot(write(late, "late.dat"));
    EXPECT_EQ(outOfRangeMessage([&] { overshoot.gpsAtCT(seconds(3625.5)); }), "invalid vector<T> subscript");
}

TEST_F(TmFileTest, BatchConversionIsBitIdenticalToSingleConversions)
{
    std::vector<Mark> marks = regularMarks(40);
    marks.erase(marks.begin() + 20, marks.begin() + 23); // a gap the batch walks over
    TmFile tm(write(marks));

    // Lines at 800 Hz from 5.3 s; the line nearest each mark falls exactly on it.
    std::vector<double> ct = timingtest::bandCt(24000, 5.3);
    for (const Mark& mark : marks) {
        auto nearest = std::lower_bound(ct.begin(), ct.end(), mark.ctTime);
        if (nearest != ct.begin() && nearest != ct.end())
            *nearest = mark.ctTime;
    }
    ASSERT_TRUE(std::is_sorted(ct.begin(), ct.end()));
    tm.load(TmFile::CT_TYPE, seconds(ct.front()), seconds(ct.back()));

    auto expectSame = [&](const std::vector<double>& values) {
        std::vector<Seconds> batch(values.size());
        tm.gpsAtCT(values, batch);
        for (std::size_t k = 0; k < values.size(); ++k)
            ASSERT_EQ(batch[k].value(), tm.gpsAtCT(seconds(values[k])).value()) << "value " << k;
    };
    expectSame(ct);
    std::vector<double> shuffled = ct;
    std::swap(shuffled[10], shuffled[20000]);
    expectSame(shuffled);

    // On an exact hit of a mark the search's direction picks the bracket, and
    // the two brackets can differ in the last bit: here the first step is
    // shorter than the period, so the search stays below mark 1.
    std::vector<Mark> early{{0.0, 100.0}, {0.999955176, 100.9999358}};
    for (int i = 2; i < 10; ++i)
        early.push_back({early[1].gpsTime + (i - 1), early[1].ctTime + (i - 1)});
    TmFile nearWeekStart(write(early, "early.dat"));
    const double hit = early[1].ctTime;
    ASSERT_NE(nearWeekStart.gpsAtCT(seconds(hit)).value(), early[1].gpsTime);
    const std::vector<double> hits{hit, hit + 0.5, early[2].ctTime, early[2].ctTime + 0.25};
    std::vector<Seconds> hitTimes(hits.size());
    nearWeekStart.gpsAtCT(hits, hitTimes);
    for (std::size_t k = 0; k < hits.size(); ++k)
        EXPECT_EQ(hitTimes[k].value(), nearWeekStart.gpsAtCT(seconds(hits[k])).value()) << "value " << k;

    // A value the single conversion rejects fails the batch the same way.
    std::vector<double> beyond = ct;
    beyond.push_back(marks.back().ctTime);
    std::vector<Seconds> out(beyond.size());
    EXPECT_EQ(thrownMessage([&] { tm.gpsAtCT(beyond, out); }), "CTTime too big.");
    EXPECT_THROW(tm.gpsAtCT(ct, std::span<Seconds>(out).first(3)), std::invalid_argument);
}

// ---- The session's time-mark file ---------------------------------------------

TEST(SessionTimeMarks, TheSearchListsEveryFailedAttemptNewestFirst)
{
    testsupport::SessionDir directory;
    RecordingSession session(directory.path());
    const std::string noFolder = "Expected exactly one subdirectory under " + directory.path() + "/gps-imu/, but found 0";
    EXPECT_EQ(thrownMessage([&] { session.tmFile(); }),
              "Can't find a TM file for session " + session.name() + "\nList of messages while trying to access it:\n"
                  + "Could not get the GPS Imu directory name to look for tm*.dat files. Inner exception: " + noFolder
                  + "\n" + noFolder + "\n");

    timingtest::TimingSession files;
    timingtest::writeBytes(files.path() + "/gps-imu/S1/extract/tm_a.dat", timingtest::tmBytes(regularMarks(3)));
    timingtest::writeBytes(files.path() + "/gps-imu/S1/extract/tm_b.dat", timingtest::tmBytes(regularMarks(3)));
    const std::string message = thrownMessage([&] { files.session().tmFile(); });
    EXPECT_NE(message.find("\nMultiple tm*.dat files found; expected exactly one.\nList of error messages before this "
                           "one:\n"),
              std::string::npos)
        << message;

    // A *.tm file comes before tm*.dat files, and is then kept.
    const std::string tm = files.path() + "/gps-imu/S1/extract/S1.tm";
    timingtest::writeBytes(tm, timingtest::tmBytes(regularMarks(4)));
    TmFile& found = files.session().tmFile();
    EXPECT_EQ(found.name(), tm);
    EXPECT_EQ(&files.session().tmFile(), &found);
}
