// The trajectory readers on flights written by the flight simulator: records
// against the simulator's truth, interpolation against the true flight path,
// lookups against a brute-force reference, the GPS week boundary, damaged
// files, and the dataprep commands that print trajectories.

#include "../apps/flightsim/SimulatedFlight.h"
#include "TestSupport.h"

#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/SbetFile.h>
#include <datamodel/trajectory/SolFile.h>

#include <flightsim/FlightPlan.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SimulatedTrajectory.h>

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QProcess>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

using namespace datamodel;
using namespace flightfiles;
using testsupport::thrownMessage;

namespace {

constexpr double sPi = std::numbers::pi;
constexpr double sDeg = sPi / 180.0;

std::string sbetPath(const SimulatedFlight& flight)
{
    return flight.path(flight.trajectory()[QStringLiteral("sbet")]).toStdString();
}

std::string solPath(const SimulatedFlight& flight)
{
    return flight.path(flight.trajectory()[QStringLiteral("sol")]).toStdString();
}

ImuRecord recordAt(const ImuTrajectory& trajectory, double gpsSec)
{
    ImuRecord record;
    trajectory.getPosRecord(seconds(gpsSec), record);
    return record;
}

/// The difference of two angles in (-pi, pi].
double angleDifference(double a, double b)
{
    return wrapPi(a - b);
}

/// Linear interpolation of the SBET file's records at a time, written
/// independently of the library: a binary search over all records (week
/// already unwrapped in `times`), angles the short way round.
struct Reference {
    std::vector<SbetRecord> records;
    std::vector<double> times;

    explicit Reference(const QString& path)
        : records(readSbet(path))
    {
        for (const SbetRecord& r : records)
            times.push_back(r.time);
        times = unwrapWeek(times);
    }
    void expectAgrees(const ImuRecord& record, double unwrappedSec) const
    {
        const auto upper = std::lower_bound(times.begin(), times.end(), unwrappedSec);
        ASSERT_NE(upper, times.end());
        const std::size_t b = std::size_t(upper - times.begin());
        const std::size_t a = b == 0 ? 0 : b - 1;
        const double f = a == b ? 0.0 : (unwrappedSec - times[a]) / (times[b] - times[a]);
        const SbetRecord& ra = records[a];
        const SbetRecord& rb = records[b];
        EXPECT_NEAR(record.latitude, ra.lat + f * (rb.lat - ra.lat), 1e-13);
        EXPECT_NEAR(angleDifference(record.longitude, ra.lon + f * angleDifference(rb.lon, ra.lon)), 0.0, 1e-13);
        EXPECT_NEAR(record.height, ra.height + f * (rb.height - ra.height), 1e-9);
        EXPECT_NEAR(record.roll, ra.roll + f * (rb.roll - ra.roll), 1e-13);
        EXPECT_NEAR(record.pitch, ra.pitch + f * (rb.pitch - ra.pitch), 1e-13);
        EXPECT_NEAR(angleDifference(record.heading, ra.heading() + f * angleDifference(rb.heading(), ra.heading())), 0.0,
                    1e-12);
    }
};

flightsim::SimulationConfig longFlight(double durationSec)
{
    flightsim::SimulationConfig config = tinyConfig();
    config.durationSec = durationSec;
    return config;
}

} // namespace

