#include <datamodel/model/Settings.h>

#include <platform/util/Installation.h>

#include <QSettings>

#include <stdexcept>

namespace datamodel {

const char* const Settings::sAngularVelocityLimitKey = "Validation/angular_velocity_limit";
const char* const Settings::sCtNotEqualItWarningKey = "Validation/ct_not_equal_it_warning";
const char* const Settings::sPsrErrorLimitKey = "Validation/psr_error_limit";
const char* const Settings::sPsrWarningLimitKey = "Validation/psr_warning_limit";
const char* const Settings::sRpeErrorLimitKey = "Validation/rpe_error_limit";
const char* const Settings::sRpeWarningLimitKey = "Validation/rpe_warning_limit";
const char* const Settings::sNcsErrorLowerLimitKey = "Validation/ncs_error_lower_limit";
const char* const Settings::sNcsErrorUpperLimitKey = "Validation/ncs_error_upper_limit";
const char* const Settings::sNcsWarningLowerLimitKey = "Validation/ncs_warning_lower_limit";
const char* const Settings::sNcsWarningUpperLimitKey = "Validation/ncs_warning_upper_limit";
const char* const Settings::sIncludeUnplannedLinesKey = "Ingest/include_unplanned_lines";
const char* const Settings::sDataprepFileNamingKey = "NamingConfig/DataprepFileNaming";
const char* const Settings::sRepositoryManagerKey = "Datamodel/RepositoryManager";

namespace {

[[noreturn]] void throwBadValue(const char* key, const QString& text, const char* expected)
{
    throw std::runtime_error(std::string("Setting ") + key + " in " + util::getKavixIni().toStdString()
                             + " is not " + expected + ": " + text.toStdString());
}

} // namespace

QString Settings::readString(const char* key, const QString& defaultValue)
{
    QSettings settings(util::getKavixIni(), QSettings::IniFormat);
    return settings.value(QString::fromLatin1(key), defaultValue).toString();
}

double Settings::readDouble(const char* key, double defaultValue)
{
    QSettings settings(util::getKavixIni(), QSettings::IniFormat);
    const QVariant value = settings.value(QString::fromLatin1(key));
    if (!value.isValid())
        return defaultValue;
    const QString text = value.toString().trimmed();
    bool ok = false;
    const double result = text.toDouble(&ok);
    if (!ok)
        throwBadValue(key, text, "a number");
    return result;
}

bool Settings::readBool(const char* key, bool defaultValue)
{
    QSettings settings(util::getKavixIni(), QSettings::IniFormat);
    const QVariant value = settings.value(QString::fromLatin1(key));
    if (!value.isValid())
        return defaultValue;
    const QString text = value.toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("0"))
        return false;
    throwBadValue(key, value.toString(), "true or false");
}

double Settings::angularVelocityLimit() { return readDouble(sAngularVelocityLimitKey, 2.0); }
bool Settings::ctNotEqualItWarning() { return readBool(sCtNotEqualItWarningKey, false); }
double Settings::psrErrorLimit() { return readDouble(sPsrErrorLimitKey, 3.0); }
double Settings::psrWarningLimit() { return readDouble(sPsrWarningLimitKey, 1.0); }
double Settings::rpeErrorLimit() { return readDouble(sRpeErrorLimitKey, 0.5); }
double Settings::rpeWarningLimit() { return readDouble(sRpeWarningLimitKey, 0.5); }
double Settings::ncsErrorLowerLimit() { return readDouble(sNcsErrorLowerLimitKey, -1.0); }
double Settings::ncsErrorUpperLimit() { return readDouble(sNcsErrorUpperLimitKey, 3.0); }
double Settings::ncsWarningLowerLimit() { return readDouble(sNcsWarningLowerLimitKey, 0.0); }
double Settings::ncsWarningUpperLimit() { return readDouble(sNcsWarningUpperLimitKey, 2.0); }
bool Settings::includeUnplannedLines() { return readBool(sIncludeUnplannedLinesKey, true); }
QString Settings::dataprepFileNaming() { return readString(sDataprepFileNamingKey, QString()); }
QString Settings::repositoryManager()
{
    return readString(sRepositoryManagerKey, QStringLiteral("RepositoryManagerXml"));
}

} // namespace datamodel
