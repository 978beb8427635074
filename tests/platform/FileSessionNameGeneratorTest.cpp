#include "TestSupport.h"

#include <platform/util/FileSessionNameGenerator.h>

#include <gtest/gtest.h>

using util::FileSessionNameGenerator;

namespace {

FileSessionNameGenerator::Options options()
{
    FileSessionNameGenerator::Options o;
    o.lineName = "L12";
    o.lineNumber = 12;
    o.band = "PANF02A";
    o.serial = 2004;
    o.sensorType = "ZEL";
    o.sessionId = "S090307_0930";
    o.start = QDateTime(QDate(2009, 3, 7), QTime(10, 4, 31), Qt::UTC);
    return o;
}

std::string expand(const QString& pattern, FileSessionNameGenerator::Options o = options())
{
    return FileSessionNameGenerator(o, pattern).createNameFromPattern();
}

} // namespace

TEST(FileSessionNameGenerator, DefaultPatternGivesTheStaticName)
{
    EXPECT_EQ(expand(FileSessionNameGenerator::sDefaultFilePattern), "L12_2004_090307_1004_PANF02A");
    auto small = options();
    small.serial = 7;
    EXPECT_EQ(expand(FileSessionNameGenerator::sDefaultFilePattern, small), "L12_007_090307_1004_PANF02A");
    small.serial = 123456;
    EXPECT_EQ(expand(QStringLiteral("$ABRVSERIAL$"), small), "3456");
}

TEST(FileSessionNameGenerator, EveryTokenAndLiteralText)
{
    EXPECT_EQ(expand(QStringLiteral("$SESSIONID$/$LINENUMBER$-$SERIAL$-$SENSORTYPE$-$yyyyMMdd$T$HHmmss$")),
              "S090307_0930/12-2004-ZEL-20090307T100431");
    EXPECT_EQ(expand(QStringLiteral("cost $$5 $BAND$")), "cost $5 PANF02A");
    EXPECT_EQ(expand(QStringLiteral("plain")), "plain");
}

TEST(FileSessionNameGenerator, StartTimeIsWrittenInUtc)
{
    testsupport::ScopedEnv zone("TZ", QByteArray("America/New_York"));
    auto o = options();
    o.start = o.start.toLocalTime();
    EXPECT_EQ(expand(QStringLiteral("$hhmm$"), o), "1004");
}

TEST(FileSessionNameGenerator, PatternKeptAsXmlFragment)
{
    EXPECT_EQ(expand(QStringLiteral("<Pattern>$LINENAME$$BAND$</Pattern>\n")), "L12PANF02A");
}

TEST(FileSessionNameGenerator, BadPatternsAreRefusedWithThePattern)
{
    using testsupport::thrownMessage;
    EXPECT_EQ(thrownMessage([] { expand(QStringLiteral("$LINE$_x")); }),
              "Unknown token $LINE$ in naming pattern: $LINE$_x");
    EXPECT_EQ(thrownMessage([] { expand(QStringLiteral("$BAND")); }), "Unterminated token in naming pattern: $BAND");
    auto unknown = options();
    unknown.lineNumber = -1;
    unknown.start = QDateTime();
    EXPECT_EQ(thrownMessage([&] { expand(QStringLiteral("$LINENUMBER$"), unknown); }),
              "Naming pattern needs a value that is not known ($LINENUMBER$): $LINENUMBER$");
    EXPECT_EQ(thrownMessage([&] { expand(QStringLiteral("$yyMMdd$"), unknown); }),
              "Naming pattern needs a value that is not known ($yyMMdd$): $yyMMdd$");
}
