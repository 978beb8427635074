// The SBET, smrmsg and SOL files of simulated flights: counts, times, first
// and last records against the truth, the three files against each other,
// and the motion against the laws it should obey.

#include "SimulatedFlight.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace flightfiles;

namespace {

constexpr double sDeg = std::numbers::pi / 180.0;

void expectRecordEquals(const SbetRecord& record, const QJsonObject& truth)
{
    EXPECT_EQ(record.time, truth[QStringLiteral("gpsSec")].toDouble());
    EXPECT_EQ(record.lat, truth[QStringLiteral("latRad")].toDouble());
    EXPECT_EQ(record.lon, truth[QStringLiteral("lonRad")].toDouble());
    EXPECT_EQ(record.height, truth[QStringLiteral("heightM")].toDouble());
    EXPECT_EQ(record.roll, truth[QStringLiteral("rollRad")].toDouble());
    EXPECT_EQ(record.pitch, truth[QStringLiteral("pitchRad")].toDouble());
    EXPECT_EQ(record.platformHeading, truth[QStringLiteral("platformHeadingRad")].toDouble());
    EXPECT_EQ(record.wander, truth[QStringLiteral("wanderRad")].toDouble());
    EXPECT_NEAR(record.heading(), truth[QStringLiteral("headingRad")].toDouble(), 1e-12);
}

} // namespace

TEST(FlightsimTrajectory, SbetRecordsMatchTheTruth)
{
    const SimulatedFlight flight(tinyConfig());
    const QJsonObject trajectory = flight.trajectory();
    const QString path = flight.path(trajectory[QStringLiteral("sbet")]);
    EXPECT_EQ(readAll(path).size() % 136, 0);
    const std::vector<SbetRecord> sbet = readSbet(path);

    // 12 s at 200 Hz, both ends included.
    ASSERT_EQ(sbet.size(), std::size_t(trajectory[QStringLiteral("records")].toInt()));
    EXPECT_EQ(sbet.size(), std::size_t(2401));
    EXPECT_EQ(sbet.front().time, flight.startGpsSec());
    expectRecordEquals(sbet.front(), trajectory[QStringLiteral("first")].toObject());
    expectRecordEquals(sbet.back(), trajectory[QStringLiteral("last")].toObject());
    for (std::size_t k = 1; k < sbet.size(); ++k)
        ASSERT_NEAR(sbet[k].time - sbet[k - 1].time, 0.005, 1e-9) << "record " << k;
    for (const SbetRecord& r : sbet) {
        ASSERT_GT(r.platformHeading, -std::numbers::pi);
        ASSERT_LE(r.platformHeading, std::numbers::pi);
        ASSERT_LE(std::abs(r.wander), std::numbers::pi);
    }
}

