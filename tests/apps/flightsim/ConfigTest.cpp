// The command-line options, the checks of the parameters, and what the
// simulator refuses to do.

#include "SimulatedFlight.h"

#include <flightsim/SimulationOptions.h>

#include <QDir>

#include <gtest/gtest.h>

using namespace flightfiles;
using flightsim::ConfigError;
using flightsim::SimulationConfig;
using flightsim::SimulationOptions;

namespace {

std::string parseError(const QStringList& arguments)
{
    try {
        SimulationOptions::parse(arguments).config.validate();
    } catch (const ConfigError& e) {
        return e.what();
    }
    return "<accepted>";
}

} // namespace

TEST(FlightsimOptions, APresetComesFirstAndOptionsOverrideIt)
{
    const SimulationOptions::Parsed parsed = SimulationOptions::parse(
        {QStringLiteral("--takes"), QStringLiteral("4"), QStringLiteral("out/session"), QStringLiteral("--preset"),
         QStringLiteral("tiny"), QStringLiteral("--bands=PANN00A,NIRB14A"), QStringLiteral("--fault"),
         QStringLiteral("tm-gap,saw-tooth"), QStringLiteral("--fault=heavy-turbulence"), QStringLiteral("--start"),
         QStringLiteral("2020-02-29T23:59:59Z"), QStringLiteral("--seed"), QStringLiteral("18446744073709551615"),
         QStringLiteral("--misalignment"), QStringLiteral("0.1,-0.2,0.3"), QStringLiteral("--session-data")});
    EXPECT_EQ(parsed.directory, QStringLiteral("out/session"));
    const SimulationConfig& c = parsed.config;
    EXPECT_EQ(c.takes, 4);
    EXPECT_EQ(c.linesPerTake, 400); // from the tiny preset
    EXPECT_EQ(c.bands, QStringList({QStringLiteral("PANN00A"), QStringLiteral("NIRB14A")}));
    EXPECT_EQ(c.faults.names(), QStringList({QStringLiteral("tm-gap"), QStringLiteral("saw-tooth"), QStringLiteral("heavy-turbulence")}));
    EXPECT_EQ(c.startUtc, QDateTime(QDate(2020, 2, 29), QTime(23, 59, 59), Qt::UTC));
    EXPECT_EQ(c.seed, 18446744073709551615ull);
    EXPECT_DOUBLE_EQ(c.misalignmentDeg[1], -0.2);
    EXPECT_TRUE(c.writeSessionData);
    EXPECT_NO_THROW(c.validate());

    EXPECT_EQ(SimulationOptions::parse({QStringLiteral("x"), QStringLiteral("--start=2020-03-01T01:30:00+02:00")}).config.startUtc,
              QDateTime(QDate(2020, 2, 29), QTime(23, 30, 0), Qt::UTC));
    EXPECT_EQ(SimulationOptions::parse({QStringLiteral("x"), QStringLiteral("--start=2020-03-01T01:30:00")}).config.startUtc,
              QDateTime(QDate(2020, 3, 1), QTime(1, 30, 0), Qt::UTC));

    const SimulationConfig realistic = SimulationOptions::parse({QStringLiteral("x"), QStringLiteral("--preset=realistic")}).config;
    EXPECT_EQ(realistic.takes, 20);
    EXPECT_EQ(realistic.linesPerTake, 60000);
    EXPECT_EQ(realistic.bands.size(), 12);
    EXPECT_EQ(SimulationOptions::parse({QStringLiteral("x"), QStringLiteral("--fault"), QStringLiteral("all")}).config.faults.faults().size(),
              std::size_t(10));
}

