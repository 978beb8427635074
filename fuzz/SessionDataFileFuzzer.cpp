// Feeds arbitrary bytes to the session data file reader as
// raw/sessionData.xml of a session, validated against the schema that the
// fuzz build copies into its own tree (an installation root that
// util::getKavixRoot finds beside the library; KAVIX_ROOT is pointed at it
// unless set). A pattern that loads is expanded as a session would name its
// files. Any exception other than std::runtime_error, any crash or sanitizer
// finding is a bug, and so is a load that gives neither a pattern nor a
// reason.

#include "FuzzSupport.h"

#include <datamodel/session/SessionDataFile.h>

#include <platform/util/FileSessionNameGenerator.h>

#include <QDateTime>
#include <QDir>
#include <QString>

#include <cstdlib>
#include <stdexcept>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    setenv("KAVIX_ROOT", DATAMODEL_FUZZ_KAVIX_ROOT, 0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QString session = QString::fromStdString(fuzzsupport::scratchDirectory() + "/session");
    static const bool made = QDir().mkpath(session + QStringLiteral("/raw"));
    (void)made;
    fuzzsupport::writeInput("session/raw/sessionData.xml", data, size);
    try {
        QString reason;
        const std::optional<QString> pattern = datamodel::SessionDataFile::load(session, &reason);
        if (pattern.has_value() != reason.isEmpty())
            std::abort();
        if (!pattern)
            return 0;
        util::FileSessionNameGenerator::Options options;
        options.lineName = "L001";
        options.lineNumber = 1;
        options.band = "PANN00A";
        options.serial = 2004;
        options.sensorType = "ZEL";
        options.sessionId = "S260514_0830";
        options.start = QDateTime(QDate(2026, 5, 14), QTime(8, 30), Qt::UTC);
        (void)util::FileSessionNameGenerator(options, *pattern).createNameFromPattern();
    } catch (const std::runtime_error&) {
    }
    return 0;
}
