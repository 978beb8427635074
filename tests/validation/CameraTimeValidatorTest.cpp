#include "ValidationFiles.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/validation/CameraTimeValidator.h>
#include <datamodel/validation/ClockSequenceValidator.h>
#include <datamodel/validation/IntegrationTimeValidator.h>
#include <datamodel/validation/SmoothnessValidator.h>

#include <gtest/gtest.h>

using namespace datamodel;
using namespace validationtest;
using testsupport::thrownMessage;

namespace {

// A session with bands PANN00A and REDN00A whose CTG files the test writes.
class CameraTimeValidation : public ::testing::Test {
protected:
    CameraTimeValidation()
    {
        flight.addBand("PANN00A", {});
        flight.addBand("REDN00A", {});
    }
    /// The band's times, read afresh from a CTG file holding `values`.
    CameraTime& times(std::size_t band, const std::vector<double>& values)
    {
        flight.image(band).uncache();
        writeCtg(flight.image(band).ctgFilename(), values);
        return flight.image(band).cameraTime();
    }
    std::string ctg(std::size_t band) { return flight.image(band).ctgFilename(); }

    timingtest::TimingSession flight;
    Collector sinks;
};

/// 40 lines whose period doubles at line 20: a band of non-uniform period.
std::vector<double> changingPeriod()
{
    std::vector<double> t = steadyTimes(20, 100.0, 0.001);
    for (int i = 1; i <= 20; ++i)
        t.push_back(t[19] + 0.002 * i);
    return t;
}

} // namespace

TEST_F(CameraTimeValidation, ClockSequenceFailsOnlyWhenTimeRunsBackwards)
{
    ClockSequenceValidator sequence;
    EXPECT_NO_THROW(sequence.validate(times(0, {1.0, 1.001, 1.001, 1.002})));
    EXPECT_EQ(thrownMessage([&] { sequence.validate(times(0, {1.0, 1.001, 1.0005, 1.002})); }),
              "Time goes backwards at 1000.5ms for PANN00A");
    EXPECT_EQ(thrownMessage([&] { sequence.validate(times(1, {})); }), "CT index out of range.");

    // Times without an image cannot name their band.
    const std::string path = flight.raw("loose.ctg");
    writeCtg(path, {2.0, 1.0});
    EXPECT_EQ(thrownMessage([&] { sequence.validate(*CameraTime::fromCtgFile(path)); }),
              "CameraTime not initialized.");
}

TEST_F(CameraTimeValidation, SmoothnessHoldsEachStepToFivePercentOfTheFirst)
{
    SmoothnessValidator smoothness;
    EXPECT_NO_THROW(smoothness.validate(times(0, {0.0, 0.01, 0.0204, 0.03})));
    EXPECT_EQ(thrownMessage([&] { smoothness.validate(times(0, {0.0, 0.01, 0.021, 0.03})); }),
              "CTG file " + ctg(0)
                  + ": illegal delta at 2 between 0.01000 and 0.02100 of 0.01100: expected a value within +/- 20% of "
                    "0.01000");
    EXPECT_EQ(thrownMessage([&] { smoothness.validate(times(1, {5.0})); }), "CT index out of range.");
}

TEST_F(CameraTimeValidation, ABandOfNonUniformPeriodIsCheckedForSequenceOnly)
{
    std::vector<double> t = changingPeriod();
    EXPECT_NO_THROW(SmoothnessValidator().validate(times(0, t)));
    EXPECT_NO_THROW(ClockSequenceValidator().validate(times(0, t)));

    t[30] = t[29] - 0.0001;
    ASSERT_TRUE(times(0, t).isNonUniformCT());
    EXPECT_NO_THROW(SmoothnessValidator().validate(times(0, t)));
    EXPECT_NE(thrownMessage([&] { ClockSequenceValidator().validate(times(0, t)); }).find("Time goes backwards at"),
              std::string::npos);
}

TEST_F(CameraTimeValidation, IntegrationTimeWarnsWhenTheLineSpacingDiffersFromTheRecordedValue)
{
    // 1000 lines over 1.0 s: a mean spacing of 0.001 s, 2.5 % of it allowed.
    const std::vector<double> t = steadyTimes(1000, 300010.0, 1.0 / 999.0);
    const auto warnings = [&](const QByteArray& ini, const QByteArray& head, const QByteArray& itMs) {
        ScopedSettings settings(ini);
        timingtest::TimingSession session;
        session.addBand("PANN00A", {});
        writeFlightData(session.path(), "ZELM8", head, itMs);
        writeCtg(session.image(0).ctgFilename(), t);
        Collector log;
        IntegrationTimeValidator(&log, &log, &log).validate(session.image(0).cameraTime());
        return log.messages;
    };
    const QByteArray on = "[Validation]\nct_not_equal_it_warning=Yes\n";

    EXPECT_EQ(warnings(on, "QX310", "1.03"),
              (Log{"W: FlightData.xml claims the integration time is 0.0010s but the CTG file has an average delta of "
                   "0.0010s (maximum difference allowed is 0.0000s) for band PANN00A"}));
    EXPECT_EQ(warnings(on, "QX310", "1.02"), Log{});
    EXPECT_EQ(warnings("", "QX310", "1.03"), Log{});
    EXPECT_EQ(warnings(on, "QX320", "1.03"), Log{});
}

TEST_F(CameraTimeValidation, ASessionFailsWhenABandFailsButEveryBandIsChecked)
{
    ScopedSettings settings("");
    times(0, {1.0, 1.001, 1.0005, 1.002});
    times(1, {0.0, 0.01, 0.021, 0.03});
    CameraTimeValidator validator(&sinks, &sinks, &sinks);

    EXPECT_EQ(thrownMessage([&] { validator.validate(flight.session()); }), "Detected errors in ctg files.");
    ASSERT_EQ(sinks.messages.size(), 2u);
    EXPECT_EQ(sinks.messages[0], "W: Time goes backwards at 1000.5ms for PANN00A");
    EXPECT_EQ(sinks.messages[1].rfind("W: CTG file " + ctg(1) + ": illegal delta at 2", 0), 0u);
    EXPECT_EQ(validator.getInvalidFiles(), (std::vector<std::string>{ctg(0), ctg(1)}));
    EXPECT_FALSE(validator.ctgsMissing());

    // Sound files pass.
    times(0, steadyTimes(10, 1.0, 0.001));
    times(1, steadyTimes(10, 1.0, 0.001));
    EXPECT_NO_THROW(CameraTimeValidator().validate(flight.session()));
}

TEST_F(CameraTimeValidation, ASessionWithoutCtgFilesFailsUnchecked)
{
    CameraTimeValidator validator(&sinks, &sinks, &sinks);
    EXPECT_EQ(thrownMessage([&] { validator.validate(flight.session()); }), "Detected errors in ctg files.");
    EXPECT_TRUE(validator.ctgsMissing());
    EXPECT_TRUE(validator.getInvalidFiles().empty());
    EXPECT_TRUE(sinks.messages.empty());
}
