#pragma once

#include <QString>

namespace datamodel {

/// The one place where the library reads the installation's settings file
/// (util::getKavixIni(), INI format). Each accessor reads through a new
/// QSettings, so a file changed on disk is seen by a later call (QSettings
/// re-reads a file when its size or time stamp changes); a missing file or key gives the
/// default. A value that is present but not a number (or not a boolean where
/// one is expected) throws std::runtime_error naming the key and the file.
class Settings {
public:
    static const char* const sAngularVelocityLimitKey;   ///< "Validation/angular_velocity_limit", deg/s, 2.0
    static const char* const sCtNotEqualItWarningKey;    ///< "Validation/ct_not_equal_it_warning", "false"
    static const char* const sPsrErrorLimitKey;          ///< "Validation/psr_error_limit", 3.0
    static const char* const sPsrWarningLimitKey;        ///< "Validation/psr_warning_limit", 1.0
    static const char* const sRpeErrorLimitKey;          ///< "Validation/rpe_error_limit", 0.5
    static const char* const sRpeWarningLimitKey;        ///< "Validation/rpe_warning_limit", 0.5
    static const char* const sNcsErrorLowerLimitKey;     ///< "Validation/ncs_error_lower_limit", -1.0
    static const char* const sNcsErrorUpperLimitKey;     ///< "Validation/ncs_error_upper_limit", 3.0
    static const char* const sNcsWarningLowerLimitKey;   ///< "Validation/ncs_warning_lower_limit", 0.0
    static const char* const sNcsWarningUpperLimitKey;   ///< "Validation/ncs_warning_upper_limit", 2.0
    static const char* const sIncludeUnplannedLinesKey;  ///< "Ingest/include_unplanned_lines", true
    static const char* const sDataprepFileNamingKey;     ///< "NamingConfig/DataprepFileNaming", empty
    static const char* const sRepositoryManagerKey;      ///< "Datamodel/RepositoryManager", "RepositoryManagerXml"

    /// Angular-velocity limit of the trajectory check, degrees per second.
    static double angularVelocityLimit();
    /// Whether a camera-time step that differs from the integration time is
    /// reported as a warning.
    static bool ctNotEqualItWarning();
    static double psrErrorLimit();
    static double psrWarningLimit();
    static double rpeErrorLimit();
    static double rpeWarningLimit();
    static double ncsErrorLowerLimit();
    static double ncsErrorUpperLimit();
    static double ncsWarningLowerLimit();
    static double ncsWarningUpperLimit();
    static bool includeUnplannedLines();
    /// The file-naming pattern of level-0 images; empty when not configured.
    static QString dataprepFileNaming();
    /// Name of the repository manager to load.
    static QString repositoryManager();

    /// Generic access for keys without a typed accessor (and for tests).
    static double readDouble(const char* key, double defaultValue);
    static bool readBool(const char* key, bool defaultValue);
    static QString readString(const char* key, const QString& defaultValue);
};

} // namespace datamodel
