#include <platform/util/Installation.h>

#include <QDir>
#include <QFileInfo>

#include <dlfcn.h>

#ifndef DATAMODEL_DEFAULT_KAVIX_ROOT
#define DATAMODEL_DEFAULT_KAVIX_ROOT "/usr/local"
#endif
#ifndef DATAMODEL_LIBDIR_TO_ROOT
#define DATAMODEL_LIBDIR_TO_ROOT ".."
#endif

namespace util {

namespace {

/// An address inside this library, for asking where the library was loaded from.
const char sAnchor = 0;

/// The root in the form getKavixRoot() returns: "/" separators, no trailing "/".
QString normalised(QString root)
{
    root = QDir::fromNativeSeparators(root);
    while (root.size() > 1 && root.endsWith(QLatin1Char('/')))
        root.chop(1);
    return root;
}

bool holdsInstallation(const QString& root)
{
    return QFileInfo::exists(root + QLatin1Char('/') + QLatin1String(sInstallationMarker));
}

/// The root of the installation that holds this library: its folder, then
/// DATAMODEL_LIBDIR_TO_ROOT up (<prefix>/lib/libdatamodel_platform.so gives
/// <prefix>). Empty when the library's file is not known.
QString rootBesideLibrary()
{
    Dl_info info{};
    if (dladdr(&sAnchor, &info) == 0 || info.dli_fname == nullptr || info.dli_fname[0] == '\0')
        return {};
    const QString libraryDir = QFileInfo(QString::fromLocal8Bit(info.dli_fname)).absolutePath();
    return QDir::cleanPath(libraryDir + QStringLiteral("/" DATAMODEL_LIBDIR_TO_ROOT));
}

/// The root without KAVIX_ROOT: the configured prefix when it holds an
/// installation, else the installation this library lies in (an installation
/// moved away from its prefix), else the configured prefix. An installation
/// is not moved while a program runs, so the answer is kept.
const QString& defaultRoot()
{
    static const QString root = [] {
        const QString configured = normalised(QStringLiteral(DATAMODEL_DEFAULT_KAVIX_ROOT));
        if (holdsInstallation(configured))
            return configured;
        const QString beside = normalised(rootBesideLibrary());
        if (!beside.isEmpty() && holdsInstallation(beside))
            return beside;
        return configured;
    }();
    return root;
}

} // namespace

QString getKavixRoot()
{
    const QString root = qEnvironmentVariable(sKavixRootVariable);
    if (root.isEmpty())
        return defaultRoot();
    return normalised(root);
}

QString getKavixIni()
{
    return getKavixRoot() + QStringLiteral("/etc/kavix.ini");
}

} // namespace util
