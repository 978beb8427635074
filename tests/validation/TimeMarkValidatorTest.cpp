#include "ValidationFiles.h"

#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CtTimeGap.h>
#include <datamodel/validation/CtTmCoverageValidator.h>
#include <datamodel/validation/TmGapValidator.h>
#include <datamodel/validation/TmSequenceValidator.h>
#include <datamodel/validation/TmValidator.h>

#include <gtest/gtest.h>

using namespace datamodel;
using namespace validationtest;
using testsupport::thrownMessage;
using timingtest::Mark;

namespace {

/// Ten marks one second apart, CT from 3600 s; the step into mark
/// `odd` (when given) lasts `oddStepSec` instead.
std::vector<Mark> marks(int odd = -1, double oddStepSec = 1.0)
{
    std::vector<Mark> result;
    double ct = 3600.0;
    for (int i = 0; i < 10; ++i) {
        if (i > 0)
            ct += i == odd ? oddStepSec : 1.0;
        result.push_back({300000.0 + i, ct});
    }
    return result;
}

Log tmReport(const std::vector<Mark>& tm)
{
    timingtest::TimingSession flight;
    flight.writeMarks(tm);
    Collector sinks;
    TmValidator(&sinks, &sinks, &sinks).validate(flight.session());
    return sinks.messages;
}

} // namespace

TEST(TmValidator, AGapIsInformationAndCtRunningBackwardsAnError)
{
    EXPECT_EQ(tmReport(marks()), Log{});
    EXPECT_EQ(tmReport(marks(5, 1.09)), Log{});
    EXPECT_EQ(tmReport(marks(5, 1.15)), (Log{"I: TM file has gap at CT time 3605150.0ms"}));

    timingtest::TimingSession flight;
    std::vector<Mark> equal = marks();
    equal[4].ctTime = equal[3].ctTime;
    flight.writeMarks(equal);
    Collector sinks;
    TmValidator(&sinks, &sinks, &sinks).validate(flight.session());
    // The equal step is also a gap (0 s), so both checks speak.
    EXPECT_EQ(sinks.messages, (Log{"I: TM file has gap at CT time 3603000.0ms",
                                   "E: CT time goes backwards in TM file: " + flight.tmPath()}));
}

TEST(TmValidator, ASessionWithoutTimeMarksIsOneError)
{
    timingtest::TimingSession flight;
    Collector sinks;
    TmValidator(&sinks, &sinks, &sinks).validate(flight.session());
    ASSERT_EQ(sinks.messages.size(), 1u);
    EXPECT_EQ(sinks.messages[0].rfind("E: Can't find a TM file for session ", 0), 0u);
}

TEST(TmGapValidator, ThrowsTheGapAndJudgesOnlyBetweenItsBounds)
{
    timingtest::TimingSession flight;
    flight.writeMarks(marks(5, 1.15));
    TmGapValidator gaps;
    try {
        gaps.validate(flight.session());
        ADD_FAILURE() << "no gap thrown";
    } catch (const CtTimeGap& gap) {
        EXPECT_DOUBLE_EQ(gap.ctTime().value(), 3605.15);
    }
    EXPECT_EQ(thrownMessage([&] { TmSequenceValidator().validate(flight.session()); }), "<nothing thrown>");

    // Marks below the lower bound are skipped, the walk ends at the upper one.
    gaps.setCtLowerBound(seconds(3605.5));
    EXPECT_NO_THROW(gaps.validate(flight.session()));
    gaps.setCtLowerBound(seconds(-1.0));
    gaps.setCtUpperBound(seconds(3605.15));
    EXPECT_NO_THROW(gaps.validate(flight.session()));
}

TEST(CtTmCoverageValidator, EveryBandMustLieWithinTheTimeMarks)
{
    timingtest::TimingSession flight;
    flight.writeMarks(timingtest::regularMarks(20));
    flight.addBand("PANN00A", timingtest::bandCt(800, 2.0));
    flight.addBand("REDN00A", timingtest::bandCt(800, 18.5)); // ends after the last mark
    CtTmCoverageValidator coverage;

    EXPECT_NO_THROW(coverage.validate(flight.image(0).cameraTime()));
    const std::string late = thrownMessage([&] { coverage.validate(flight.session()); });
    EXPECT_EQ(late.rfind("maximum CT time in " + flight.tmPath() + " is ", 0), 0u) << late;

    timingtest::TimingSession early;
    early.writeMarks(timingtest::regularMarks(20, 300000.0, 3700.0));
    early.addBand("PANN00A", timingtest::bandCt(800, 2.0)); // CT from 3602 s
    EXPECT_EQ(thrownMessage([&] { CtTmCoverageValidator().validate(early.session()); }), "CTTime too small.");
}
