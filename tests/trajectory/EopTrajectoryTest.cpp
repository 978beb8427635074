// Exterior orientation generated from the trajectories of simulated flights
// against the simulator's truth (positions to 1 mm, angles to 1e-6 rad), on
// flights in several directions, at several latitudes and across the GPS
// week's end; and the trajectory's own bookkeeping.

#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/trajectory/EopTrajectory.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/PosFile.h>

#include <platform/sensor/EOPData.h>

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <gtest/gtest.h>

#include <Eigen/Geometry>

#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <cmath>
#include <numbers>
#include <string>

using datamodel::EopTrajectory;
using datamodel::ImuTrajectory;
using datamodel::seconds;

namespace {

constexpr double sDegToRad = std::numbers::pi / 180.0;
constexpr double sWeekSec = 604800.0;

/// The rotation omega, phi, kappa stand for: R = Rx(omega) Ry(phi) Rz(kappa).
Eigen::Matrix3d rotation(double omega, double phi, double kappa)
{
    return (Eigen::AngleAxisd(omega, Eigen::Vector3d::UnitX()) * Eigen::AngleAxisd(phi, Eigen::Vector3d::UnitY())
            * Eigen::AngleAxisd(kappa, Eigen::Vector3d::UnitZ()))
        .toRotationMatrix();
}

struct Flight {
    QJsonObject truth;
    std::string sbet;
};

class EopGenerationTest : public ::testing::Test {
protected:
    Flight simulate(flightsim::SimulationConfig config)
    {
        config.takes = 2;
        config.linesPerTake = 2000;
        config.bands = {QStringLiteral("PANN00A")};
        const QString dir = m_dir.path() + QStringLiteral("/flight") + QString::number(++m_flights);
        flightsim::FlightSimulator(config).run(dir);
        Flight flight;
        QFile file(dir + QStringLiteral("/truth.json"));
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error("test setup: no truth file");
        flight.truth = QJsonDocument::fromJson(file.readAll()).object();
        QDirIterator sbet(dir + QStringLiteral("/gps-imu"), {QStringLiteral("sbet_*.out")}, QDir::Files,
                          QDirIterator::Subdirectories);
        if (!sbet.hasNext())
            throw std::runtime_error("test setup: no SBET file");
        flight.sbet = sbet.next().toStdString();
        return flight;
    }

    /// Generates each take's EOPs between its first and last truth sample
    /// and compares them at every truth sample.
    void expectTruth(const Flight& flight, const std::string& label)
    {
        const ImuTrajectory imu(flight.sbet);
        const QJsonObject config = flight.truth[QStringLiteral("config")].toObject();
        const QJsonArray misalignment = config[QStringLiteral("misalignmentDeg")].toArray();
        const geo::XYZPoint misalignmentRad(misalignment[0].toDouble() * sDegToRad,
                                            misalignment[1].toDouble() * sDegToRad,
                                            misalignment[2].toDouble() * sDegToRad);
        const double zOffset = config[QStringLiteral("nominalZOffsetM")].toDouble();
        for (const QJsonValue takeValue : flight.truth[QStringLiteral("takes")].toArray()) {
            const QJsonObject take = takeValue.toObject();
            const QJsonObject eo = take[QStringLiteral("exteriorOrientation")].toObject();
            const QJsonObject anchor = eo[QStringLiteral("anchor")].toObject();
            const QJsonArray samples = eo[QStringLiteral("samples")].toArray();
            // Times counted on past the week's end, as the take's scan lines are.
            const double first = samples.first()[QStringLiteral("gpsSec")].toDouble();
            auto counted = [first](double gpsSec) { return gpsSec < first ? gpsSec + sWeekSec : gpsSec; };
            // Half a record past the last one: the sample times are summed up
            // step by step and may land a rounding error behind the records'.
            const double last = counted(samples.last()[QStringLiteral("gpsSec")].toDouble()) + 0.5 * imu.frequency();
            const QDate date = QDate::fromString(take[QStringLiteral("startUtc")].toString().left(10), Qt::ISODate);
            const EopTrajectory eop(imu, seconds(first), seconds(last),
                                    geo::XYZPoint(anchor[QStringLiteral("lonDeg")].toDouble() * sDegToRad,
                                                  anchor[QStringLiteral("latDeg")].toDouble() * sDegToRad, 0.0),
                                    misalignmentRad, zOffset, date, nullptr);
            const std::string where = label + ", take " + take[QStringLiteral("label")].toString().toStdString();
            EXPECT_EQ(eop.absTime(),
                      std::uint32_t((take[QStringLiteral("firstLineGpsWeek")].toInt() - 1024) * 604800))
                << where;
            for (const QJsonValue value : samples) {
                const QJsonObject truth = value.toObject();
                if (!truth[QStringLiteral("inTrajectoryFiles")].toBool())
                    continue;
                sensor::EOP sample;
                eop.atGPS(seconds(counted(truth[QStringLiteral("gpsSec")].toDouble())), sample);
                const std::string at = where + ", record " + std::to_string(truth[QStringLiteral("record")].toInt());
                EXPECT_NEAR(sample.x, truth[QStringLiteral("xM")].toDouble(), 1e-3) << at;
                EXPECT_NEAR(sample.y, truth[QStringLiteral("yM")].toDouble(), 1e-3) << at;
                EXPECT_NEAR(sample.z, truth[QStringLiteral("zM")].toDouble(), 1e-3) << at;
                // The quaternion is the rotation from the LSR frame into the
                // camera frame: the transpose of Rx(omega) Ry(phi) Rz(kappa).
                const Eigen::Matrix3d expected = rotation(truth[QStringLiteral("omegaRad")].toDouble(),
                                                          truth[QStringLiteral("phiRad")].toDouble(),
                                                          truth[QStringLiteral("kappaRad")].toDouble());
                const Eigen::Matrix3d actual =
                    Eigen::Quaterniond(sample.q[0], sample.q[1], sample.q[2], sample.q[3]).normalized().toRotationMatrix();
                EXPECT_LT((actual.transpose() - expected).cwiseAbs().maxCoeff(), 1e-6) << at << "\n"
                                                                                       << actual << "\n"
                                                                                       << expected;
            }
        }
    }

