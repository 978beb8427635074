// Flights simulated with each fault the simulator can inject, and with all
// of them: the preparation must report every fault where the simulator put
// it (its truth file says where), with the check's own message and
// severity, and no warning or error that no injected fault explains. A
// clean flight and one that only crosses a GPS week are clean.

#include <datamodel/session/PreparationReport.h>
#include <datamodel/session/SessionPreparation.h>

#include <flightsim/FaultSet.h>
#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <string>
#include <vector>

using datamodel::PreparationMessage;
using datamodel::PreparationReport;
using Severity = PreparationMessage::Severity;

namespace {

/// A message the preparation gives for a fault: its severity, a part of its
/// text, and the take and band it must be charged to (empty: the session;
/// take "*": any take).
struct Finding {
    Severity severity;
    std::string text;
    std::string take;
    std::string band;
};

bool matches(const PreparationMessage& message, const Finding& finding)
{
    return message.severity == finding.severity && message.text.find(finding.text) != std::string::npos
           && (message.take == finding.take || finding.take == "*") && message.band == finding.band;
}

std::string describe(const PreparationMessage& message)
{
    return std::string(datamodel::toString(message.severity)) + " [" + message.take + "/" + message.band + "] "
           + message.text;
}

std::string describe(const Finding& finding)
{
    return std::string(datamodel::toString(finding.severity)) + " [" + finding.take + "/" + finding.band + "] "
           + finding.text;
}

/// What the preparation must report for one injected fault (`required`,
/// each at least once) and what else the fault may cause (`allowed`).
struct Expectation {
    std::vector<Finding> required;
    std::vector<Finding> allowed;
};

Expectation expectationOf(const QJsonObject& fault, const QJsonObject& truth, const flightsim::SimulationConfig& config)
{
    const std::string name = fault[QStringLiteral("name")].toString().toStdString();
    const std::string take = fault[QStringLiteral("take")].toString().toStdString();
    const std::string band = fault[QStringLiteral("band")].toString().toStdString();
    if (name == "tm-gap")
        return {{{Severity::Information, "TM file has gap at CT time ", take, {}}}, {}};
    if (name == "week-rollover")
        return {};
    if (name == "tm-jitter") {
        // The marks are disturbed from the start of the fault take on.
        const std::string faultTake = truth[QStringLiteral("takes")]
                                          .toArray()[config.faultTakeIndex()]
                                          .toObject()[QStringLiteral("label")]
                                          .toString()
                                          .toStdString();
        return {{{Severity::Information, "off the camera clock's course through their neighbours", faultTake, {}}},
                {}};
    }
    if (name == "ct-backwards")
        return {{{Severity::Warning, "Time goes backwards at ", take, band}}, {}};
    if (name == "saw-tooth")
        return {{{Severity::Warning, ": illegal delta at 8 between ", take, band}}, {}};
    if (name == "short-trajectory") {
        Expectation expectation;
        for (const QString& code : config.bands)
            expectation.required.push_back({Severity::Error, " not covered by trajectory ", take, code.toStdString()});
        // Neither the angular rates nor the EOPs can be had over the whole take.
        expectation.allowed.push_back(
            {Severity::Error, "GPS time is out side of recording time for the trajectory.", take, {}});
        expectation.allowed.push_back({Severity::Error, "No EOPs for take " + take, take, {}});
        return expectation;
    }
    if (name == "heavy-turbulence") {
        // The turbulence sets in before the take: the dark take recorded just
        // before it may be shaken too.
        // The trajectory quality judges the take's coverage an error; its
        // pixel errors and smearing may be judged too, there and on the dark take.
        const std::string exceeded = " occurrences of the angular velocity exceeding the limit of 2.000 deg/s";
        Expectation expectation{{{Severity::Error, exceeded, take, {}},
                                 {Severity::Error, "Heavy turbulence detected: ", take, {}}},
                                {{Severity::Error, exceeded, "*", {}}}};
        for (const Severity severity : {Severity::Error, Severity::Warning})
            for (const char* text : {"Heavy turbulence detected: ", "Turbulence detected: ", " L1 artifacts due to ",
                                     " L1/L2 smearing due to "})
                expectation.allowed.push_back({severity, text, "*", {}});
        return expectation;
    }
    if (name == "truncated-trajectory")
        return {{{Severity::Warning,
                  " ends inside a record: its last " + std::to_string(fault[QStringLiteral("partialBytes")].toInt())
                      + " bytes",
                  {},
                  {}}},
                {}};
    if (name == "missing-sensor-id")
        // The band is left out of its take: the calibration then has no data.
        return {{{Severity::Error, "Inconsistent camera identifiers in .info files; found ", take, band}},
                {{Severity::Warning, "There is a calibration for " + band + " but take " + take, take, {}}}};
    if (name == "integration-time")
        return {{{Severity::Error, "Integration time(s) invalid for: ", take, band}}, {}};
    ADD_FAILURE() << "no expectation for the fault " << name;
    return {};
}

class FaultTruthTest : public ::testing::Test {
protected:
    /// Three lines, each with its dark take, and four bands: enough for each
    /// per-band fault to have a band of its own.
    static flightsim::SimulationConfig flight()
    {
        auto config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
        config.takes = 3;
        config.darkTakes = 3;
        config.linesPerTake = 4000;
        config.bands = {QStringLiteral("PANF28A"), QStringLiteral("PANF28B"), QStringLiteral("PANN00A"),
                        QStringLiteral("NIRN00A")};
        return config;
    }

