#pragma once

#include <QString>

namespace util {

/// Name of the environment variable that points at the installation root.
inline constexpr const char* sKavixRootVariable = "KAVIX_ROOT";

/// The installation root: the directory named by the environment variable
/// KAVIX_ROOT when it is set and not empty, else the install prefix the
/// library was built for. Returned without a trailing "/".
QString getKavixRoot();

/// The installation's settings file, an INI file read with QSettings:
/// getKavixRoot() + "/etc/kavix.ini". The file need not exist; every setting
/// then takes its default.
QString getKavixIni();

} // namespace util
