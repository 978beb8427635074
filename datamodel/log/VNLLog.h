#pragma once

#include <sstream>
#include <string>

namespace datamodel {

/// Logging adaptor onto log4cxx. One VNLLog stands for one named logger
/// ("datamodel.CtFile", ...); keep it in a function-local or file static.
///
/// The library is silent unless a log configuration is given: the file named
/// by the environment variable DATAMODEL_LOG_CONFIG (a log4cxx ".xml" or
/// ".properties" file), else <installation root>/etc/datamodel-log.properties
/// when it exists. A host program that configured log4cxx itself is left alone.
class VNLLog {
public:
    /// Name of the environment variable naming a log configuration file.
    static constexpr const char* sConfigVariable = "DATAMODEL_LOG_CONFIG";

    explicit VNLLog(const std::string& loggerName);
    ~VNLLog();
    VNLLog(const VNLLog&) = delete;
    VNLLog& operator=(const VNLLog&) = delete;

    const std::string& name() const { return m_name; }
    bool isDebugEnabled() const;
    /// Writes the message at debug level, without testing the level again.
    void forcedDebug(const std::string& message, const char* file, int line) const;

private:
    std::string m_name;
    void* m_logger; // log4cxx::Logger*, kept out of the public header
};

} // namespace datamodel

/// Logs a streamed expression at debug level: VNL_LOG_DEBUG(log, "lines: " << n).
/// The expression is only evaluated when debug logging is enabled for the logger.
#define VNL_LOG_DEBUG(vnlLog, expression)                                          \
    do {                                                                           \
        if ((vnlLog).isDebugEnabled()) {                                           \
            std::ostringstream vnlLogStream_;                                      \
            vnlLogStream_ << expression;                                           \
            (vnlLog).forcedDebug(vnlLogStream_.str(), __FILE__, __LINE__);         \
        }                                                                          \
    } while (false)
