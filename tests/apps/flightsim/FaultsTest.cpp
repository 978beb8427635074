// Every fault flag produces the fault it names, where the truth file says,
// and nothing else; a clean flight has none of them.

#include "SimulatedFlight.h"

#include <datamodel/model/InfoFile.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace flightfiles;
using flightsim::Fault;

namespace {

constexpr double sDeg = std::numbers::pi / 180.0;

flightsim::SimulationConfig withFault(flightsim::SimulationConfig config, Fault fault)
{
    config.faults.add(fault);
    return config;
}

std::vector<TimeMark> marksOf(const SimulatedFlight& flight)
{
    return readTimeMarks(flight.path(flight.truth()[QStringLiteral("timeMarks")][QStringLiteral("file")]));
}

std::vector<double> unwrappedGps(const std::vector<TimeMark>& marks)
{
    std::vector<double> gps;
    for (const TimeMark& m : marks)
        gps.push_back(m.gps);
    return unwrapWeek(gps);
}

std::vector<double> ctOf(const SimulatedFlight& flight, int take, int band)
{
    return readCt(flight.path(flight.take(take)[QStringLiteral("bands")][band][QStringLiteral("ct")])).values;
}

/// GPS times of the scan lines of a band, through the time marks.
std::vector<double> lineGps(const SimulatedFlight& flight, int take, int band)
{
    const std::vector<TimeMark> marks = marksOf(flight);
    const std::vector<double> gps = unwrappedGps(marks);
    std::vector<double> times;
    for (double ct : ctOf(flight, take, band))
        times.push_back(gpsAtCt(marks, gps, ct));
    return times;
}

/// The eight-line saw-tooth test: only every eighth step differs, by at
/// least 5 % from the ordinary step.
bool hasSawTooth(const std::vector<double>& v)
{
    const std::size_t n = v.size();
    if (n < 16 || n % 8 != 0)
        return false;
    const double d = v[1] - v[0];
    const double anchorStep = v[8] - v[7];
    if (std::abs(anchorStep - d) / d < 0.05)
        return false;
    for (std::size_t i = 1; i < n; ++i) {
        const double s = v[i] - v[i - 1];
        if (i % 8 != 0 && std::abs(s - d) > 0.05)
            return false;
        if (i % 8 == 0 && std::abs((s - anchorStep) * 0.95) > 0.05)
            return false;
    }
    return true;
}

/// The number of record pairs of the SBET within [fromGps, toGps] whose roll
/// or pitch changes faster than `limitDegPerSec`.
int fastRotations(const std::vector<SbetRecord>& sbet, double fromGps, double toGps, double limitDegPerSec)
{
    int count = 0;
    for (std::size_t k = 1; k < sbet.size(); ++k) {
        if (sbet[k - 1].time < fromGps || sbet[k].time > toGps)
            continue;
        const double dt = sbet[k].time - sbet[k - 1].time;
        if (std::abs(sbet[k].roll - sbet[k - 1].roll) / dt >= limitDegPerSec * sDeg
            || std::abs(sbet[k].pitch - sbet[k - 1].pitch) / dt >= limitDegPerSec * sDeg)
            ++count;
    }
    return count;
}

} // namespace