TEST(SimulatedTrajectory, RecordsAtTruthSamplesAreTheTrueOnes)
{
    const SimulatedFlight flight(tinyConfig());
    const ImuTrajectory sbet(sbetPath(flight));
    const ImuTrajectory sol(solPath(flight));
    EXPECT_NE(dynamic_cast<const SbetFile*>(sbet.reader()), nullptr);
    EXPECT_NE(dynamic_cast<const SolFile*>(sol.reader()), nullptr);
    for (const ImuTrajectory* trajectory : {&sbet, &sol}) {
        EXPECT_EQ(trajectory->numSets(), flight.trajectory()[QStringLiteral("records")].toInt());
        EXPECT_TRUE(trajectory->hasStdDevs());
        EXPECT_FALSE(trajectory->hasGpsRollover());
        EXPECT_TRUE(trajectory->isMonotonicallyIncreasing());
        EXPECT_NEAR(trajectory->frequency(), 1.0 / flight.config().imuRateHz, 1e-9);
        for (const QJsonValue& value : flight.take(0)[QStringLiteral("exteriorOrientation")][QStringLiteral("samples")].toArray()) {
            const QJsonObject sample = value.toObject();
            const ImuRecord r = recordAt(*trajectory, sample[QStringLiteral("gpsSec")].toDouble());
            SCOPED_TRACE(sample[QStringLiteral("record")].toInt());
            EXPECT_EQ(r.time, sample[QStringLiteral("gpsSec")].toDouble());
            EXPECT_NEAR(r.latitude, sample[QStringLiteral("latDeg")].toDouble() * sDeg, 1e-12);
            EXPECT_NEAR(r.longitude, sample[QStringLiteral("lonDeg")].toDouble() * sDeg, 1e-12);
            EXPECT_NEAR(r.height, sample[QStringLiteral("heightM")].toDouble(), 1e-9);
            EXPECT_NEAR(r.roll, sample[QStringLiteral("rollRad")].toDouble(), 1e-12);
            EXPECT_NEAR(r.pitch, sample[QStringLiteral("pitchRad")].toDouble(), 1e-12);
            EXPECT_NEAR(angleDifference(r.heading, sample[QStringLiteral("headingRad")].toDouble()), 0.0, 1e-12);
        }
    }
}

TEST(SimulatedTrajectory, InterpolatedRecordsLieOnTheTrueFlightPath)
{
    // Calm air over two lines joined by a teardrop turn; the truth between
    // the records comes from the same flight simulated at twice the rate.
    flightsim::SimulationConfig config = tinyBlock(2);
    config.turbulence = 0.0;
    const SimulatedFlight flight(config);
    flightsim::SimulationConfig doubleRate = config;
    doubleRate.imuRateHz = 2.0 * config.imuRateHz;
    const flightsim::FlightPlan plan(doubleRate);
    const flightsim::LocalPlane plane(doubleRate.centerLatDeg, doubleRate.centerLonDeg, doubleRate.lineAzimuthDeg);
    const flightsim::SimulatedTrajectory truth(doubleRate, plan, plane, nullptr);

    const ImuTrajectory sbet(sbetPath(flight));
    const ImuTrajectory sol(solPath(flight));
    ASSERT_GE(truth.size(), std::size_t(2 * sbet.numSets() - 1));
    const double start = flight.startGpsSec();
    double largestRollError = 0.0;
    for (int k = 0; k + 1 < sbet.numSets(); k += 3) {
        const double t = start + (k + 0.5) / config.imuRateHz;
        const std::size_t i = std::size_t(2 * k + 1);
        const ImuRecord r = recordAt(sbet, t);
        SCOPED_TRACE(k);
        ASSERT_EQ(r.time, t);
        ASSERT_NEAR(r.latitude, truth.latRad()[i], 1e-10); // under a millimetre
        ASSERT_NEAR(angleDifference(r.longitude, truth.lonRad()[i]), 0.0, 1e-10);
        ASSERT_NEAR(r.height, truth.heightM()[i], 1e-6);
        ASSERT_NEAR(r.pitch, truth.pitchRad()[i], 1e-6);
        ASSERT_NEAR(angleDifference(r.heading, truth.headingRad()[i]), 0.0, 1e-6);
        // Roll ramps into and out of the turn at 5 deg/s: between two records
        // a bend in the ramp costs at most a quarter of a record's roll step.
        largestRollError = std::max(largestRollError, std::abs(r.roll - truth.rollRad()[i]));

        // The SOL file gives the same trajectory, and its deviations are the
        // smrmsg values the SBET reader interpolates.
        const ImuRecord s = recordAt(sol, t);
        ASSERT_EQ(s.latitude, r.latitude);
        ASSERT_EQ(s.roll, r.roll);
        ASSERT_NEAR(angleDifference(s.heading, r.heading), 0.0, 1e-12);
        for (std::size_t j = 0; j < 6; ++j)
            ASSERT_NEAR(s.stdDev()[j], r.stdDev()[j], 1e-6 * r.stdDev()[j]) << "deviation " << j;
    }
    EXPECT_LT(largestRollError, 0.25 * 5.0 * sDeg / config.imuRateHz);
    EXPECT_GT(largestRollError, 0.0);
}

