// The quality measures an EOP trajectory carries: the EOQ file beside the
// EOP file (layout, round trip, refusals), lazy loading, the lookup by time,
// the statistics, and their judgement by EoqValidationTraverser.

#include "TestSupport.h"

#include <datamodel/trajectory/EopTrajectory.h>
#include <datamodel/validation/EoqValidationTraverser.h>

#include <platform/util/Installation.h>

#include <gtest/gtest.h>

#include <QtEndian>

#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

using datamodel::EopTrajectory;
using datamodel::EoqValidationTraverser;
using datamodel::seconds;
using testsupport::thrownMessage;

namespace {

using Record = EopTrajectory::QualityRecord;

/// Three records with known statistics: NCS 0.5 to 3, RPE -0.3 to 0.2, PSR up to 2.
const std::vector<Record> sRecords
    = {{100.0, 1.0f, 0.1f, 0.0f}, {100.005, 0.5f, -0.3f, 2.0f}, {100.01, 3.0f, 0.2f, 1.0f}};

QByteArray int32(std::int32_t value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

/// An EOQ file: header, parameter block (`xml` and its zero byte, the
/// length `blockBytes` when given) and `records` zeroed records.
QByteArray eoqBytes(std::int32_t version, const QByteArray& xml, int records = 0,
                    std::optional<std::int32_t> blockBytes = std::nullopt)
{
    return "EOQ_" + int32(version) + int32(0) + int32(blockBytes.value_or(std::int32_t(xml.size() + 1))) + xml
        + QByteArray(1, '\0') + QByteArray(24 * records, '\0');
}

class EoqFileTest : public testsupport::FileTest {
protected:
    /// A trajectory of the EOP file "take.eop" (which need not exist).
    EopTrajectory trajectory() const { return EopTrajectory(path(QStringLiteral("take.eop")), true); }
    std::string eoqPath() const { return path(QStringLiteral("take.eoq")); }
    std::string writeEoq(const QByteArray& bytes) { return write(QStringLiteral("take.eoq"), bytes); }
};

} // namespace

TEST_F(EoqFileTest, WritesTheDocumentedLayoutAndReadsItBackBitForBit)
{
    EopTrajectory written = trajectory();
    written.setQualities(sRecords);
    written.writeQualities();

    const QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<EOQ version=\"3\" numSets=\"3\">\n"
                           " <Source name=\"EopTrajectory\"/>\n"
                           " <NCS min=\"0.5\" max=\"3\" rms=\"1.19024\"/>\n"
                           " <RPE min=\"-0.3\" max=\"0.2\" rms=\"0.216025\"/>\n"
                           " <PSR max=\"2\" rms=\"1.29099\"/>\n"
                           "</EOQ>\n";
    const QByteArray bytes = bytesOf(eoqPath());
    ASSERT_EQ(bytes.size(), 16 + xml.size() + 1 + 3 * 24);
    EXPECT_EQ(bytes.left(16), "EOQ_" + int32(3) + int32(0) + int32(std::int32_t(xml.size() + 1)));
    EXPECT_EQ(bytes.mid(16, xml.size() + 1), xml + QByteArray(1, '\0'));
    // The second record: time, NCS, RPE, PSR, four zero bytes.
    const char* second = bytes.constData() + 16 + xml.size() + 1 + 24;
    double time = 0.0;
    float measures[3] = {};
    std::memcpy(&time, second, 8);
    std::memcpy(measures, second + 8, 12);
    EXPECT_EQ(time, 100.005);
    EXPECT_EQ(measures[0], 0.5f);
    EXPECT_EQ(measures[1], -0.3f);
    EXPECT_EQ(measures[2], 2.0f);
    EXPECT_EQ(QByteArray(second + 20, 4), QByteArray(4, '\0'));

    // Records bit for bit; statistics to the six digits written; written
    // again, the same bytes.
    const EopTrajectory read = trajectory();
    EXPECT_TRUE(read.hasQualityMeasures());
    ASSERT_EQ(read.numQualitySets(), 3);
    for (int i = 0; i < 3; ++i) {
        const Record& expected = sRecords[std::size_t(i)];
        EXPECT_EQ(read.ncsAtGps(seconds(expected.time)), expected.ncs);
        EXPECT_EQ(read.rpeAtQualityIndex(i), expected.rpe);
        EXPECT_EQ(read.psrAtQualityIndex(i), expected.psr);
    }
    EXPECT_EQ(read.minNcs(), 0.5f);
    EXPECT_EQ(read.maxRpe(), 0.2f);
    EXPECT_NEAR(read.rmsNcs(), written.rmsNcs(), 1e-5);
    read.writeQualities();
    EXPECT_EQ(bytesOf(eoqPath()), bytes);

    // A copy keeps what the original holds; the ASCII export has fixed columns.
    EopTrajectory copy(written);
    EXPECT_EQ(copy.maxNcs(), 3.0f);
    copy.writeQualitiesToASCII();
    EXPECT_EQ(bytesOf(path(QStringLiteral("take.asc"))), "100.000000 1.000000 0.100000 0.000000\n"
                                                         "100.005000 0.500000 -0.300000 2.000000\n"
                                                         "100.010000 3.000000 0.200000 1.000000\n");
}

TEST_F(EoqFileTest, BrokenFilesAreRefusedWithTheirMessages)
{
    const QByteArray good = "<EOQ version=\"3\" numSets=\"1\"/>";
    const std::string name = eoqPath();
    const auto recordsMessage = [&](const QByteArray& bytes) {
        writeEoq(bytes);
        return thrownMessage([&] { trajectory().readQualities(true); });
    };
    EXPECT_EQ(thrownMessage([&] { trajectory().ncsAtQualityIndex(0); }), "Failed to open EOQ file: " + name);
    EXPECT_EQ(recordsMessage("EOP_" + good), "No EOQ file!");
    EXPECT_EQ(recordsMessage("EO"), "No EOQ file!");
    EXPECT_EQ(recordsMessage(eoqBytes(2, good, 1)), "EOQ versions 1 and 2 are unsupported.");
    EXPECT_EQ(recordsMessage(eoqBytes(1, "")), "EOQ versions 1 and 2 are unsupported.");
    EXPECT_EQ(recordsMessage(eoqBytes(4, good, 1)), "Unknown EOQ file version.");
    EXPECT_EQ(recordsMessage(eoqBytes(3, "<EOQ version=\"2\" numSets=\"1\"/>", 1)), "EOQ version mismatch!");
    EXPECT_EQ(recordsMessage(eoqBytes(3, "<EOQ numSets=\"1\"/>", 1)), "EOQ version mismatch!");
    EXPECT_EQ(recordsMessage(eoqBytes(3, "<EOQ version=\"3\"><NCS></EOQ>")),
              "Error reading EOQ parameter block: Opening and ending tag mismatch. (line 1, column 28)");
    EXPECT_EQ(recordsMessage(eoqBytes(3, "<EOQ version=\"3\" numSets=\"3\"/>", 2)),
              "Header/data mismatch in EOQ file: " + name);
    // Beyond what the format says: counts and lengths that cannot be.
    EXPECT_EQ(recordsMessage(eoqBytes(3, "<EOQ version=\"3\" numSets=\"-1\"/>")),
              "Invalid EOQ file: " + name + " (numSets is \"-1\", not a count of records)");
    EXPECT_EQ(recordsMessage(eoqBytes(3, good, 1, 4000)),
              "Invalid EOQ file: " + name + " (the parameter block of 4000 bytes does not fit into the 71 bytes of "
                                            "the file)");
    EXPECT_EQ(recordsMessage(eoqBytes(3, "<EOQ version=\"3\"><PSR max=\"much\"/></EOQ>")),
              "Invalid EOQ file: " + name + " (the max of PSR is \"much\", not a number)");
    EXPECT_EQ(recordsMessage(eoqBytes(3, good).left(10)),
              "Invalid EOQ file: " + name + " (the header takes 16 bytes at least, the file has 10)");
}

TEST_F(EoqFileTest, MissingValuesReadAsTheirDefaultsAndUnknownElementsAreSkipped)
{
    writeEoq(eoqBytes(3,
                      "<EOQ version=\"3.0\" numSets=\"2\"><Other><NCS min=\"-9\"/></Other>"
                      "<RPE max=\"0.25\"/><PSR rms=\"nan\"/><Source/></EOQ>",
                      2));
    const EopTrajectory read = trajectory();
    EXPECT_EQ(read.numQualitySets(), 2);
    EXPECT_EQ(read.minNcs(), 1.0f);
    EXPECT_EQ(read.maxNcs(), 1.0f);
    EXPECT_EQ(read.rmsNcs(), 0.0f);
    EXPECT_EQ(read.minRpe(), 0.0f);
    EXPECT_EQ(read.maxRpe(), 0.25f);
    EXPECT_TRUE(std::isnan(read.rmsPsr()));
    EXPECT_EQ(read.rpeAtQualityIndex(1), 0.0f);
}

TEST_F(EoqFileTest, WithoutAReadableFileTheStatisticsAreTheDefaults)
{
    for (const QByteArray& content : {QByteArray(), QByteArray("EOQ_") + int32(2)}) {
        if (!content.isNull())
            writeEoq(content);
        const EopTrajectory none = trajectory();
        EXPECT_FALSE(none.hasQualityMeasures());
        EXPECT_EQ(none.numQualitySets(), 0);
        EXPECT_EQ(none.minNcs(), 1.0f);
        EXPECT_EQ(none.maxNcs(), 1.0f);
        EXPECT_EQ(none.minRpe() + none.maxRpe() + none.maxPsr() + none.rmsNcs() + none.rmsRpe() + none.rmsPsr(), 0.0f);
        EXPECT_NE(thrownMessage([&] { none.psrAtGps(seconds(1.0)); }), "<nothing thrown>");
    }
    const EopTrajectory unnamed(path(QStringLiteral("take.dat")), true);
    EXPECT_FALSE(unnamed.hasQualityMeasures());
    EXPECT_EQ(thrownMessage([&] { unnamed.eoqFileName(); }),
              "Invalid EOQ file name: " + path(QStringLiteral("take.dat")) + ". EOQ file name cannot be derived!");
    EXPECT_EQ(EopTrajectory("/a.eop/take.eop.adj", true).eoqFileName(), "/a.eop/take.eoq");
}

TEST_F(EoqFileTest, WriteFailuresNameTheFile)
{
    const EopTrajectory nowhere(path(QStringLiteral("missing/take.eop")), true);
    const std::string name = path(QStringLiteral("missing/take.eoq"));
    EXPECT_EQ(thrownMessage([&] { nowhere.writeQualities(); }), "Failed to write EOQ file: " + name);
    EXPECT_EQ(thrownMessage([&] { nowhere.writeQualitiesToASCII(); }),
              "Failed to write EOQ ASCII file: " + path(QStringLiteral("missing/take.asc")));
    // Without records or a file to read them from: an empty file.
    trajectory().writeQualities();
    EXPECT_EQ(trajectory().numQualitySets(), 0);
    EXPECT_FALSE(trajectory().hasQualityMeasures());
}

TEST(EoqQualities, StatisticsAreSinglePrecisionWithNcsAgainstOne)
{
    EopTrajectory trajectory("take.eop", true);
    trajectory.setQualities(sRecords);
    EXPECT_TRUE(trajectory.hasQualityMeasures());
    EXPECT_EQ(trajectory.minNcs(), 0.5f);
    EXPECT_EQ(trajectory.maxNcs(), 3.0f);
    EXPECT_EQ(trajectory.minRpe(), -0.3f);
    EXPECT_EQ(trajectory.maxRpe(), 0.2f);
    EXPECT_EQ(trajectory.maxPsr(), 2.0f);
    EXPECT_FLOAT_EQ(trajectory.rmsNcs(), std::sqrt(4.25f / 3.0f));
    EXPECT_FLOAT_EQ(trajectory.rmsRpe(), std::sqrt(0.14f / 3.0f));
    EXPECT_FLOAT_EQ(trajectory.rmsPsr(), std::sqrt(5.0f / 3.0f));
    trajectory.setQualities({});
    EXPECT_FALSE(trajectory.hasQualityMeasures());
    EXPECT_EQ(trajectory.minNcs(), 1.0f);
    EXPECT_EQ(trajectory.rmsNcs(), 0.0f);
}

TEST(EoqQualities, TheIndexAtATimeIsTheNearestRecordTheLaterOnATie)
{
    EopTrajectory trajectory("take.eop", true);
    trajectory.setQualities({{10.0, 1, 0, 0}, {11.0, 1, 0, 0}, {11.5, 1, 0, 0}, {15.0, 1, 0, 0}});
    const std::vector<std::pair<double, int>> expected
        = {{10.0, 0}, {10.49, 0}, {10.5, 1}, {11.25, 2}, {11.2, 1}, {13.25, 3}, {13.2, 2}, {15.0, 3}, {-1e300, 0},
           {9.0, 0}, {16.0, 3}, {1e300, 3}};
    for (const auto& [time, index] : expected)
        EXPECT_EQ(trajectory.qualityIndexAtGps(seconds(time)), index) << time;
    EXPECT_EQ(trajectory.ncsAtGps(seconds(11.3)), 1.0f);
    // A start rounded up to the last record still finds the one before.
    trajectory.setQualities({{-1.0, 1, 0, 0}, {1e-20, 1, 0, 0}, {2e-20, 1, 0, 0}});
    EXPECT_EQ(trajectory.qualityIndexAtGps(seconds(1e-20)), 1);

    trajectory.setQualities({{10.0, 1, 0, 0}, {12.0, 1, 0, 0}, {11.0, 1, 0, 0}, {15.0, 1, 0, 0}});
    EXPECT_EQ(thrownMessage([&] { trajectory.qualityIndexAtGps(seconds(13.0)); }), "EOQ times go backwards");
    trajectory.setQualities({});
    EXPECT_NE(thrownMessage([&] { trajectory.qualityIndexAtGps(seconds(11.5)); }), "<nothing thrown>");
}

namespace {

/// Every message, prefixed with its severity.
struct Messages : EoqValidationTraverser::Information, EoqValidationTraverser::Warning, EoqValidationTraverser::Error {
    void information(const std::string& message) override { all.push_back("I " + message); }
    void warning(const std::string& message) override { all.push_back("W " + message); }
    void error(const std::string& message) override { all.push_back("E " + message); }
    std::vector<std::string> all;
};

class EoqValidationTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(root.isValid());
        env.emplace(util::sKavixRootVariable, root.path().toUtf8());
    }