TEST(FlightsimFaults, ACleanFlightHasNone)
{
    const SimulatedFlight flight(tinyBlock(3));
    EXPECT_TRUE(flight.faultNames().isEmpty());
    const std::vector<TimeMark> marks = marksOf(flight);
    for (std::size_t i = 1; i < marks.size(); ++i)
        EXPECT_NEAR(marks[i].ct - marks[i - 1].ct, marks[1].ct - marks[0].ct, 1e-6);
    const QString sbetPath = flight.path(flight.trajectory()[QStringLiteral("sbet")]);
    EXPECT_EQ(readAll(sbetPath).size() % 136, 0);
    const std::vector<SbetRecord> sbet = readSbet(sbetPath);
    for (int t = 0; t < 3; ++t) {
        const QJsonObject take = flight.take(t);
        const double first = take[QStringLiteral("firstLineGpsSec")].toDouble();
        const double last = take[QStringLiteral("lastLineGpsSec")].toDouble();
        EXPECT_LE(sbet.front().time, first);
        EXPECT_GE(sbet.back().time, last);
        EXPECT_EQ(fastRotations(sbet, first, last, 2.0), 0) << "take " << t + 1;
        for (int b = 0; b < 2; ++b) {
            const std::vector<double> ct = ctOf(flight, t, b);
            for (std::size_t i = 1; i < ct.size(); ++i)
                ASSERT_GT(ct[i], ct[i - 1]);
            EXPECT_FALSE(hasSawTooth(lineGps(flight, t, b)));
            const std::vector<ScanLineRun> it = readRuns(flight.path(take[QStringLiteral("bands")][b][QStringLiteral("integrationTime")]));
            EXPECT_LT(it.front().value, 20000);
            datamodel::InfoFile info(flight.path(take[QStringLiteral("bands")][b][QStringLiteral("info")]).toStdString(),
                                     datamodel::InfoFile::STRIPNAMEREGEX);
            EXPECT_FALSE(info.sensorId().empty());
        }
    }
}

TEST(FlightsimFaults, TimeMarkGapLeavesOutThreeMarks)
{
    const SimulatedFlight clean(tinyConfig());
    const SimulatedFlight flight(withFault(tinyConfig(), Fault::TmGap));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("tm-gap")});
    const QJsonObject gap = flight.faults(QStringLiteral("tm-gap")).front();
    const std::vector<TimeMark> marks = marksOf(flight);
    ASSERT_EQ(marks.size() + 3, marksOf(clean).size());

    // One step (and only one) lies outside +/-10 % of the first step: the
    // step into the record after the gap, four seconds long.
    const double nominal = marks[1].ct - marks[0].ct;
    std::vector<std::size_t> irregular;
    for (std::size_t i = 1; i < marks.size(); ++i)
        if (std::abs(marks[i].ct - marks[i - 1].ct - nominal) > 0.1 * nominal)
            irregular.push_back(i);
    ASSERT_EQ(irregular.size(), std::size_t(1));
    const std::size_t after = irregular.front();
    EXPECT_EQ(after, std::size_t(gap[QStringLiteral("recordAfterGap")].toInt()));
    EXPECT_GE(after, std::size_t(2));
    EXPECT_EQ(marks[after].ct, gap[QStringLiteral("ctAfterGapSec")].toDouble());
    EXPECT_EQ(marks[after - 1].gps, gap[QStringLiteral("gpsBeforeGapSec")].toDouble());
    EXPECT_EQ(marks[after].gps - marks[after - 1].gps, 4.0);
    // The gap lies in the fault take's second of flight.
    const double middle = 0.5 * (flight.take(0)[QStringLiteral("firstLineGpsSec")].toDouble()
                                 + flight.take(0)[QStringLiteral("lastLineGpsSec")].toDouble());
    EXPECT_LT(marks[after - 1].gps, middle);
    EXPECT_GT(marks[after].gps, middle);
}

TEST(FlightsimFaults, WeekRolloverFallsInsideTheFaultTake)
{
    const SimulatedFlight flight(withFault(tinyBlock(3), Fault::WeekRollover));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("week-rollover")});
    const QJsonObject rollover = flight.faults(QStringLiteral("week-rollover")).front();
    EXPECT_EQ(rollover[QStringLiteral("take")].toString(), QStringLiteral("L002"));
    EXPECT_EQ(rollover[QStringLiteral("weekAfter")].toInt(), rollover[QStringLiteral("weekBefore")].toInt() + 1);
    EXPECT_EQ(flight.startGpsSec(), 604800.0 - rollover[QStringLiteral("rolloverFlightSec")].toDouble());

    // The take's scan lines cross the week's end.
    const QJsonObject take = flight.take(1);
    EXPECT_GT(take[QStringLiteral("firstLineGpsSec")].toDouble(), 604700.0);
    EXPECT_LT(take[QStringLiteral("lastLineGpsSec")].toDouble(), 100.0);
    const std::vector<SbetRecord> sbet = readSbet(flight.path(flight.trajectory()[QStringLiteral("sbet")]));
    EXPECT_GT(sbet.front().time, sbet.back().time);
    const std::vector<TimeMark> marks = marksOf(flight);
    int wraps = 0;
    for (std::size_t i = 1; i < marks.size(); ++i) {
        EXPECT_GT(marks[i].ct, marks[i - 1].ct);
        if (marks[i].gps < marks[i - 1].gps) {
            ++wraps;
            EXPECT_EQ(marks[i - 1].gps, 604799.0);
            EXPECT_EQ(marks[i].gps, 0.0);
        }
    }
    EXPECT_EQ(wraps, 1);
    // Converted through the time marks, the lines still run on evenly.
    const std::vector<double> times = lineGps(flight, 1, 0);
    for (std::size_t i = 1; i < times.size(); ++i)
        ASSERT_NEAR(times[i] - times[i - 1], 1.0 / 800.0, 1e-6);
}