TEST(FlightsimTrajectory, MotionObeysTheFlightPlanAndCoordinatedTurns)
{
    // Calm air, so that attitude and track follow the plan exactly.
    flightsim::SimulationConfig config = tinyBlock(3);
    config.turbulence = 0.0;
    const SimulatedFlight flight(config);
    const std::vector<SbetRecord> sbet = readSbet(flight.path(flight.trajectory()[QStringLiteral("sbet")]));
    ASSERT_GT(sbet.size(), std::size_t(1000));
    const double dt = 1.0 / config.imuRateHz;
    const double flyingHeight = config.terrainHeightM + config.heightAboveTerrainM;

    double largestBankDeg = 0.0;
    for (std::size_t k = 1; k + 1 < sbet.size(); ++k) {
        const SbetRecord& a = sbet[k - 1];
        const SbetRecord& b = sbet[k + 1];
        const SbetRecord& r = sbet[k];
        double e = 0.0, n = 0.0, u = 0.0;
        // The ground speed (of the point below the aircraft) is the planned one.
        enuStep(r.lat, r.lon, toEcef(a.lat, a.lon, 0.0), toEcef(b.lat, b.lon, 0.0), e, n, u);
        ASSERT_NEAR(std::hypot(e, n) / (2 * dt), config.speedMps, 0.001) << "record " << k;
        // Height stays as planned, and the stored velocity is the velocity of
        // the positions.
        enuStep(r.lat, r.lon, toEcef(a.lat, a.lon, a.height), toEcef(b.lat, b.lon, b.height), e, n, u);
        ASSERT_NEAR(r.height, flyingHeight, 1e-6);
        ASSERT_NEAR(r.velocityNorth(), n / (2 * dt), 1e-3);
        ASSERT_NEAR(r.velocityEast(), e / (2 * dt), 1e-3);
        ASSERT_NEAR(r.vz, 0.0, 1e-3);
        // Heading along the track, pitch at the trim.
        ASSERT_NEAR(wrapPi(r.heading() - std::atan2(e, n)), 0.0, 1e-6) << "record " << k;
        ASSERT_NEAR(r.pitch, config.pitchTrimDeg * sDeg, 1e-6);
        // Roll is the bank of a coordinated turn at the heading's rate.
        const double headingRate = wrapPi(b.heading() - a.heading()) / (2 * dt);
        const double coordinated = std::atan(config.speedMps * headingRate / 9.80665);
        ASSERT_NEAR(r.roll, coordinated, 0.2 * sDeg) << "record " << k;
        largestBankDeg = std::max(largestBankDeg, std::abs(r.roll) / sDeg);
    }
    // Lines 400 m apart are joined by teardrop turns at the largest bank.
    EXPECT_NEAR(largestBankDeg, config.maxBankDeg, 0.1);

    // The next line starts where the last one ended (give or take one line
    // period of flight), one line spacing across.
    for (int i = 0; i + 1 < 3; ++i) {
        const QJsonObject stop = flight.take(i)[QStringLiteral("stop")].toObject();
        const QJsonObject start = flight.take(i + 1)[QStringLiteral("start")].toObject();
        const Ecef a = toEcef(stop[QStringLiteral("latDeg")].toDouble() * sDeg, stop[QStringLiteral("lonDeg")].toDouble() * sDeg, 0);
        const Ecef b = toEcef(start[QStringLiteral("latDeg")].toDouble() * sDeg, start[QStringLiteral("lonDeg")].toDouble() * sDeg, 0);
        EXPECT_NEAR(std::hypot(a.x - b.x, a.y - b.y, a.z - b.z), config.lineSpacingM, 0.1) << "after take " << i + 1;
    }
}

TEST(FlightsimTrajectory, AccuracyAndSolFilesAgreeWithTheSbet)
{
    const SimulatedFlight flight(tinyConfig());
    const QJsonObject trajectory = flight.trajectory();
    const std::vector<SbetRecord> sbet = readSbet(flight.path(trajectory[QStringLiteral("sbet")]));
    const QString accuracyPath = flight.path(trajectory[QStringLiteral("smrmsg")]);
    const QString solPath = flight.path(trajectory[QStringLiteral("sol")]);
    EXPECT_EQ(readAll(accuracyPath).size() % 80, 0);
    EXPECT_EQ(readAll(solPath).size() % 184, 0);
    const std::vector<AccuracyRecord> accuracy = readAccuracy(accuracyPath);
    const std::vector<SolRecord> sol = readSol(solPath);

    // One accuracy record a second, from the first SBET record to the last.
    ASSERT_EQ(accuracy.size(), std::size_t(trajectory[QStringLiteral("accuracyRecords")].toInt()));
    EXPECT_EQ(accuracy.size(), std::size_t(13));
    EXPECT_EQ(accuracy.front().time, sbet.front().time);
    EXPECT_EQ(accuracy.back().time, sbet.back().time);
    for (std::size_t i = 1; i < accuracy.size(); ++i)
        EXPECT_NEAR(accuracy[i].time - accuracy[i - 1].time, 1.0, 1e-9);
    const QJsonObject firstAccuracy = trajectory[QStringLiteral("firstAccuracy")].toObject();
    const QJsonObject lastAccuracy = trajectory[QStringLiteral("lastAccuracy")].toObject();
    EXPECT_EQ(accuracy.front().north, firstAccuracy[QStringLiteral("northM")].toDouble());
    EXPECT_EQ(accuracy.front().headingArcmin, firstAccuracy[QStringLiteral("headingArcmin")].toDouble());
    EXPECT_EQ(accuracy.back().down, lastAccuracy[QStringLiteral("downM")].toDouble());
    EXPECT_EQ(accuracy.back().rollArcmin, lastAccuracy[QStringLiteral("rollArcmin")].toDouble());
    for (const AccuracyRecord& a : accuracy) {
        for (double metres : {a.north, a.east, a.down})
            EXPECT_TRUE(metres > 0.0 && metres < 0.2);
        for (double arcmin : {a.rollArcmin, a.pitchArcmin, a.headingArcmin})
            EXPECT_TRUE(arcmin > 0.05 && arcmin < 2.0);
    }

    // The SOL file holds the SBET's records with the default header,
    // true heading, and the accuracy in arc seconds.
    ASSERT_EQ(sol.size(), sbet.size());
    const QByteArray header = QByteArray::fromHex("BB55B80001002" "3FF00000000C5090000") + QByteArray(2, '\0');
    for (std::size_t k = 0; k < sol.size(); ++k) {
        ASSERT_EQ(sol[k].header, header) << "record " << k;
        ASSERT_EQ(sol[k].unused, QByteArray(70, '\0'));
        ASSERT_EQ(sol[k].time, sbet[k].time);
        ASSERT_EQ(sol[k].lat, sbet[k].lat);
        ASSERT_EQ(sol[k].lon, sbet[k].lon);
        ASSERT_EQ(sol[k].height, sbet[k].height);
        ASSERT_EQ(sol[k].roll, sbet[k].roll);
        ASSERT_EQ(sol[k].pitch, sbet[k].pitch);
        ASSERT_NEAR(wrapPi(sol[k].heading - sbet[k].heading()), 0.0, 1e-12);
    }
    // At accuracy times the SOL deviations are the smrmsg values; between
    // them, the linear interpolation of their neighbours.
    for (std::size_t i = 0; i + 1 < accuracy.size(); ++i) {
        const std::size_t k = std::size_t(std::lround((accuracy[i].time - sbet.front().time) * 200.0));
        EXPECT_FLOAT_EQ(sol[k].sdNorth, float(accuracy[i].north));
        EXPECT_FLOAT_EQ(sol[k].sdDown, float(accuracy[i].down));
        EXPECT_FLOAT_EQ(sol[k].sdRollArcsec, float(accuracy[i].rollArcmin * 60.0));
        EXPECT_FLOAT_EQ(sol[k].sdHeadingArcsec, float(accuracy[i].headingArcmin * 60.0));
        const std::size_t middle = k + 100;
        EXPECT_NEAR(sol[middle].sdEast, 0.5 * (accuracy[i].east + accuracy[i + 1].east), 1e-6);
        EXPECT_NEAR(sol[middle].sdPitchArcsec, 30.0 * (accuracy[i].pitchArcmin + accuracy[i + 1].pitchArcmin), 1e-3);
    }
}

