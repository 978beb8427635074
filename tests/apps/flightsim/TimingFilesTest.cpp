// The time-mark, CT, integration-time and TDI files of a simulated flight:
// layouts, counts, first and last values, and the camera clock that ties
// them to GPS time.

#include "SimulatedFlight.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace flightfiles;

namespace {

std::vector<double> gpsOf(const std::vector<TimeMark>& marks)
{
    std::vector<double> gps;
    for (const TimeMark& m : marks)
        gps.push_back(m.gps);
    return unwrapWeek(gps);
}

flightsim::SimulationConfig tinyWithDarkTake()
{
    flightsim::SimulationConfig config = tinyConfig();
    config.darkTakes = 1;
    return config;
}

} // namespace

TEST(FlightsimTiming, TimeMarksComeEverySecondAndFollowTheCameraClock)
{
    const SimulatedFlight flight(tinyWithDarkTake());
    const QJsonObject truth = flight.truth()[QStringLiteral("timeMarks")].toObject();
    const QString path = flight.path(truth[QStringLiteral("file")]);
    EXPECT_EQ(readAll(path).size() % 16, 0);
    const std::vector<TimeMark> marks = readTimeMarks(path);
    ASSERT_EQ(marks.size(), std::size_t(truth[QStringLiteral("records")].toInt()));
    ASSERT_EQ(marks.size(), std::size_t(13));
    EXPECT_EQ(marks.front().gps, truth[QStringLiteral("first")][QStringLiteral("gpsSec")].toDouble());
    EXPECT_EQ(marks.front().ct, truth[QStringLiteral("first")][QStringLiteral("ctSec")].toDouble());
    EXPECT_EQ(marks.back().gps, truth[QStringLiteral("last")][QStringLiteral("gpsSec")].toDouble());
    EXPECT_EQ(marks.back().ct, truth[QStringLiteral("last")][QStringLiteral("ctSec")].toDouble());

    const std::vector<double> gps = gpsOf(marks);
    for (std::size_t i = 0; i < marks.size(); ++i) {
        EXPECT_EQ(gps[i], std::floor(gps[i])) << "mark " << i << " is not on a whole GPS second";
        if (i > 0) {
            EXPECT_EQ(gps[i] - gps[i - 1], 1.0);
        }
        EXPECT_NEAR(marks[i].ct, flight.ctAt(gps[i] - flight.startGpsSec()), 1e-6) << "mark " << i;
    }
    // The marks bracket the camera times of every band of every take.
    for (const QString& key : {QStringLiteral("takes"), QStringLiteral("darkTakes")}) {
        for (const QJsonValue take : flight.truth()[key].toArray()) {
            for (const QJsonValue band : take[QStringLiteral("bands")].toArray()) {
                EXPECT_LE(marks.front().ct, band[QStringLiteral("firstCtSec")].toDouble());
                EXPECT_GT(marks.back().ct, band[QStringLiteral("lastCtSec")].toDouble());
            }
        }
    }
}

TEST(FlightsimTiming, CtFilesHoldTheCameraTimeOfEveryScanLine)
{
    const SimulatedFlight flight(tinyWithDarkTake());
    const std::vector<TimeMark> marks = readTimeMarks(flight.path(flight.truth()[QStringLiteral("timeMarks")][QStringLiteral("file")]));
    const std::vector<double> markGps = gpsOf(marks);
    int files = 0;
    for (const QString& key : {QStringLiteral("takes"), QStringLiteral("darkTakes")}) {
        for (const QJsonValue takeValue : flight.truth()[key].toArray()) {
            const QJsonObject take = takeValue.toObject();
            const auto lines = std::size_t(take[QStringLiteral("lines")].toInt());
            const double rate = take[QStringLiteral("lineRateHz")].toDouble();
            const double firstFlightSec = take[QStringLiteral("firstLineFlightSec")].toDouble();
            const double firstGps = take[QStringLiteral("firstLineGpsSec")].toDouble();
            EXPECT_NEAR(take[QStringLiteral("lastLineGpsSec")].toDouble() - firstGps, (double(lines) - 1) / rate, 1e-9);
            for (const QJsonValue band : take[QStringLiteral("bands")].toArray()) {
                const QString path = flight.path(band[QStringLiteral("ct")]);
                const CtFile ct = readCt(path);
                ++files;
                EXPECT_EQ(ct.magic, QByteArray("CT01"));
                EXPECT_EQ(ct.headerBytes, 16u);
                ASSERT_EQ(ct.count, lines) << path.toStdString();
                EXPECT_EQ(ct.sizeBytes, qsizetype(16 + 8 * lines));
                ASSERT_EQ(ct.values.size(), lines);
                EXPECT_EQ(ct.values.front(), band[QStringLiteral("firstCtSec")].toDouble());
                EXPECT_EQ(ct.values.back(), band[QStringLiteral("lastCtSec")].toDouble());
                for (std::size_t i = 0; i < lines; ++i) {
                    ASSERT_NEAR(ct.values[i], flight.ctAt(firstFlightSec + double(i) / rate), 1e-9) << "line " << i;
                    // Through the time marks, each line's CT gives its GPS time.
                    ASSERT_NEAR(gpsAtCt(marks, markGps, ct.values[i]), firstGps + double(i) / rate, 1e-6) << "line " << i;
                }
            }
        }
    }
    EXPECT_EQ(files, 4); // two bands of the take and of its dark take
}

TEST(FlightsimTiming, IntegrationTimeAndTdiFilesHoldOneRunEach)
{
    const SimulatedFlight flight(tinyConfig());
    for (const QJsonValue band : flight.take(0)[QStringLiteral("bands")].toArray()) {
        const std::vector<ScanLineRun> it = readRuns(flight.path(band[QStringLiteral("integrationTime")]));
        const std::vector<ScanLineRun> tdi = readRuns(flight.path(band[QStringLiteral("tdi")]));
        ASSERT_EQ(it.size(), std::size_t(1));
        ASSERT_EQ(tdi.size(), std::size_t(1));
        EXPECT_EQ(it[0].line, 0u);
        EXPECT_EQ(it[0].value, 1250); // microseconds: the line period at 800 lines/s
        EXPECT_EQ(tdi[0].line, 0u);
        EXPECT_EQ(tdi[0].value, band[QStringLiteral("tdiStages")].toInt());
        EXPECT_EQ(tdi[0].value, band[QStringLiteral("name")].toString().startsWith(QLatin1String("PAN")) ? 1 : 2);
    }
}