TEST(FlightsimFaults, JitteredTimeMarksAreOffByMoreThanFiveMilliseconds)
{
    const SimulatedFlight flight(withFault(tinyConfig(), Fault::TmJitter));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("tm-jitter")});
    const QJsonArray jittered = flight.faults(QStringLiteral("tm-jitter")).front()[QStringLiteral("records")].toArray();
    ASSERT_GE(jittered.size(), 3);
    const std::vector<TimeMark> marks = marksOf(flight);
    const std::vector<double> gps = unwrappedGps(marks);
    std::vector<bool> isJittered(marks.size(), false);
    for (const QJsonValue record : jittered) {
        const auto i = std::size_t(record[QStringLiteral("record")].toInt());
        ASSERT_LT(i, marks.size());
        isJittered[i] = true;
        const double offsetSec = marks[i].ct - flight.ctAt(gps[i] - flight.startGpsSec());
        EXPECT_NEAR(offsetSec * 1000.0, record[QStringLiteral("offsetMs")].toDouble(), 1e-6);
        EXPECT_GE(std::abs(offsetSec), 0.006);
        EXPECT_LE(std::abs(offsetSec), 0.015);
    }
    EXPECT_FALSE(isJittered[0] || isJittered[1] || isJittered.back());
    const double period = marks[1].ct - marks[0].ct;
    bool irregular = false;
    for (std::size_t i = 0; i < marks.size(); ++i) {
        if (!isJittered[i]) {
            EXPECT_NEAR(marks[i].ct, flight.ctAt(gps[i] - flight.startGpsSec()), 1e-6);
        }
        if (i > 0) {
            const double departure = std::abs(marks[i].ct - marks[i - 1].ct - period);
            irregular = irregular || departure > 0.005;
            EXPECT_LT(departure, 0.1 * period); // jitter, not a gap
        }
    }
    EXPECT_TRUE(irregular);
}

TEST(FlightsimFaults, CameraTimeRunsBackwardsInOneBand)
{
    const SimulatedFlight flight(withFault(tinyConfig(), Fault::CtBackwards));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("ct-backwards")});
    const QJsonObject fault = flight.faults(QStringLiteral("ct-backwards")).front();
    EXPECT_EQ(fault[QStringLiteral("band")].toString(), QStringLiteral("PANN00A"));
    const std::vector<double> faulty = ctOf(flight, 0, 0);
    std::vector<std::size_t> backwards;
    for (std::size_t i = 1; i < faulty.size(); ++i)
        if (faulty[i] < faulty[i - 1])
            backwards.push_back(i);
    ASSERT_EQ(backwards.size(), std::size_t(1));
    EXPECT_EQ(backwards.front(), std::size_t(fault[QStringLiteral("line")].toInt()));
    EXPECT_EQ(faulty[backwards.front()], fault[QStringLiteral("ctAtLineSec")].toDouble());
    const std::vector<double> other = ctOf(flight, 0, 1);
    for (std::size_t i = 1; i < other.size(); ++i)
        ASSERT_GT(other[i], other[i - 1]);
}

