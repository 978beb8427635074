#include <datamodel/log/VNLLog.h>

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <string>

using datamodel::VNLLog;

namespace {

// Writes a properties file that sends debug output of "datamodel.Timing" to a
// file and names it in the environment. Logging is configured once per
// process, so this runs before the first VNLLog of every test.
class Configuration {
public:
    static Configuration& instance()
    {
        static Configuration configuration;
        return configuration;
    }
    QString logFile() const { return m_dir.filePath(QStringLiteral("datamodel.log")); }

    std::string logged() const
    {
        QFile file(logFile());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return file.readAll().toStdString();
    }

private:
    Configuration()
    {
        const QString properties = m_dir.filePath(QStringLiteral("log.properties"));
        QFile file(properties);
        if (file.open(QIODevice::WriteOnly)) {
            file.write("log4j.rootLogger=OFF\n"
                       "log4j.logger.datamodel.Timing=DEBUG, F\n"
                       "log4j.logger.datamodel.Quiet=INFO, F\n"
                       "log4j.appender.F=org.apache.log4j.FileAppender\n"
                       "log4j.appender.F.File=" + logFile().toUtf8() + "\n"
                       "log4j.appender.F.Append=false\n"
                       "log4j.appender.F.layout=org.apache.log4j.PatternLayout\n"
                       "log4j.appender.F.layout.ConversionPattern=%p %c %m%n\n");
        }
        qputenv(VNLLog::sConfigVariable, properties.toUtf8());
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST(VNLLogConfigured, DebugMessagesReachTheConfiguredFile)
{
    Configuration& configuration = Configuration::instance();
    VNLLog log("datamodel.Timing");
    ASSERT_TRUE(log.isDebugEnabled());

    VNL_LOG_DEBUG(log, "camera times: " << 1234 << " lines");

    EXPECT_NE(configuration.logged().find("DEBUG datamodel.Timing camera times: 1234 lines"), std::string::npos)
        << configuration.logged();
}

TEST(VNLLogConfigured, LoggersBelowDebugStaySilent)
{
    Configuration& configuration = Configuration::instance();
    VNLLog quiet("datamodel.Quiet");
    EXPECT_FALSE(quiet.isDebugEnabled());

    VNL_LOG_DEBUG(quiet, "should not appear");

    EXPECT_EQ(configuration.logged().find("should not appear"), std::string::npos) << configuration.logged();
}