TEST(SimulatedTrajectory, LookupsThroughTheSparseIndexAgreeWithAFullSearch)
{
    // Five minutes at 200 Hz: 60 001 records, six index entries.
    const SimulatedFlight flight(longFlight(300.0));
    const ImuTrajectory sbet(sbetPath(flight));
    const Reference reference(QString::fromStdString(sbetPath(flight)));
    ASSERT_EQ(std::size_t(sbet.numSets()), reference.records.size());
    EXPECT_EQ(sbet.reader()->indexEntries(), std::size_t(6));

    // The accuracy file read on its own, record by record.
    SbetFile::SmrmsFile accuracy(flight.path(flight.trajectory()[QStringLiteral("smrmsg")]).toStdString());
    auto accuracyAt = [&](double t) {
        ImuRecord record;
        accuracy.getRecord(seconds(t), record);
        return record.stdDev();
    };

    std::mt19937_64 random(11);
    const double first = reference.times.front();
    const double last = reference.times.back();
    std::uniform_real_distribution<double> uniform(first, last);
    for (int n = 0; n < 20000; ++n) {
        const double t = uniform(random);
        const ImuRecord r = recordAt(sbet, t);
        // Within a microsecond of a record, that record itself.
        if (r.time != t) {
            ASSERT_LT(std::abs(r.time - t), 1e-6);
        }
        reference.expectAgrees(r, r.time);
        // The deviations: the accuracy file's at the two record times,
        // interpolated at t, to the last bit.
        if (r.time == t) {
            const std::size_t b = std::size_t(std::lower_bound(reference.times.begin(), reference.times.end(), t)
                                              - reference.times.begin());
            const double ta = reference.times[b - 1];
            const double tb = reference.times[b];
            const auto sa = accuracyAt(ta);
            const auto sb = accuracyAt(tb);
            for (std::size_t k = 0; k < 6; ++k)
                ASSERT_EQ(r.stdDev()[k], float(PosFile::linear(sa[k], sb[k], ta, tb, t))) << "deviation " << k;
        }
        if (HasFailure())
            FAIL() << "at " << t;
    }
    reference.expectAgrees(recordAt(sbet, last), last);
    EXPECT_EQ(thrownMessage([&] { recordAt(sbet, last + 0.001); }),
              "GPS time is out side of recording time for the trajectory.");
}

TEST(SimulatedTrajectory, FlightAcrossTheWeekBoundaryIsServedInTheNextWeek)
{
    // 604790 to 10: the end of GPS week 2418 is 2026-05-16 23:59:42 UTC.
    flightsim::SimulationConfig config = longFlight(20.0);
    config.startUtc = QDateTime(QDate(2026, 5, 16), QTime(23, 59, 32), Qt::UTC);
    const SimulatedFlight flight(config);
    const ImuTrajectory sbet(sbetPath(flight));
    const Reference reference(QString::fromStdString(sbetPath(flight)));
    ASSERT_EQ(reference.records.front().time, 604790.0);
    ASSERT_NEAR(reference.records.back().time, 10.0, 1e-9);

    EXPECT_TRUE(sbet.hasGpsRollover());
    EXPECT_TRUE(sbet.isMonotonicallyIncreasing());
    EXPECT_TRUE(sbet.containsGpsTime(seconds(5.0)));
    EXPECT_TRUE(sbet.containsGpsTime(seconds(604795.0)));
    EXPECT_FALSE(sbet.containsGpsTime(seconds(20.0)));
    EXPECT_FALSE(sbet.containsGpsTime(seconds(604789.0)));
    // 5 s into the new week is record 3000, served as 604805.
    const ImuRecord five = recordAt(sbet, 5.0);
    EXPECT_EQ(five.time, reference.records[3000].time);
    EXPECT_EQ(five.latitude, reference.records[3000].lat);
    // The SOL file carries per record the deviations that the SBET reader
    // interpolates from the smrmsg file, on both sides of the boundary.
    const ImuTrajectory sol(solPath(flight));
    for (double t : {5.0025, 604799.9975, 604799.999, 0.0001, 9.9999}) {
        const ImuRecord r = recordAt(sbet, t);
        reference.expectAgrees(r, t < 604790.0 ? t + 604800.0 : t);
        const ImuRecord s = recordAt(sol, t);
        for (std::size_t j = 0; j < 6; ++j)
            EXPECT_NEAR(s.stdDev()[j], r.stdDev()[j], 1e-6 * r.stdDev()[j]) << "at " << t << ", deviation " << j;
    }
    EXPECT_EQ(thrownMessage([&] { recordAt(sbet, 20.0); }), "GPS time is out side of recording time for the trajectory.");
    EXPECT_EQ(thrownMessage([&] { sbet.checkAngularRates(seconds(604795.0), seconds(5.0), 50.0); }), "<nothing thrown>");
}

