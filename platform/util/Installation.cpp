#include <platform/util/Installation.h>

#include <QDir>

#ifndef DATAMODEL_DEFAULT_KAVIX_ROOT
#define DATAMODEL_DEFAULT_KAVIX_ROOT "/usr/local"
#endif

namespace util {

QString getKavixRoot()
{
    QString root = qEnvironmentVariable(sKavixRootVariable);
    if (root.isEmpty())
        root = QStringLiteral(DATAMODEL_DEFAULT_KAVIX_ROOT);
    root = QDir::fromNativeSeparators(root);
    while (root.size() > 1 && root.endsWith(QLatin1Char('/')))
        root.chop(1);
    return root;
}

QString getKavixIni()
{
    return getKavixRoot() + QStringLiteral("/etc/kavix.ini");
}

} // namespace util