TEST(FlightsimFaults, SawToothIsWhatTheEightLineDetectorFinds)
{
    const SimulatedFlight flight(withFault(tinyConfig(), Fault::SawTooth));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("saw-tooth")});
    EXPECT_EQ(flight.faults(QStringLiteral("saw-tooth")).front()[QStringLiteral("band")].toString(), QStringLiteral("REDN00A"));
    const std::vector<double> faulty = lineGps(flight, 0, 1);
    EXPECT_TRUE(hasSawTooth(faulty));
    EXPECT_FALSE(hasSawTooth(lineGps(flight, 0, 0)));
    // Every eighth line still carries its true time.
    const double first = flight.take(0)[QStringLiteral("firstLineGpsSec")].toDouble();
    for (std::size_t i = 0; i < faulty.size(); i += 8)
        EXPECT_NEAR(faulty[i], first + double(i) / 800.0, 1e-6);
}

TEST(FlightsimFaults, ShortTrajectoryEndsInsideTheLastTake)
{
    const SimulatedFlight flight(withFault(tinyBlock(2), Fault::ShortTrajectory));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("short-trajectory")});
    const QJsonObject fault = flight.faults(QStringLiteral("short-trajectory")).front();
    const QJsonObject last = flight.take(1);
    const std::vector<SbetRecord> sbet = readSbet(flight.path(flight.trajectory()[QStringLiteral("sbet")]));
    EXPECT_EQ(sbet.back().time, fault[QStringLiteral("trajectoryEndGpsSec")].toDouble());
    EXPECT_GT(sbet.back().time, last[QStringLiteral("firstLineGpsSec")].toDouble());
    EXPECT_LT(sbet.back().time, last[QStringLiteral("lastLineGpsSec")].toDouble());
    EXPECT_EQ(readAccuracy(flight.path(flight.trajectory()[QStringLiteral("smrmsg")])).back().time, sbet.back().time);
    EXPECT_EQ(readSol(flight.path(flight.trajectory()[QStringLiteral("sol")])).back().time, sbet.back().time);
    // The first take stays covered, and the time marks still reach the end.
    EXPECT_GT(sbet.back().time, flight.take(0)[QStringLiteral("lastLineGpsSec")].toDouble());
    EXPECT_GT(marksOf(flight).back().ct, last[QStringLiteral("bands")][0][QStringLiteral("lastCtSec")].toDouble());
}

TEST(FlightsimFaults, HeavyTurbulenceExceedsTheAngularRateLimitOnlyInItsTake)
{
    const SimulatedFlight flight(withFault(tinyBlock(3), Fault::HeavyTurbulence));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("heavy-turbulence")});
    EXPECT_EQ(flight.faults(QStringLiteral("heavy-turbulence")).front()[QStringLiteral("take")].toString(), QStringLiteral("L002"));
    const std::vector<SbetRecord> sbet = readSbet(flight.path(flight.trajectory()[QStringLiteral("sbet")]));
    for (int t = 0; t < 3; ++t) {
        const QJsonObject take = flight.take(t);
        const int fast = fastRotations(sbet, take[QStringLiteral("firstLineGpsSec")].toDouble(),
                                       take[QStringLiteral("lastLineGpsSec")].toDouble(), 2.0);
        if (t == 1) {
            EXPECT_GE(fast, 10);
        } else {
            EXPECT_EQ(fast, 0) << "take " << t + 1;
        }
    }
}

TEST(FlightsimFaults, TruncatedSbetEndsInsideItsLastRecord)
{
    const SimulatedFlight clean(tinyConfig());
    const SimulatedFlight flight(withFault(tinyConfig(), Fault::TruncatedTrajectory));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("truncated-trajectory")});
    const QJsonObject fault = flight.faults(QStringLiteral("truncated-trajectory")).front();
    const QString path = flight.path(fault[QStringLiteral("file")]);
    EXPECT_EQ(path, flight.path(flight.trajectory()[QStringLiteral("sbet")]));
    const qsizetype size = readAll(path).size();
    EXPECT_EQ(size, fault[QStringLiteral("sizeBytes")].toInteger());
    EXPECT_EQ(size % 136, 68);
    EXPECT_EQ(size / 136, fault[QStringLiteral("completeRecords")].toInteger());
    EXPECT_EQ(size + 68, readAll(clean.path(clean.trajectory()[QStringLiteral("sbet")])).size());
    // The complete records are those of the clean flight; the SOL file is whole.
    const std::vector<SbetRecord> sbet = readSbet(path);
    EXPECT_EQ(sbet.back().time, flight.trajectory()[QStringLiteral("last")][QStringLiteral("gpsSec")].toDouble());
    EXPECT_EQ(readAll(flight.path(flight.trajectory()[QStringLiteral("sol")])),
              readAll(clean.path(clean.trajectory()[QStringLiteral("sol")])));
}

