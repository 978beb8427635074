#include "ValidationFiles.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/validation/CtgCoverageValidator.h>

#include <gtest/gtest.h>

using namespace datamodel;
using namespace validationtest;

namespace {

// A session with three bands and a level trajectory over [100 s, 200 s].
class CtgCoverage : public ::testing::Test {
protected:
    CtgCoverage()
    {
        for (const char* band : {"PANN00A", "REDN00A", "GRNN00A"})
            flight.addBand(band, {});
        trajectoryPath = writeLevelSbet(flight.path() + "/traj", "flight.sbet", 100.0, 200.0);
        trajectory.emplace(trajectoryPath);
    }
    Log check(const std::vector<double>& times)
    {
        writeCtg(flight.image(0).ctgFilename(), times);
        flight.image(0).uncache();
        Collector sinks;
        CtgCoverageValidator(&sinks, &sinks, &sinks, nullptr, &*trajectory).validate(flight.image(0));
        return sinks.messages;
    }
    std::string notCovered() const { return " not covered by trajectory " + trajectoryPath; }

    timingtest::TimingSession flight;
    std::string trajectoryPath;
    std::optional<ImuTrajectory> trajectory;
};

} // namespace

TEST_F(CtgCoverage, RunsOfUncoveredLinesAreReportedWhereTheyEnd)
{
    EXPECT_EQ(check(steadyTimes(10000, 120.0001, 0.005)), Log{});

    // Lines 10 to 19 jump back before the trajectory; line 20 is covered
    // again. Inside the band the times are written in seconds.
    std::vector<double> t = steadyTimes(30, 150.0, 0.01);
    for (int i = 10; i < 20; ++i)
        t[std::size_t(i)] = 50.0 + 0.01 * i;
    t[5] = 99.5;
    EXPECT_EQ(check(t), (Log{"E: GPS time 99.5ms" + notCovered(),
                             "E: GPS times between 50.1ms and 150.2ms" + notCovered()}));

    // Runs that reach the band's end are written in milliseconds; the band
    // spans several stretches of the walk.
    EXPECT_EQ(check(steadyTimes(12000, 141.0021, 0.005)),
              (Log{"E: GPS times between 200002.1ms and 200997.1ms" + notCovered()}));
    EXPECT_EQ(check(steadyTimes(100, 201.01, 0.01)),
              (Log{"E: All GPS times (from 201010.0ms to 202000.0ms)" + notCovered()}));
}

TEST_F(CtgCoverage, ATrajectoryEndingEarlyFailsOnlyOnZelM9Flights)
{
    writeCtg(flight.image(0).ctgFilename(), steadyTimes(100, 199.9, 0.01));
    CtgCoverageValidator validator(nullptr, nullptr, nullptr, nullptr, &*trajectory);
    validator.validate(flight.image(0));
    EXPECT_FALSE(validator.trajectoryFailed());

    timingtest::TimingSession zelM9;
    zelM9.addBand("PANN00A", {});
    writeFlightData(zelM9.path(), "ZELM9", "QX310");
    writeCtg(zelM9.image(0).ctgFilename(), steadyTimes(100, 150.0, 0.01));
    CtgCoverageValidator covered(nullptr, nullptr, nullptr, nullptr, &*trajectory);
    covered.validate(zelM9.image(0));
    EXPECT_FALSE(covered.trajectoryFailed());
    writeCtg(zelM9.image(0).ctgFilename(), steadyTimes(100, 199.9, 0.01));
    zelM9.image(0).uncache();
    covered.validate(zelM9.image(0));
    EXPECT_TRUE(covered.trajectoryFailed());
}

TEST_F(CtgCoverage, SkippedBandsAreAnnouncedOncePerValidator)
{
    writeCtg(flight.image(1).ctgFilename(), steadyTimes(10, 150.0, 0.01));
    const auto walk = [&](ImuTrajectory* imu) {
        Collector sinks;
        CtgCoverageValidator validator(&sinks, &sinks, &sinks, nullptr, imu);
        for (std::size_t band = 0; band < 3; ++band)
            validator.validate(flight.image(band));
        return sinks.messages;
    };
    EXPECT_EQ(walk(&*trajectory), (Log{"I: CTG file " + flight.image(0).ctgFilename()
                                       + " not yet created. Skipping trajectory coverage validation."}));
    for (std::size_t band : {0u, 2u})
        writeCtg(flight.image(band).ctgFilename(), steadyTimes(10, 150.0, 0.01));
    EXPECT_EQ(walk(nullptr), (Log{"I: No trajectory defined. Skipping trajectory coverage validation."}));
}
