// ImuTrajectory: which reader a file gets, how copies hand the reader over,
// the east/north order of the standard deviations, the angular-rate check
// and the validation walk.

#include "TestSupport.h"
#include "TrajectoryWriters.h"

#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/SbetFile.h>
#include <datamodel/trajectory/SolFile.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cmath>

using namespace datamodel;
using namespace trajectorytest;
using testsupport::thrownMessage;

namespace {

const char* const sNotOpen = "Trajectory file is not open.";

/// Ten seconds at 10 Hz from 2000 s with an SBET accuracy file.
std::string writeSbetPair(const QTemporaryDir& dir, const QString& id)
{
    write(dir, QStringLiteral("smrmsg_") + id + QStringLiteral(".out"),
          accuracyBytes({{2000.0, 0.05, 0.10, 0.15, 1.0, 2.0, 3.0}, {2010.0, 0.05, 0.10, 0.15, 1.0, 2.0, 3.0}}));
    return write(dir, QStringLiteral("sbet_") + id + QStringLiteral(".out"), sbetBytes(regularSbet(101, 2000.0, 0.1)));
}

/// Roll and pitch that change at `rateDegPerSec` between every two records
/// (0.1 s apart), with the given exceptions.
std::vector<SbetRow> rollingSbet(double rateDegPerSec)
{
    std::vector<SbetRow> rows = regularSbet(101, 3000.0, 0.1);
    for (std::size_t k = 0; k < rows.size(); ++k) {
        rows[k].rollRad = rateDegPerSec * sDeg * 0.1 * double(k);
        rows[k].pitchRad = 0.05 - rateDegPerSec * sDeg * 0.1 * double(k);
        // The heading swings far faster; it is not checked.
        rows[k].platformHeadingRad = (k % 2 ? 20.0 : -20.0) * sDeg;
    }
    return rows;
}

class TrajectoryVisits : public ValidationTraverser {
public:
    using ValidationTraverser::validate;
    void validate(ImuTrajectory& trajectory) override { visited = &trajectory; }
    ImuTrajectory* visited = nullptr;
};

} // namespace

TEST(ImuTrajectory, TriesSolFirstThenSbet)
{
    QTemporaryDir dir;
    const ImuTrajectory sbet(writeSbetPair(dir, QStringLiteral("a")));
    EXPECT_NE(dynamic_cast<const SbetFile*>(sbet.reader()), nullptr);
    EXPECT_EQ(sbet.numSets(), 101);
    EXPECT_TRUE(sbet.hasStdDevs());
    EXPECT_NEAR(sbet.frequency(), 0.1, 1e-9);

    // SOL content wins whatever the name says.
    const std::string solPath = write(dir, "sbet_b.out", solBytes({{100.0}, {100.5}}));
    const ImuTrajectory sol(solPath);
    EXPECT_NE(dynamic_cast<const SolFile*>(sol.reader()), nullptr);
    EXPECT_EQ(sol.fileName(), solPath);

    // A file that is neither: the SBET attempt's message.
    const std::string bad = write(dir, "neither.dat", sbetBytes(regularSbet(2, 10.0, 1.0)));
    EXPECT_EQ(thrownMessage([&] { ImuTrajectory t(bad); }), bad + " is not a Sbet file.");
    // Opened on its own, the reader says why neither reader took the file.
    EXPECT_EQ(thrownMessage([&] { ImuTrajectory::openReader(bad); }),
              bad + " is neither a SOL nor an SBET file (SOL reader: First record is not valid.; SBET reader: " + bad
                  + " is not a Sbet file.)");
    EXPECT_NE(dynamic_cast<const SolFile*>(ImuTrajectory(ImuTrajectory::openReader(solPath)).reader()), nullptr);
    const std::string empty = write(dir, "empty_sbet.out", {});
    EXPECT_EQ(thrownMessage([&] { ImuTrajectory t(empty); }), "Failed to read first record from file.");
    const std::string missing = dir.filePath("missing.sol").toStdString();
    EXPECT_EQ(thrownMessage([&] { ImuTrajectory t(missing); }), "Could not open " + missing);
}