TEST(SimulatedTrajectory, DamagedFilesAreReadAsFarAsTheyGo)
{
    QTemporaryDir copies;
    {
        // The SBET cut inside its last record: the complete records remain.
        flightsim::SimulationConfig config = tinyConfig();
        config.faults.add(flightsim::Fault::TruncatedTrajectory);
        const SimulatedFlight flight(config);
        const QJsonObject fault = flight.faults(QStringLiteral("truncated-trajectory")).at(0);
        const ImuTrajectory sbet(sbetPath(flight));
        EXPECT_EQ(sbet.numSets(), fault[QStringLiteral("completeRecords")].toInt());
        const double lastSec = flight.trajectory()[QStringLiteral("last")][QStringLiteral("gpsSec")].toDouble();
        EXPECT_EQ(sbet.reader()->endTime().value(), lastSec);
        EXPECT_EQ(recordAt(sbet, lastSec).time, lastSec);
    }
    {
        // Record 24 000 overwritten with record 100: the file is indexed
        // record by record and still answers away from the damage.
        const SimulatedFlight flight(longFlight(150.0));
        QByteArray bytes = readAll(QString::fromStdString(sbetPath(flight)));
        bytes.replace(24000 * 136, 136, bytes.mid(100 * 136, 136));
        const QString damaged = copies.filePath(QStringLiteral("sbet_damaged.out"));
        QFile file(damaged);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        const ImuTrajectory sbet(damaged.toStdString());
        EXPECT_FALSE(sbet.isMonotonicallyIncreasing());
        EXPECT_FALSE(sbet.hasStdDevs()); // no smrmsg beside the copy
        EXPECT_EQ(sbet.reader()->indexEntries(), std::size_t(sbet.numSets() - 1));
        const Reference reference(QString::fromStdString(sbetPath(flight)));
        for (int k : {5, 5000, 23000, 25000, 29000}) {
            const double t = reference.times[std::size_t(k)] + 0.002;
            reference.expectAgrees(recordAt(sbet, t), t);
        }
    }
}

TEST(SimulatedTrajectory, AngularRateCheckFindsTheHeavyTurbulence)
{
    flightsim::SimulationConfig config = tinyConfig();
    config.faults.add(flightsim::Fault::HeavyTurbulence);
    const SimulatedFlight flight(config);
    const ImuTrajectory sbet(sbetPath(flight));
    const std::vector<SbetRecord> records = readSbet(QString::fromStdString(sbetPath(flight)));
    const double limitDeg = 2.0;
    int expected = 0;
    for (std::size_t k = 1; k < records.size(); ++k) {
        const double dt = records[k].time - records[k - 1].time;
        if (std::abs(records[k].roll - records[k - 1].roll) / dt >= limitDeg * sDeg
            || std::abs(records[k].pitch - records[k - 1].pitch) / dt >= limitDeg * sDeg)
            ++expected;
    }
    ASSERT_GT(expected, 0);
    EXPECT_EQ(thrownMessage([&] { sbet.checkAngularRates(seconds(-1.0), seconds(-1.0), limitDeg); }),
              "There were " + std::to_string(expected)
                  + " occurrences of the angular velocity exceeding the limit of 2.000 deg/s");

    // Normal turbulence stays below the limit.
    const SimulatedFlight calm(tinyConfig());
    const ImuTrajectory calmSbet(sbetPath(calm));
    EXPECT_EQ(thrownMessage([&] { calmSbet.checkAngularRates(seconds(-1.0), seconds(-1.0), limitDeg); }),
              "<nothing thrown>");
}

#ifdef DATAPREP_EXECUTABLE
namespace {

struct ProgramRun {
    int exitCode = -1;
    QByteArray out;
};

ProgramRun dataprep(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(DATAPREP_EXECUTABLE), arguments);
    ProgramRun run;
    if (!process.waitForFinished(60000))
        return run;
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    return run;
}

QJsonObject json(const QByteArray& bytes)
{
    return QJsonDocument::fromJson(bytes).object();
}

} // namespace