TEST(FlightsimOptions, WrongArgumentsAreNamed)
{
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--speeed"), QStringLiteral("70")}), "Unknown option 'speeed'.");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--speed")}), "Missing value after '--speed'.");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--speed"), QStringLiteral("fast")}),
              "option --speed needs a number, got \"fast\"");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--session-data=yes")}), "Unexpected value after '--session-data'.");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--preset"), QStringLiteral("huge")}),
              "unknown preset \"huge\" (--preset); use tiny, small or realistic");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--start"), QStringLiteral("yesterday")}),
              "option --start needs a UTC time yyyy-MM-ddTHH:mm:ss, got \"yesterday\"");
    EXPECT_EQ(parseError({}), "no session directory given");
    EXPECT_EQ(parseError({QStringLiteral("a"), QStringLiteral("b")}), "only one session directory may be given, got \"a\" and \"b\"");
    const std::string fault = parseError({QStringLiteral("x"), QStringLiteral("--fault"), QStringLiteral("gremlins")});
    EXPECT_EQ(fault.rfind("unknown fault \"gremlins\" (--fault); known faults: all, tm-gap, week-rollover", 0), 0u) << fault;
}

TEST(FlightsimOptions, ValuesOutOfRangeNameTheParameter)
{
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--lat"), QStringLiteral("85")}),
              "block centre latitude must be between -80 and 80 degrees (--lat), got 85");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--bands"), QStringLiteral("PANN00A,PANX00A")}),
              "band \"PANX00A\" is not a band code: channel RED, BLU, GRN, PAN or NIR, direction F, B or N, two "
              "digits, line A or B, as in PANF28A (--bands)");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--bands"), QStringLiteral("PANN00A,PANN00A")}),
              "band \"PANN00A\" is listed twice (--bands)");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--accuracy-rate"), QStringLiteral("3")}),
              "trajectory rate (--imu-rate 200) must be a whole multiple of the accuracy record rate (--accuracy-rate 3)");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--lines"), QStringLiteral("404"), QStringLiteral("--fault"),
                          QStringLiteral("saw-tooth")}),
              "the saw-tooth fault needs a number of lines per take that is a multiple of 8 (--lines), got 404");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--serial"), QStringLiteral("A12")}),
              "sensor serial number must be a decimal number of up to 9 digits (--serial), got \"A12\"");
    EXPECT_EQ(parseError({QStringLiteral("x"), QStringLiteral("--fault-take"), QStringLiteral("4")}),
              "fault take must be between 0 and 3 (--fault-take), got 4");
}

TEST(FlightsimSimulator, RefusesWhatItCannotWriteAndLeavesNothingBehind)
{
    QTemporaryDir parent;
    ASSERT_TRUE(parent.isValid());
    const QString occupied = parent.path() + QStringLiteral("/occupied");
    ASSERT_TRUE(QDir().mkpath(occupied));
    {
        QFile file(occupied + QStringLiteral("/note.txt"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("keep me");
    }
    try {
        flightsim::FlightSimulator(tinyConfig()).run(occupied);
        FAIL() << "a non-empty directory was accepted";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()), "The target directory is not empty: " + occupied.toStdString());
    }

    // A flight too short for the time-mark faults fails after the work has
    // begun: neither the session nor the working folder may remain.
    SimulationConfig config = tinyConfig();
    config.leadInSec = 1.0;
    config.leadOutSec = 1.0;
    config.faults.add(flightsim::Fault::TmGap);
    const QString target = parent.path() + QStringLiteral("/short");
    EXPECT_THROW(flightsim::FlightSimulator(config).run(target), ConfigError);
    EXPECT_FALSE(QFileInfo::exists(target));

    SimulationConfig longer = tinyBlock(3);
    longer.durationSec = 100.0;
    try {
        flightsim::FlightSimulator(longer).run(target);
        FAIL() << "a too short duration was accepted";
    } catch (const ConfigError& e) {
        EXPECT_EQ(std::string(e.what()).rfind("a flight of 100 s (--duration) is too short: the takes and turns alone take ", 0), 0u)
            << e.what();
    }
    EXPECT_EQ(QDir(parent.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("occupied")});

    // An existing empty directory is filled.
    const QString empty = parent.path() + QStringLiteral("/empty");
    ASSERT_TRUE(QDir().mkpath(empty));
    const flightsim::SimulationReport report = flightsim::FlightSimulator(tinyConfig()).run(empty);
    EXPECT_EQ(report.files, 18);
    EXPECT_TRUE(QFileInfo::exists(empty + QStringLiteral("/truth.json")));
}
