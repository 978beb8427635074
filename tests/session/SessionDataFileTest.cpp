#include "TestSupport.h"

#include <datamodel/session/SessionDataFile.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <utility>
#include <vector>

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

    // The message is as it stands; the schema's reasons follow it as the
    // nested reason, with their lines.
    installSchema();
    const std::string invalid = "'" + SessionDataFile::path(session.path()).toStdString()
                                + "' is not valid according to the schema in '"
                                + SessionDataFile::schemaPath().toStdString() + "': ";
    writeSessionData("<SessionData version=\"1.0\">\n<Other/></SessionData>");
    EXPECT_EQ(thrownMessage([&] { SessionDataFile::load(session.path()); }), invalid.substr(0, invalid.size() - 2));
    const std::string message = testsupport::invalidFileMessage([&] { SessionDataFile::load(session.path()); });
    EXPECT_EQ(message.rfind(invalid + "line 2: Element 'Other': ", 0), 0u) << message;

    writeSessionData(testsupport::nestedXml(300, "SessionData"));
    EXPECT_EQ(testsupport::invalidFileMessage([&] { SessionDataFile::load(session.path()); }),
              invalid + SessionDataFile::path(session.path()).toStdString() + ": XML nested deeper than 256 elements");
}

TEST_F(SessionDataFileTest, OtherVersionsAndPatternCountsLoadNothingButSayWhy)
{
    installSchema();
    QString reason = QStringLiteral("stale");
    EXPECT_FALSE(SessionDataFile::load(session.path(), &reason).has_value());
    EXPECT_EQ(reason, QString()) << "no file is nothing to report";

    const QString file = SessionDataFile::path(session.path()) + QStringLiteral(": ");
    const std::vector<std::pair<QByteArray, QString>> cases = {
        {"<SessionData version=\"2.0\"><FileNamingPattern>x</FileNamingPattern></SessionData>",
         QStringLiteral("version \"2.0\" is not \"1.0\"")},
        {"<SessionData><FileNamingPattern>x</FileNamingPattern></SessionData>",
         QStringLiteral("<SessionData> has no version")},
        {"<SessionData version=\"1.0\"><FileNamingPattern>x</FileNamingPattern>"
         "<FileNamingPattern>y</FileNamingPattern></SessionData>",
         QStringLiteral("2 <FileNamingPattern> elements instead of one")},
        {"<SessionData version=\"1.0\"/>", QStringLiteral("0 <FileNamingPattern> elements instead of one")},
    };
    for (const auto& [content, why] : cases) {
        SCOPED_TRACE(why.toStdString());
        writeSessionData(content);
        EXPECT_FALSE(SessionDataFile::load(session.path()).has_value());
        EXPECT_FALSE(SessionDataFile::load(session.path(), &reason).has_value());
        EXPECT_EQ(reason, file + why);
    }
    writeSessionData("<SessionData version=\"1.0\"><FileNamingPattern>x</FileNamingPattern></SessionData>");
    EXPECT_EQ(SessionDataFile::load(session.path(), &reason).value(), QStringLiteral("x"));
    EXPECT_EQ(reason, QString());
}

TEST_F(SessionDataFileTest, UnwritableFileIsReported)
{
    ASSERT_TRUE(QDir(session.filePath(QStringLiteral("raw"))).removeRecursively());
    EXPECT_EQ(thrownMessage([&] { SessionDataFile::save(session.path(), QString()); }),
              "Could not open file sessionData.xml for writting");
}
