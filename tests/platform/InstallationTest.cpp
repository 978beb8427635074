#include "TestSupport.h"

#include <platform/util/Installation.h>

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QString>

using testsupport::ScopedEnv;

namespace {

// The install prefix the library was configured with, without trailing "/".
QString builtInRoot()
{
    QString root = QStringLiteral(DATAMODEL_TEST_DEFAULT_KAVIX_ROOT);
    while (root.size() > 1 && root.endsWith(QLatin1Char('/')))
        root.chop(1);
    return root;
}

// Where a program of this build finds its installation without KAVIX_ROOT:
// the configured prefix once something is installed there, else the build
// tree, which holds the installation files beside its libraries.
QString defaultRoot()
{
    if (QFileInfo::exists(builtInRoot() + QLatin1Char('/') + QLatin1String(util::sInstallationMarker)))
        return builtInRoot();
    return QStringLiteral(DATAMODEL_TEST_BUILD_ROOT);
}

} // namespace

TEST(Installation, RootComesFromTheEnvironment)
{
    ScopedEnv env(util::sKavixRootVariable, QByteArray("/opt/kavix"));
    EXPECT_EQ(util::getKavixRoot(), QStringLiteral("/opt/kavix"));
    EXPECT_EQ(util::getKavixIni(), QStringLiteral("/opt/kavix/etc/kavix.ini"));
}

TEST(Installation, TrailingSlashesAreDropped)
{
    {
        ScopedEnv env(util::sKavixRootVariable, QByteArray("/opt/kavix//"));
        EXPECT_EQ(util::getKavixRoot(), QStringLiteral("/opt/kavix"));
        EXPECT_EQ(util::getKavixIni(), QStringLiteral("/opt/kavix/etc/kavix.ini"));
    }
    {
        ScopedEnv env(util::sKavixRootVariable, QByteArray("/"));
        EXPECT_EQ(util::getKavixRoot(), QStringLiteral("/"));
    }
}

TEST(Installation, UnsetOrEmptyFallsBackToTheInstallationOfTheLibrary)
{
    {
        ScopedEnv env(util::sKavixRootVariable, std::nullopt);
        EXPECT_EQ(util::getKavixRoot(), defaultRoot());
        EXPECT_EQ(util::getKavixIni(), defaultRoot() + QStringLiteral("/etc/kavix.ini"));
    }
    {
        ScopedEnv env(util::sKavixRootVariable, QByteArray(""));
        EXPECT_EQ(util::getKavixRoot(), defaultRoot());
    }
}