TEST(SimulatedTrajectory, DataprepInspectsAndInterpolatesTrajectoryFiles)
{
    flightsim::SimulationConfig config = longFlight(20.0);
    config.startUtc = QDateTime(QDate(2026, 5, 16), QTime(23, 59, 32), Qt::UTC);
    const SimulatedFlight flight(config);
    const QString sbet = QString::fromStdString(sbetPath(flight));
    const QString smrmsg = flight.path(flight.trajectory()[QStringLiteral("smrmsg")]);
    const QString sol = QString::fromStdString(solPath(flight));

    const ProgramRun inspected = dataprep({QStringLiteral("inspect"), sbet, QStringLiteral("--json")});
    ASSERT_EQ(inspected.exitCode, 0);
    const QJsonObject fields = json(inspected.out)[QStringLiteral("trajectory")].toObject();
    EXPECT_EQ(fields[QStringLiteral("format")].toString(), QStringLiteral("SBET"));
    EXPECT_EQ(fields[QStringLiteral("records")].toInt(), 4001);
    EXPECT_EQ(fields[QStringLiteral("gpsStartSec")].toDouble(), 604790.0);
    EXPECT_NEAR(fields[QStringLiteral("gpsEndSec")].toDouble(), 10.0, 1e-9);
    EXPECT_TRUE(fields[QStringLiteral("gpsRollover")].toBool());
    EXPECT_TRUE(fields[QStringLiteral("ordered")].toBool());
    EXPECT_NEAR(fields[QStringLiteral("recordIntervalSec")].toDouble(), 0.005, 1e-9);
    EXPECT_TRUE(fields[QStringLiteral("hasStdDevs")].toBool());
    EXPECT_EQ(fields[QStringLiteral("accuracyFile")].toString(), smrmsg);

    const QJsonObject accuracy =
        json(dataprep({QStringLiteral("inspect"), smrmsg, QStringLiteral("--json")}).out)[QStringLiteral("trajectory")].toObject();
    EXPECT_EQ(accuracy[QStringLiteral("format")].toString(), QStringLiteral("smrmsg"));
    EXPECT_EQ(accuracy[QStringLiteral("records")].toInt(), flight.trajectory()[QStringLiteral("accuracyRecords")].toInt());
    const QJsonObject solFields =
        json(dataprep({QStringLiteral("inspect"), sol, QStringLiteral("--json")}).out)[QStringLiteral("trajectory")].toObject();
    EXPECT_EQ(solFields[QStringLiteral("format")].toString(), QStringLiteral("SOL"));
    EXPECT_EQ(solFields[QStringLiteral("recordBytes")].toInt(), 184);
    EXPECT_TRUE(solFields[QStringLiteral("gpsRollover")].toBool());

    const ProgramRun printed = dataprep({QStringLiteral("trajectory"), sbet, QStringLiteral("--at"), QStringLiteral("604799.9975"),
                                  QStringLiteral("5.0025"), QStringLiteral("--json")});
    ASSERT_EQ(printed.exitCode, 0) << printed.out.constData();
    const QJsonArray records = json(printed.out)[QStringLiteral("samples")].toArray();
    ASSERT_EQ(records.size(), 2);
    const ImuTrajectory trajectory(sbetPath(flight));
    for (int i = 0; i < 2; ++i) {
        const QJsonObject printedRecord = records[i].toObject();
        const ImuRecord r = recordAt(trajectory, printedRecord[QStringLiteral("gpsSec")].toDouble());
        EXPECT_EQ(printedRecord[QStringLiteral("latitudeRad")].toDouble(), r.latitude);
        EXPECT_EQ(printedRecord[QStringLiteral("headingRad")].toDouble(), r.heading);
        EXPECT_EQ(printedRecord[QStringLiteral("stdDev")][QStringLiteral("eastM")].toDouble(), double(r.stdDev()[1]));
    }

    const ProgramRun outside = dataprep({QStringLiteral("trajectory"), sol, QStringLiteral("--at"), QStringLiteral("20"),
                                  QStringLiteral("--json")});
    EXPECT_EQ(outside.exitCode, 1);
    EXPECT_EQ(json(outside.out)[QStringLiteral("samples")].toArray().at(0)[QStringLiteral("error")].toString(),
              QStringLiteral("GPS time is out side of recording time for the trajectory."));
}
#endif
