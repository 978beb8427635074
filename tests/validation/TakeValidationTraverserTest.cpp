#include "ValidationFiles.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/IntegrationTimeZelV1.h>
#include <datamodel/validation/SessionValidationTraverser.h>
#include <datamodel/validation/TakeValidationTraverser.h>

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace datamodel;
using namespace validationtest;

namespace {

bool has(const Log& log, const std::string& message)
{
    return std::find(log.begin(), log.end(), message) != log.end();
}

bool hasPrefix(const Log& log, const std::string& prefix)
{
    return std::any_of(log.begin(), log.end(), [&](const std::string& m) { return m.rfind(prefix, 0) == 0; });
}

// Take L001 of two bands recorded over GPS 300010 s to 300011 s, with time
// marks over a minute, pixel files and no CTG files yet.
class TakeValidation : public ::testing::Test {
protected:
    TakeValidation()
    {
        flight.writeMarks(timingtest::regularMarks(60));
        for (const char* band : {"PANN00A", "REDN00A"}) {
            flight.addBand(band, timingtest::bandCt(800, 10.0));
            timingtest::writeBytes(pixelFile(band), "pixels");
        }
    }
    std::string pixelFile(const std::string& band) const { return flight.path() + "/images/L001" + band + ".lri"; }
    void trajectory(double startSec, double endSec)
    {
        writeLevelSbet(flight.path() + "/gps-imu/S1/proc", "flight.sbet", startSec, endSec);
    }
    L0Image& pan() { return flight.image(0); }
    L0Image& red() { return flight.image(1); }

    ScopedSettings settings{""};
    timingtest::TimingSession flight;
    Collector sinks;
};

} // namespace

TEST_F(TakeValidation, ASoundTakeGetsItsCtgFilesAndOnlyTheNotes)
{
    trajectory(299990.0, 300100.0);
    TakeValidationTraverser traverser(&flight.take(), &sinks, &sinks, &sinks);
    traverser.traverse(flight.take());

    EXPECT_EQ(sinks.messages, (Log{"I: Angular speed threshold used for validation: 2 degrees/second.",
                                   "W: No dark takes available for take L001"}));
    EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(pan().ctgFilename())));
    EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(red().ctgFilename())));
    EXPECT_TRUE(traverser.takesWithErrors().empty());
    EXPECT_FALSE(traverser.ctgsMissing());
    EXPECT_FALSE(traverser.trajectoryFailed());
}

TEST_F(TakeValidation, FaultsAreErrorsChargedToTheirTakeAndImageOnce)
{
    trajectory(299990.5, 300010.5); // ends inside the take
    QFile::remove(QString::fromStdString(pixelFile("REDN00A")));
    pan().setIntegrationTime(std::make_unique<IntegrationTimeZelV1>(seconds(0.02)));
    flight.take().setStartTimePosHeight(QDateTime(), geo::XYPoint(179.5, 47.0), 0.0f);
    flight.take().setStopTimePosHeight(QDateTime(), geo::XYPoint(-179.5, 47.0), 0.0f);
    TakeValidationTraverser traverser(&flight.take(), &sinks, &sinks, &sinks);
    traverser.traverse(flight.take());

    const Log& log = sinks.messages;
    EXPECT_TRUE(has(log, "E: Crossed the dateline: L001"));
    EXPECT_TRUE(has(log, "E: Can't find image data for band: REDN00A (tried \"" + pixelFile("REDN00A") + "\")."));
    EXPECT_TRUE(has(log, "E: Integration time(s) invalid for: " + pan().filename()
                             + " (min = 20.0 ms, max = 20.0 ms)."));
    EXPECT_TRUE(has(log, "E: GPS time is out side of recording time for the trajectory."));
    EXPECT_TRUE(hasPrefix(log, "E: GPS times between 3000105"));
    EXPECT_EQ(traverser.takesWithErrors(), (std::vector<Take*>{&flight.take()}));
    EXPECT_EQ(traverser.bandsWithErrors(), (std::vector<L0Image*>{&pan(), &red()}));
    EXPECT_TRUE(traverser.trajectoryFailed());
}

TEST_F(TakeValidation, ABandWhoseCtgCannotBeMadeIsListedAndSkipped)
{
    flight.addBand("GRNN00A", {}); // no CT file
    timingtest::writeBytes(pixelFile("GRNN00A"), "pixels");
    trajectory(299990.0, 300100.0);
    L0Image& green = flight.image(2);
    TakeValidationTraverser traverser(&flight.take(), &sinks, &sinks, &sinks);
    traverser.traverse(flight.take());

    EXPECT_EQ(traverser.missingCtgs(), (std::vector<L0Image*>{&green}));
    EXPECT_TRUE(has(sinks.messages, "I: CTG file " + green.ctgFilename()
                                        + " not yet created. Skipping trajectory coverage validation."));
    EXPECT_EQ(traverser.bandsWithErrors(), (std::vector<L0Image*>{&green}));

    // Without sinks the same walk says nothing and still keeps its lists.
    TakeValidationTraverser silent(&flight.take());
    EXPECT_NO_THROW(silent.traverse(flight.take()));
    EXPECT_TRUE(silent.ctgsMissing());
    EXPECT_EQ(silent.takesWithErrors(), (std::vector<Take*>{&flight.take()}));
}

TEST_F(TakeValidation, ASessionWalkChecksTheTrajectoriesAndOnlyItsOwnTake)
{
    Take& take = flight.take();
    auto* other = new Take(flight.session());
    other->setName("OTHER");
    other->setSensorId(take.sensorId());
    other->setSensorType(take.sensorType());
    flight.session().addTake(other);
    TakeValidationTraverser traverser(&take, &sinks, &sinks, &sinks);
    traverser.traverse(flight.session());

    EXPECT_EQ(sinks.messages, (Log{"I: Angular speed threshold used for validation: 2 degrees/second.",
                                   "W: Cannot find any IMU trajectories (SBET or SOL files).",
                                   "W: No dark takes available for take L001", "W: No IMU Trajectory for take L001",
                                   "I: No trajectory defined. Skipping trajectory coverage validation."}));
}

TEST(SessionValidationTraverser, ReportsWhatEachTrajectoryLacks)
{
    timingtest::TimingSession flight;
    flight.addBand("PANN00A", {});
    flight.take();
    std::vector<trajectorytest::SbetRow> rows = trajectorytest::regularSbet(21, 604790.0, 1.0);
    QDir().mkpath(QString::fromStdString(flight.path() + "/gps-imu/S1/proc"));
    timingtest::writeBytes(flight.path() + "/gps-imu/S1/proc/week.sbet", trajectorytest::sbetBytes(rows));
    Collector sinks;
    SessionValidationTraverser(&sinks, &sinks, &sinks).traverse(flight.session());

    const std::string description = flight.session().imuTrajectories().at(0)->description();
    EXPECT_EQ(sinks.messages,
              (Log{"W: Standard deviations are defaults for " + description, "I: GPS rollover in " + description}));
}