TEST(ImuTrajectory, CopiesTakeTheReaderAndLeaveTheSourceWithout)
{
    QTemporaryDir dir;
    const std::string pathA = writeSbetPair(dir, QStringLiteral("a"));
    const std::string pathB = writeSbetPair(dir, QStringLiteral("b"));
    ImuTrajectory a(pathA);
    ImuTrajectory copy(a);
    EXPECT_EQ(copy.fileName(), pathA);
    EXPECT_EQ(copy.numSets(), 101);
    EXPECT_EQ(a.reader(), nullptr);
    EXPECT_EQ(a.numSets(), 0);
    EXPECT_FALSE(a.hasStdDevs());

    ImuRecord record;
    float x, y, z, omega, phi, kappa;
    EXPECT_EQ(thrownMessage([&] { a.fileName(); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.frequency(); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.hasGpsRollover(); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.containsGpsTime(seconds(2001.0)); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.getPosRecord(0, record); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.getPosRecord(seconds(2001.0), record); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.stdDevAtIndex(0, x, y, z, omega, phi, kappa); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.stdDevAtGPS(seconds(2001.0), x, y, z, omega, phi, kappa); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.checkAngularRates(seconds(-1.0), seconds(-1.0), 2.0); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.isMonotonicallyIncreasing(); }), sNotOpen);
    EXPECT_EQ(thrownMessage([&] { a.close(); }), sNotOpen);

    // Assignment replaces the destination's reader; assigning a trajectory
    // to itself keeps it.
    ImuTrajectory b(pathB);
    b = copy;
    EXPECT_EQ(b.fileName(), pathA);
    EXPECT_EQ(copy.reader(), nullptr);
    const PosFile* reader = b.reader();
    ImuTrajectory& same = b;
    b = same;
    EXPECT_EQ(b.reader(), reader);
    // A moved-from trajectory can take a reader again.
    a = b;
    EXPECT_EQ(a.fileName(), pathA);
    a.getPosRecord(seconds(2000.05), record);
    EXPECT_EQ(record.time, 2000.05);
}

TEST(ImuTrajectory, StandardDeviationsAreHandedOutEastFirst)
{
    QTemporaryDir dir;
    const ImuTrajectory sbet(writeSbetPair(dir, QStringLiteral("sd")));
    float x, y, z, omega, phi, kappa;
    sbet.stdDevAtIndex(40, x, y, z, omega, phi, kappa);
    EXPECT_FLOAT_EQ(x, 0.10f); // east
    EXPECT_FLOAT_EQ(y, 0.05f); // north
    EXPECT_FLOAT_EQ(z, 0.15f);
    EXPECT_FLOAT_EQ(omega, float(1.0 / 60.0 * sDeg));
    EXPECT_FLOAT_EQ(phi, float(2.0 / 60.0 * sDeg));
    EXPECT_FLOAT_EQ(kappa, float(3.0 / 60.0 * sDeg));
    sbet.stdDevAtGPS(seconds(2004.05), x, y, z, omega, phi, kappa);
    EXPECT_FLOAT_EQ(x, 0.10f);
    EXPECT_FLOAT_EQ(y, 0.05f);
    EXPECT_EQ(thrownMessage([&] { sbet.stdDevAtIndex(101, x, y, z, omega, phi, kappa); }), "Index out of bounds.");

    // Setting deviations has no effect on a file's trajectory.
    ImuTrajectory writable(sbet);
    writable.setStdDevs(40, 1, 1, 1, 1, 1, 1);
    writable.setDefaultStdDevs(1, 1, 1, 1, 1, 1);
    writable.stdDevAtIndex(40, x, y, z, omega, phi, kappa);
    EXPECT_FLOAT_EQ(x, 0.10f);
}