    QTemporaryDir m_dir;
    int m_flights = 0;
};

TEST_F(EopGenerationTest, AgreesWithTheTruthInEveryDirectionAndLatitude)
{
    ASSERT_TRUE(m_dir.isValid());
    const struct {
        double azimuthDeg;
        double latDeg;
    } cases[] = {{0.0, 48.1}, {90.0, 0.0}, {225.0, 75.0}, {90.0, 48.1}};
    for (const auto& c : cases) {
        auto config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
        config.lineAzimuthDeg = c.azimuthDeg;
        config.centerLatDeg = c.latDeg;
        expectTruth(simulate(config), "azimuth " + std::to_string(c.azimuthDeg) + ", latitude "
                                          + std::to_string(c.latDeg));
    }
}

TEST_F(EopGenerationTest, AgreesWithTheTruthAcrossTheGpsWeeksEnd)
{
    ASSERT_TRUE(m_dir.isValid());
    auto config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
    config.faults.add(flightsim::Fault::WeekRollover);
    config.faultTake = 1;
    expectTruth(simulate(config), "week rollover");
}

TEST(EopTrajectory, SamplesAtTheImuIntervalFromTheStart)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    auto config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
    flightsim::FlightSimulator(config).run(dir.path() + QStringLiteral("/s"));
    QDirIterator sbet(dir.path(), {QStringLiteral("sbet_*.out")}, QDir::Files, QDirIterator::Subdirectories);
    ASSERT_TRUE(sbet.hasNext());
    const ImuTrajectory imu(sbet.next().toStdString());
    const double start = imu.reader()->startTime().value() + 1.0;
    const double step = imu.frequency();
    const geo::XYZPoint anchor(11.5 * sDegToRad, 48.1 * sDegToRad, 0.0);

