#include <datamodel/log/VNLLog.h>

#include <platform/util/Installation.h>

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/logger.h>
#include <log4cxx/logmanager.h>
#include <log4cxx/propertyconfigurator.h>
#include <log4cxx/spi/location/locationinfo.h>
#include <log4cxx/xml/domconfigurator.h>

#include <QFileInfo>

#include <cstdlib>
#include <mutex>

namespace datamodel {

namespace {

// Chooses the configuration once per process. Without one, the "datamodel"
// logger hierarchy is switched off so that nothing is printed and the level
// test stays cheap.
void configureOnce()
{
    static std::once_flag once;
    std::call_once(once, [] {
        QString config = qEnvironmentVariable(VNLLog::sConfigVariable);
        if (config.isEmpty()) {
            const QString installed = util::getKavixRoot() + QStringLiteral("/etc/datamodel-log.properties");
            if (QFileInfo::exists(installed))
                config = installed;
        }
        if (!config.isEmpty() && QFileInfo::exists(config)) {
            const std::string path = config.toStdString();
            if (config.endsWith(QLatin1String(".xml"), Qt::CaseInsensitive))
                log4cxx::xml::DOMConfigurator::configure(path);
            else
                log4cxx::PropertyConfigurator::configure(path);
            return;
        }
        auto repository = log4cxx::LogManager::getLoggerRepository();
        if (repository && repository->isConfigured())
            return; // the host program set up logging itself
        log4cxx::Logger::getLogger("datamodel")->setLevel(log4cxx::Level::getOff());
    });
}

} // namespace

VNLLog::VNLLog(const std::string& loggerName)
    : m_name(loggerName)
{
    configureOnce();
    m_logger = log4cxx::Logger::getLogger(loggerName).get();
}

VNLLog::~VNLLog() = default;

bool VNLLog::isDebugEnabled() const
{
    return static_cast<log4cxx::Logger*>(m_logger)->isDebugEnabled();
}

void VNLLog::forcedDebug(const std::string& message, const char* file, int line) const
{
    static_cast<log4cxx::Logger*>(m_logger)->forcedLog(
        log4cxx::Level::getDebug(), message,
        log4cxx::spi::LocationInfo(file, log4cxx::spi::LocationInfo::calcShortFileName(file), "", line));
}

} // namespace datamodel