TEST(ImuTrajectory, AngularRateCheckCountsRollAndPitchRatesAtOrAboveTheLimit)
{
    QTemporaryDir dir;
    std::vector<SbetRow> rows = rollingSbet(1.0);
    // Between records 30 and 31 roll steps at 3 deg/s, between 70 and 71
    // pitch at -2.5 deg/s (1 and 2 more than the steady rate).
    for (std::size_t k = 31; k < rows.size(); ++k)
        rows[k].rollRad += 0.2 * sDeg;
    for (std::size_t k = 71; k < rows.size(); ++k)
        rows[k].pitchRad -= 0.15 * sDeg;
    const ImuTrajectory trajectory(write(dir, "rates_sbet.out", sbetBytes(rows)));

    EXPECT_EQ(thrownMessage([&] { trajectory.checkAngularRates(seconds(-1.0), seconds(-1.0), 2.0); }),
              "There were 2 occurrences of the angular velocity exceeding the limit of 2.000 deg/s");
    EXPECT_EQ(thrownMessage([&] { trajectory.checkAngularRates(seconds(-1.0), seconds(-1.0), 2.75); }),
              "There were 1 occurrences of the angular velocity exceeding the limit of 2.750 deg/s");
    EXPECT_EQ(thrownMessage([&] { trajectory.checkAngularRates(seconds(-1.0), seconds(-1.0), 3.5); }), "<nothing thrown>");
    // The range runs from the record at or before the start to the one at or
    // after the end: 3000.05 .. 3003.05 takes in records 0 to 31.
    EXPECT_EQ(thrownMessage([&] { trajectory.checkAngularRates(seconds(3000.05), seconds(3003.05), 2.0); }),
              "There were 1 occurrences of the angular velocity exceeding the limit of 2.000 deg/s");
    EXPECT_EQ(thrownMessage([&] { trajectory.checkAngularRates(seconds(3000.05), seconds(3002.95), 2.0); }),
              "<nothing thrown>");
    EXPECT_EQ(thrownMessage([&] { trajectory.checkAngularRates(seconds(3000.0), seconds(3020.0), 2.0); }),
              "GPS time is out side of recording time for the trajectory.");
}

TEST(ImuTrajectory, AngularRateCheckWorksAcrossTheWeekBoundary)
{
    QTemporaryDir dir;
    std::vector<SbetRow> rows = rollingSbet(1.5);
    for (std::size_t k = 0; k < rows.size(); ++k)
        rows[k].time = std::fmod(604795.0 + 0.1 * double(k), 604800.0);
    const ImuTrajectory trajectory(write(dir, "week_sbet.out", sbetBytes(rows)));
    EXPECT_TRUE(trajectory.hasGpsRollover());
    EXPECT_TRUE(trajectory.containsGpsTime(seconds(4.0)));
    EXPECT_FALSE(trajectory.containsGpsTime(seconds(5.5)));
    EXPECT_EQ(thrownMessage([&] { trajectory.checkAngularRates(seconds(-1.0), seconds(-1.0), 1.6); }), "<nothing thrown>");
    EXPECT_EQ(thrownMessage([&] { trajectory.checkAngularRates(seconds(604799.0), seconds(1.0), 1.4); }),
              "There were 20 occurrences of the angular velocity exceeding the limit of 1.400 deg/s");
}

TEST(ImuTrajectory, TraverseVisitsTheTrajectoryAndCloseKeepsTheReader)
{
    QTemporaryDir dir;
    ImuTrajectory trajectory(writeSbetPair(dir, QStringLiteral("walk")));
    TrajectoryVisits traverser;
    traverser.traverse(trajectory);
    EXPECT_EQ(traverser.visited, &trajectory);
    ValidationTraverser plain;
    plain.traverse(trajectory);

    EXPECT_TRUE(trajectory.isMonotonicallyIncreasing());
    trajectory.close();
    EXPECT_EQ(trajectory.numSets(), 101);
    ImuRecord record;
    EXPECT_EQ(thrownMessage([&] { trajectory.getPosRecord(3, record); }), "Seek error.");
    EXPECT_EQ(thrownMessage([&] { trajectory.getPosRecord(seconds(2001.05), record); }), "Seek error.");
}