    // One sample when the span is empty, two for one interval.
    EXPECT_EQ(EopTrajectory(imu, seconds(start), seconds(start), anchor, {}, 0.0, QDate(2026, 5, 14), nullptr).numSets(),
              1);
    const EopTrajectory two(imu, seconds(start), seconds(start + step), anchor, {}, 0.0, QDate(2026, 5, 14), nullptr);
    EXPECT_EQ(two.numSets(), 2);
    EXPECT_EQ(two.frequency(), step);
    EXPECT_EQ(two.posSource(), imu.fileName());
    EXPECT_EQ(two.tmSource(), "Times from CTG files");
    EXPECT_EQ(two.appSource(), "EopTrajectory");
    // A generated trajectory has no file until it is named.
    try {
        (void)two.filename();
        ADD_FAILURE() << "a generated, unnamed trajectory has a file name";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "EOPData not loaded.");
    }

    // Times outside the trajectory fail as the trajectory says.
    try {
        EopTrajectory(imu, seconds(start), seconds(imu.reader()->endTime().value() + 10.0), anchor, {}, 0.0,
                      QDate(2026, 5, 14), nullptr);
        ADD_FAILURE() << "generated past the trajectory's end";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "GPS time is out side of recording time for the trajectory.");
    }

    // The absolute time counts whole weeks from 1999-08-22.
    EXPECT_EQ(EopTrajectory::absoluteTime(QDate(1999, 8, 22)), 0u);
    EXPECT_EQ(EopTrajectory::absoluteTime(QDate(1999, 8, 28)), 0u);
    EXPECT_EQ(EopTrajectory::absoluteTime(QDate(1999, 8, 29)), 604800u);
}

TEST(TakeEops, AreGeneratedWrittenNamedAndReadBack)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    auto config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
    const QString path = dir.path() + QStringLiteral("/s");
    flightsim::FlightSimulator(config).run(path);
    QFile file(path + QStringLiteral("/truth.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject anchor = QJsonDocument::fromJson(file.readAll())
                                   .object()[QStringLiteral("takes")]
                                   .toArray()[0][QStringLiteral("exteriorOrientation")][QStringLiteral("anchor")]
                                   .toObject();

    datamodel::RecordingSession session(path.toStdString());
    datamodel::Take& take = *session.takes().at(0);
    const std::string name = take.name();
    auto expectFailure = [](auto call, const std::string& text) {
        try {
            call();
            ADD_FAILURE() << "no failure; expected " << text;
        } catch (const std::runtime_error& e) {
            EXPECT_EQ(e.what(), text);
        }
    };
    expectFailure([&] { take.writeEopFile(); }, "No EOP to write.");
    expectFailure([&] { take.eopTrajectory(); }, "No EOP trajectory for " + name);
    expectFailure([&] { take.adjustedEopTrajectory(); }, "There is no adjusted EOP trajectory for " + name);
    expectFailure([&] { take.imuTrajectory(); }, "No IMU Trajectory for take " + name);

    // The anchor is where the take begins.
    const datamodel::RecordingSession::ImuTrajectoryId& sbet = *session.imuTrajectories().back();
    const geo::XYPoint start = take.computeAnchorPoint(&sbet, true);
    EXPECT_NEAR(start.x, anchor[QStringLiteral("lonDeg")].toDouble(), 1e-7);
    EXPECT_NEAR(start.y, anchor[QStringLiteral("latDeg")].toDouble(), 1e-7);

    take.setImuTrajectory(sbet, nullptr, nullptr);
    const int samples = take.eopTrajectory().numSets();
    EXPECT_GT(samples, 1);
    EXPECT_EQ(take.imuTrajectorySource()->name(), sbet.name());
    const std::string written = take.writeEopFile();
    EXPECT_EQ(written, path.toStdString() + "/raw/" + name + ".eop");
    EXPECT_EQ(take.eopFilename(), name + ".eop");

    // Read back: a copy reads its own samples, an assignment takes them.
    const EopTrajectory fromFile(written, true);
    EXPECT_EQ(fromFile.numSets(), samples);
    EXPECT_EQ(fromFile.absTime(), take.eopTrajectory().absTime());
    sensor::EOP a;
    sensor::EOP b;
    fromFile.getRecord(samples - 1, a);
    take.eopTrajectory().getRecord(samples - 1, b);
    EXPECT_EQ(a.time, b.time);
    EXPECT_EQ(a.q, b.q);
    EXPECT_EQ(a.x, b.x);
    EopTrajectory copy(fromFile);
    EXPECT_EQ(copy.numSets(), samples);
    EopTrajectory assigned(std::string(), true);
    assigned = copy;
    EXPECT_EQ(assigned.numSets(), samples);
    EXPECT_EQ(copy.numSets(), samples); // read again from the file
    expectFailure([&] { fromFile.getRecord(samples, a); }, "Failed to get record.");
    expectFailure([&] { fromFile.atGPS(seconds(a.time + 1000.0), a); }, "EOPData::atGPS() failed.");
}

} // namespace
