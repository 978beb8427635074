#include "TestSupport.h"

#include <datamodel/model/Settings.h>

#include <platform/util/Installation.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <optional>
#include <stdexcept>
#include <string>

using datamodel::Settings;
using testsupport::thrownMessage;

namespace {

// Points the installation root at a fresh directory for each test.
class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(root.isValid());
        ASSERT_TRUE(QDir(root.path()).mkpath(QStringLiteral("etc")));
        env.emplace(util::sKavixRootVariable, root.path().toUtf8());
    }
    void TearDown() override { env.reset(); }

    void writeIni(const QByteArray& content) { testsupport::writeFile(root, QStringLiteral("etc/kavix.ini"), content); }

    QTemporaryDir root;
    std::optional<testsupport::ScopedEnv> env;
};

} // namespace

TEST_F(SettingsTest, MissingFileGivesTheDefaults)
{
    EXPECT_EQ(Settings::angularVelocityLimit(), 2.0);
    EXPECT_FALSE(Settings::ctNotEqualItWarning());
    EXPECT_EQ(Settings::psrErrorLimit(), 3.0);
    EXPECT_EQ(Settings::psrWarningLimit(), 1.0);
    EXPECT_EQ(Settings::rpeErrorLimit(), 0.5);
    EXPECT_EQ(Settings::rpeWarningLimit(), 0.5);
    EXPECT_EQ(Settings::ncsErrorLowerLimit(), -1.0);
    EXPECT_EQ(Settings::ncsErrorUpperLimit(), 3.0);
    EXPECT_EQ(Settings::ncsWarningLowerLimit(), 0.0);
    EXPECT_EQ(Settings::ncsWarningUpperLimit(), 2.0);
    EXPECT_TRUE(Settings::includeUnplannedLines());
    EXPECT_TRUE(Settings::dataprepFileNaming().isEmpty());
    EXPECT_EQ(Settings::repositoryManager(), QStringLiteral("RepositoryManagerXml"));
}

TEST_F(SettingsTest, ValuesComeFromTheInstallationSettingsFile)
{
    writeIni("[Validation]\n"
             "angular_velocity_limit=3.5\n"
             "ct_not_equal_it_warning=true\n"
             "psr_error_limit=4.25\n"
             "psr_warning_limit=1.5\n"
             "rpe_error_limit=0.75\n"
             "rpe_warning_limit=0.25\n"
             "ncs_error_lower_limit=-2\n"
             "ncs_error_upper_limit=5\n"
             "ncs_warning_lower_limit=0.5\n"
             "ncs_warning_upper_limit=2.5\n"
             "[Ingest]\n"
             "include_unplanned_lines=false\n"
             "[NamingConfig]\n"
             "DataprepFileNaming=L%line%_%band%\n"
             "[Datamodel]\n"
             "RepositoryManager=RepositoryManagerDisk\n");

    EXPECT_EQ(Settings::angularVelocityLimit(), 3.5);
    EXPECT_TRUE(Settings::ctNotEqualItWarning());
    EXPECT_EQ(Settings::psrErrorLimit(), 4.25);
    EXPECT_EQ(Settings::psrWarningLimit(), 1.5);
    EXPECT_EQ(Settings::rpeErrorLimit(), 0.75);
    EXPECT_EQ(Settings::rpeWarningLimit(), 0.25);
    EXPECT_EQ(Settings::ncsErrorLowerLimit(), -2.0);
    EXPECT_EQ(Settings::ncsErrorUpperLimit(), 5.0);
    EXPECT_EQ(Settings::ncsWarningLowerLimit(), 0.5);
    EXPECT_EQ(Settings::ncsWarningUpperLimit(), 2.5);
    EXPECT_FALSE(Settings::includeUnplannedLines());
    EXPECT_EQ(Settings::dataprepFileNaming(), QStringLiteral("L%line%_%band%"));
    EXPECT_EQ(Settings::repositoryManager(), QStringLiteral("RepositoryManagerDisk"));
}

TEST_F(SettingsTest, KeysMissingFromAnExistingFileKeepTheirDefaults)
{
    writeIni("[Validation]\npsr_error_limit=7\n");
    EXPECT_EQ(Settings::psrErrorLimit(), 7.0);
    EXPECT_EQ(Settings::psrWarningLimit(), 1.0);
    EXPECT_TRUE(Settings::includeUnplannedLines());
}

TEST_F(SettingsTest, AChangedFileIsSeenByTheNextCall)
{
    writeIni("[Validation]\nrpe_error_limit=1\n");
    EXPECT_EQ(Settings::rpeErrorLimit(), 1.0);
    writeIni("[Validation]\nrpe_error_limit=2.75\n");
    EXPECT_EQ(Settings::rpeErrorLimit(), 2.75);
    QFile::remove(root.filePath(QStringLiteral("etc/kavix.ini")));
    EXPECT_EQ(Settings::rpeErrorLimit(), 0.5);
}

TEST_F(SettingsTest, MalformedValuesThrowNamingTheKey)
{
    writeIni("[Validation]\n"
             "psr_warning_limit=high\n"
             "ct_not_equal_it_warning=perhaps\n");

    const std::string number = thrownMessage([] { Settings::psrWarningLimit(); });
    EXPECT_NE(number.find("Validation/psr_warning_limit"), std::string::npos) << number;
    EXPECT_NE(number.find("high"), std::string::npos) << number;

    const std::string boolean = thrownMessage([] { Settings::ctNotEqualItWarning(); });
    EXPECT_NE(boolean.find("Validation/ct_not_equal_it_warning"), std::string::npos) << boolean;

    // Other keys are unaffected.
    EXPECT_EQ(Settings::psrErrorLimit(), 3.0);
}
