#pragma once

#include <QString>

namespace util {

/// Name of the environment variable that points at the installation root.
inline constexpr const char* sKavixRootVariable = "KAVIX_ROOT";

/// A file that every installation root holds, relative to the root.
inline constexpr const char* sInstallationMarker = "etc/schemas/sessionData.xsd";

/// The installation root: the directory named by the environment variable
/// KAVIX_ROOT when it is set and not empty. Else the install prefix the
/// library was built for when that holds sInstallationMarker; else, when the
/// installation was moved elsewhere, the root of the installation this
/// library lies in (found from the library's own file: the prefix above its
/// library folder) when that holds the marker; else the install prefix the
/// library was built for. Returned without a trailing "/".
QString getKavixRoot();

/// The installation's settings file, an INI file read with QSettings:
/// getKavixRoot() + "/etc/kavix.ini". The file need not exist; every setting
/// then takes its default.
QString getKavixIni();

} // namespace util
