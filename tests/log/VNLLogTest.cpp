#include "TestSupport.h"

#include <datamodel/log/VNLLog.h>

#include <gtest/gtest.h>

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/consoleappender.h>
#include <log4cxx/patternlayout.h>

#include <QTemporaryDir>

#include <cstdlib>
#include <memory>
#include <string>

using datamodel::VNLLog;

namespace {

// Keeps any log configuration of the machine out of the way. Logging is
// configured once per process, so this must run before the first VNLLog.
void withoutLogConfiguration()
{
    static QTemporaryDir emptyRoot;
    qunsetenv(VNLLog::sConfigVariable);
    qputenv("KAVIX_ROOT", emptyRoot.path().toUtf8());
}

int evaluations = 0;

std::string counted(const std::string& text)
{
    ++evaluations;
    return text;
}

} // namespace

TEST(VNLLog, SilentWithoutConfiguration)
{
    withoutLogConfiguration();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();

    VNLLog log("datamodel.CtFile");
    const bool enabled = log.isDebugEnabled();
    evaluations = 0;
    VNL_LOG_DEBUG(log, "lines: " << counted("42"));

    const std::string out = testing::internal::GetCapturedStdout();
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_FALSE(enabled);
    EXPECT_EQ(evaluations, 0) << "the message must not be built when debug logging is off";
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "");
    EXPECT_EQ(log.name(), "datamodel.CtFile");
}

// A host program that configured log4cxx itself: debug output of the
// library goes to the host's appender (here stderr).
[[noreturn]] static void runAsHostProgram()
{
    withoutLogConfiguration();
    auto layout = std::make_shared<log4cxx::PatternLayout>(LOG4CXX_STR("host:%c:%m%n"));
    log4cxx::BasicConfigurator::configure(
        std::make_shared<log4cxx::ConsoleAppender>(layout, log4cxx::ConsoleAppender::getSystemErr()));
    VNLLog log("datamodel.Take");
    if (!log.isDebugEnabled())
        std::exit(1);
    VNL_LOG_DEBUG(log, "anchor " << 7);
    std::exit(0);
}

// The choice is made once per process, so this runs in a fresh one.
TEST(VNLLogDeathTest, HostConfigurationIsLeftAlone)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(runAsHostProgram(), ::testing::ExitedWithCode(0), "host:datamodel.Take:anchor 7");
}
