#include "TestSupport.h"

#include <datamodel/session/SessionDataFile.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using datamodel::SessionDataFile;
using testsupport::thrownMessage;

namespace {

// A session folder and an installation root, with or without the schema.
class SessionDataFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkpath(session.filePath(QStringLiteral("raw"))));
        ASSERT_TRUE(QDir().mkpath(root.filePath(QStringLiteral("etc/schemas"))));
    }

    void installSchema()
    {
        ASSERT_TRUE(QFile::copy(QStringLiteral(DATAMODEL_TEST_SOURCE_DIR "/etc/schemas/sessionData.xsd"),
                                SessionDataFile::schemaPath()));
    }

    void writeSessionData(const QByteArray& content)
    {
        testsupport::writeFile(session, QStringLiteral("raw/sessionData.xml"), content);
    }

    QTemporaryDir session;
    QTemporaryDir root;
    testsupport::ScopedEnv kavixRoot{"KAVIX_ROOT", root.path().toUtf8()};
};

} // namespace

TEST_F(SessionDataFileTest, NoFileMeansNoPatternEvenWithoutSchema)
{
    EXPECT_FALSE(SessionDataFile::load(session.path()).has_value());
}

TEST_F(SessionDataFileTest, PatternRoundTrips)
{
    installSchema();
    SessionDataFile::save(session.path(), QStringLiteral("<Pattern>$LINENAME$$BAND$</Pattern>"));
    const auto pattern = SessionDataFile::load(session.path());
    ASSERT_TRUE(pattern.has_value());
    EXPECT_EQ(pattern->trimmed(), QStringLiteral("<Pattern>$LINENAME$$BAND$</Pattern>"));

    QFile written(SessionDataFile::path(session.path()));
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    const QByteArray text = written.readAll();
    EXPECT_TRUE(text.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>")) << text.toStdString();
    EXPECT_NE(text.indexOf("<SessionData version=\"1.0\">"), -1) << text.toStdString();
    EXPECT_NE(text.indexOf("\n    <FileNamingPattern>"), -1) << text.toStdString();

    // A pattern that is plain text is kept as text.
    SessionDataFile::save(session.path(), QStringLiteral("$LINENAME$_$BAND$"));
    EXPECT_EQ(SessionDataFile::load(session.path()).value(), QStringLiteral("$LINENAME$_$BAND$"));
}

TEST_F(SessionDataFileTest, MissingSchemaAndInvalidFileAreErrors)
{
    writeSessionData("<SessionData version=\"1.0\"><FileNamingPattern/></SessionData>");
    EXPECT_EQ(thrownMessage([&] { SessionDataFile::load(session.path()); }),
              "Missing installation file " + SessionDataFile::schemaPath().toStdString());

    installSchema();
    writeSessionData("<SessionData version=\"1.0\"><Other/></SessionData>");
    EXPECT_EQ(thrownMessage([&] { SessionDataFile::load(session.path()); }),
              "'" + SessionDataFile::path(session.path()).toStdString() + "' is not valid according to the schema in '"
                  + SessionDataFile::schemaPath().toStdString() + "'");
}

TEST_F(SessionDataFileTest, OtherVersionsAndPatternCountsLoadNothing)
{
    installSchema();
    writeSessionData("<SessionData version=\"1.1\"><FileNamingPattern>x</FileNamingPattern></SessionData>");
    EXPECT_FALSE(SessionDataFile::load(session.path()).has_value());
    writeSessionData("<SessionData><FileNamingPattern>x</FileNamingPattern></SessionData>");
    EXPECT_FALSE(SessionDataFile::load(session.path()).has_value());
    writeSessionData("<SessionData version=\"1.0\"><FileNamingPattern>x</FileNamingPattern>"
                     "<FileNamingPattern>y</FileNamingPattern></SessionData>");
    EXPECT_FALSE(SessionDataFile::load(session.path()).has_value());
    writeSessionData("<SessionData version=\"1.0\"/>");
    EXPECT_FALSE(SessionDataFile::load(session.path()).has_value());
}

TEST_F(SessionDataFileTest, UnwritableFileIsReported)
{
    ASSERT_TRUE(QDir(session.filePath(QStringLiteral("raw"))).removeRecursively());
    EXPECT_EQ(thrownMessage([&] { SessionDataFile::save(session.path(), QString()); }),
              "Could not open file sessionData.xml for writting");
}
