#include "TestSupport.h"

#include <platform/util/Installation.h>

#include <gtest/gtest.h>

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

TEST(Installation, UnsetOrEmptyFallsBackToTheInstallPrefix)
{
    {
        ScopedEnv env(util::sKavixRootVariable, std::nullopt);
        EXPECT_EQ(util::getKavixRoot(), builtInRoot());
        EXPECT_EQ(util::getKavixIni(), builtInRoot() + QStringLiteral("/etc/kavix.ini"));
    }
    {
        ScopedEnv env(util::sKavixRootVariable, QByteArray(""));
        EXPECT_EQ(util::getKavixRoot(), builtInRoot());
    }
}