TEST(FlightsimTrajectory, FlightAcrossTheAntimeridianAndAWeekBoundaryStaysContinuous)
{
    // The flight crosses longitude 180 and, five seconds in, the end of GPS
    // week 2418 (2026-05-17 00:00:00 GPS is 2026-05-16 23:59:42 UTC).
    flightsim::SimulationConfig config = tinyConfig();
    config.centerLonDeg = 179.9999;
    config.centerLatDeg = -33.5;
    config.lineAzimuthDeg = 80.0;
    config.startUtc = QDateTime(QDate(2026, 5, 16), QTime(23, 59, 37), Qt::UTC);
    const SimulatedFlight flight(config);
    const std::vector<SbetRecord> sbet = readSbet(flight.path(flight.trajectory()[QStringLiteral("sbet")]));

    EXPECT_EQ(flight.truth()[QStringLiteral("time")][QStringLiteral("gpsWeek")].toInt(), 2418);
    EXPECT_EQ(sbet.front().time, 604795.0);
    EXPECT_NEAR(sbet.back().time, 7.0, 1e-9);
    bool east = false, west = false;
    for (std::size_t k = 1; k < sbet.size(); ++k) {
        east = east || sbet[k].lon > 179.99 * sDeg;
        west = west || sbet[k].lon < -179.99 * sDeg;
        const Ecef a = toEcef(sbet[k - 1].lat, sbet[k - 1].lon, sbet[k - 1].height);
        const Ecef b = toEcef(sbet[k].lat, sbet[k].lon, sbet[k].height);
        ASSERT_NEAR(std::hypot(a.x - b.x, a.y - b.y, a.z - b.z), config.speedMps / config.imuRateHz, 0.01) << "record " << k;
        const double step = sbet[k].time - sbet[k - 1].time;
        ASSERT_NEAR(step < 0 ? step + 604800.0 : step, 0.005, 1e-9);
    }
    EXPECT_TRUE(east && west);

    const std::vector<TimeMark> marks = readTimeMarks(flight.path(flight.truth()[QStringLiteral("timeMarks")][QStringLiteral("file")]));
    ASSERT_GE(marks.size(), std::size_t(12));
    EXPECT_EQ(marks[4].gps, 604799.0);
    EXPECT_EQ(marks[5].gps, 0.0);
    EXPECT_GT(marks[5].ct, marks[4].ct);
}