    /// Simulates `config` and prepares the flight; `truth` gets its truth file.
    PreparationReport prepare(const flightsim::SimulationConfig& config, QJsonObject& truth)
    {
        const QString session = m_dir.path() + QStringLiteral("/flight") + QString::number(++m_flights);
        flightsim::FlightSimulator(config).run(session);
        QFile file(session + QStringLiteral("/truth.json"));
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error("test setup: no truth file");
        truth = QJsonDocument::fromJson(file.readAll()).object();
        return datamodel::SessionPreparation().run(session.toStdString());
    }

    /// Every injected fault is reported as expected, and every warning and
    /// error is one that an injected fault explains.
    void expectScored(const PreparationReport& report, const QJsonObject& truth,
                      const flightsim::SimulationConfig& config, const std::string& label)
    {
        std::vector<Finding> explained;
        for (const QJsonValue& value : truth[QStringLiteral("faults")].toArray()) {
            const Expectation expectation = expectationOf(value.toObject(), truth, config);
            for (const Finding& finding : expectation.required) {
                bool found = false;
                for (const PreparationMessage& message : report.messages)
                    found = found || matches(message, finding);
                EXPECT_TRUE(found) << label << ": not reported: " << describe(finding) << "\n" << all(report);
                explained.push_back(finding);
            }
            explained.insert(explained.end(), expectation.allowed.begin(), expectation.allowed.end());
        }
        for (const PreparationMessage& message : report.messages) {
            if (message.severity == Severity::Information)
                continue;
            bool known = false;
            for (const Finding& finding : explained)
                known = known || matches(message, finding);
            EXPECT_TRUE(known) << label << ": no injected fault explains " << describe(message);
        }
    }

    static std::string all(const PreparationReport& report)
    {
        std::string text;
        for (const PreparationMessage& message : report.messages)
            text += "  " + describe(message) + "\n";
        return text;
    }

    QTemporaryDir m_dir;
    int m_flights = 0;
};

TEST_F(FaultTruthTest, EachFaultIsReportedWhereItWasInjected)
{
    ASSERT_TRUE(m_dir.isValid());
    for (const flightsim::Fault fault : flightsim::FaultSet::all()) {
        auto config = flight();
        config.faults.add(fault);
        QJsonObject truth;
        const PreparationReport report = prepare(config, truth);
        const std::string label = flightsim::FaultSet::name(fault).toStdString();
        ASSERT_EQ(truth[QStringLiteral("faults")].toArray().size(), 1) << label;
        expectScored(report, truth, config, label);
        // Valid data across the week's end is no finding at all.
        if (fault == flightsim::Fault::WeekRollover) {
            EXPECT_EQ(report.messageCount(Severity::Warning) + report.messageCount(Severity::Error), 0u)
                << all(report);
        }
    }
}

TEST_F(FaultTruthTest, EveryFaultAtOnceIsReportedAndACleanFlightIsClean)
{
    ASSERT_TRUE(m_dir.isValid());
    QJsonObject truth;
    const PreparationReport clean = prepare(flight(), truth);
    EXPECT_EQ(clean.messageCount(Severity::Warning) + clean.messageCount(Severity::Error), 0u) << all(clean);

    auto config = flight();
    for (const flightsim::Fault fault : flightsim::FaultSet::all())
        config.faults.add(fault);
    const PreparationReport faulty = prepare(config, truth);
    EXPECT_EQ(truth[QStringLiteral("faults")].toArray().size(), qsizetype(flightsim::FaultSet::all().size()));
    expectScored(faulty, truth, config, "all");
}

} // namespace