    /// The messages on a trajectory whose every record holds these measures.
    std::vector<std::string> judge(float ncs, float rpe, float psr)
    {
        EopTrajectory trajectory("take.eop", true);
        trajectory.setQualities({{1.0, ncs, rpe, psr}});
        Messages messages;
        EoqValidationTraverser(&messages, &messages, &messages).traverse(trajectory);
        return messages.all;
    }

    QTemporaryDir root;
    std::optional<testsupport::ScopedEnv> env;
};

const char* const sHeavy = "E Heavy turbulence detected: Very fast forward and/or backward coverage.";
const char* const sTurbulence = "W Turbulence detected: Fast forward and/or slight backward coverage.";

} // namespace

TEST_F(EoqValidationTest, MessagesFollowTheLimits)
{
    EXPECT_EQ(judge(1.0f, 0.0f, 0.0f), (std::vector<std::string>{
                                           "I Normalized Coverage Speed (NCS) - RMS: 0, range: 1 - 1",
                                           "I Relative L1 Pixel Error (RPE) - RMS: 0, range: 0 - 0",
                                           "I Pixel Smearing Ratio (PSR) - RMS: 0, maximum: 0",
                                       }));
    // NCS, on its minimum for both bounds.
    EXPECT_EQ(judge(-0.5f, 0.0f, 0.0f)[1], sTurbulence);
    EXPECT_EQ(judge(-1.5f, 0.0f, 0.0f)[1], sHeavy);
    EXPECT_EQ(judge(2.5f, 0.0f, 0.0f)[1], sTurbulence);
    EXPECT_EQ(judge(3.5f, 0.0f, 0.0f)[1], sHeavy);
    EXPECT_EQ(judge(-0.5f, 0.0f, 0.0f)[0], "I Normalized Coverage Speed (NCS) - RMS: 1.5, range: -0.5 - -0.5");
    // RPE, symmetric; PSR.
    const std::vector<std::string> rough = judge(1.0f, -0.6f, 3.25f);
    ASSERT_EQ(rough.size(), 5u);
    EXPECT_EQ(rough[1], "I Relative L1 Pixel Error (RPE) - RMS: 0.6, range: -0.6 - -0.6");
    EXPECT_EQ(rough[2], "E Expect visible L1 artifacts due to heavy turbulence.");
    EXPECT_EQ(rough[3], "I Pixel Smearing Ratio (PSR) - RMS: 3.25, maximum: 3.25");
    EXPECT_EQ(rough[4], "E Expect visible L1/L2 smearing due to heavy turbulence.");
    EXPECT_EQ(judge(1.0f, 0.0f, 1.5f)[3], "W Expect slight L1/L2 smearing due to turbulence.");

    EopTrajectory none("take.eop", true);
    Messages messages;
    EoqValidationTraverser(&messages, &messages, &messages).traverse(none);
    EXPECT_EQ(messages.all, std::vector<std::string>{"I No quality parameters."});
}

TEST_F(EoqValidationTest, LimitsComeFromTheSettingsFile)
{
    ASSERT_TRUE(QDir(root.path()).mkpath(QStringLiteral("etc")));
    testsupport::writeFile(root, QStringLiteral("etc/kavix.ini"),
                           "[Validation]\nrpe_error_limit=0.7\nrpe_warning_limit=0.4\nncs_warning_lower_limit=x\n");
    const std::vector<std::string> messages = judge(-0.5f, 0.6f, 0.0f);
    ASSERT_EQ(messages.size(), 6u);
    EXPECT_EQ(messages[0].rfind("E Setting Validation/ncs_warning_lower_limit", 0), 0u) << messages[0];
    EXPECT_EQ(messages[2], sTurbulence);
    EXPECT_EQ(messages[4], "W Expect slight L1 artifacts due to turbulence.");
}