TEST(FlightsimFaults, OneInfoFileLacksTheSensorId)
{
    const SimulatedFlight flight(withFault(tinyConfig(), Fault::MissingSensorId));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("missing-sensor-id")});
    const QString faulty = flight.path(flight.faults(QStringLiteral("missing-sensor-id")).front()[QStringLiteral("file")]);
    for (const QJsonValue band : flight.take(0)[QStringLiteral("bands")].toArray()) {
        const QString path = flight.path(band[QStringLiteral("info")]);
        const bool isFaulty = path == faulty;
        EXPECT_EQ(readXml(path).elementsByTagName(QStringLiteral("sensor_serialnumber")).size(), isFaulty ? 0 : 1);
        datamodel::InfoFile info(path.toStdString(), datamodel::InfoFile::STRIPNAMEREGEX);
        const std::string message = [&] {
            try {
                datamodel::InfoFile::Validator().validate(info);
            } catch (const std::runtime_error& e) {
                return std::string(e.what());
            }
            return std::string();
        }();
        EXPECT_EQ(message, isFaulty ? "The SensorId is empty in: " + path.toStdString() : std::string());
    }
}

TEST(FlightsimFaults, OneBandRecordsAnIntegrationTimeAboveTheLimit)
{
    const SimulatedFlight flight(withFault(tinyConfig(), Fault::IntegrationTimeOutOfRange));
    EXPECT_EQ(flight.faultNames(), QStringList{QStringLiteral("integration-time")});
    const QJsonObject fault = flight.faults(QStringLiteral("integration-time")).front();
    EXPECT_EQ(fault[QStringLiteral("band")].toString(), QStringLiteral("REDN00A"));
    const QDomElement take = readXml(flight.path(QStringLiteral("mm/FlightData.xml")))
                                 .elementsByTagName(QStringLiteral("Take")).at(0).toElement();
    const QDomNodeList recorded = take.elementsByTagName(QStringLiteral("Band"));
    for (int b = 0; b < 2; ++b) {
        const QJsonValue band = flight.take(0)[QStringLiteral("bands")][b];
        const bool faulty = band[QStringLiteral("name")].toString() == fault[QStringLiteral("band")].toString();
        const double expectedMs = faulty ? 25.0 : 1.25;
        EXPECT_EQ(readRuns(flight.path(band[QStringLiteral("integrationTime")])).front().value, int(expectedMs * 1000));
        datamodel::InfoFile info(flight.path(band[QStringLiteral("info")]).toStdString(), datamodel::InfoFile::STRIPNAMEREGEX);
        EXPECT_DOUBLE_EQ(info.integrationTime().value(), expectedMs / 1000.0);
        EXPECT_EQ(info.integrationTime().value() >= 0.02, faulty);
        EXPECT_DOUBLE_EQ(recorded.at(b).toElement().attribute(QStringLiteral("integrationTimeMs")).toDouble(), expectedMs);
    }
}

TEST(FlightsimFaults, AllFaultsTogetherAreAllListed)
{
    flightsim::SimulationConfig config = tinyBlock(3);
    for (Fault fault : flightsim::FaultSet::all())
        config.faults.add(fault);
    const SimulatedFlight flight(config);
    QStringList names = flight.faultNames();
    names.sort();
    QStringList expected = config.faults.names();
    expected.sort();
    EXPECT_EQ(names, expected);
    EXPECT_EQ(names.size(), 10);
}
