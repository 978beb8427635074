#pragma once

#include <QDateTime>
#include <QString>

#include <string>

namespace util {

/// Expands naming patterns: text with tokens between dollar signs.
///
/// | Token | Expands to |
/// |---|---|
/// | `$LINENAME$` | the line label (`L012`) |
/// | `$LINENUMBER$` | the line number in decimal |
/// | `$BAND$` | the band code (`PANF28A`) |
/// | `$SERIAL$` | the sensor serial number in decimal |
/// | `$ABRVSERIAL$` | the serial modulo 10000, at least three digits (`004`, `2004`) |
/// | `$SENSORTYPE$` | the sensor type |
/// | `$SESSIONID$` | the recording session's identifier |
/// | `$yyMMdd$`, `$hhmm$`, ... | the start time (UTC) in that date-time format: any token made only of the letters y, M, d, h, H, m, s and z |
/// | `$$` | a literal `$` |
///
/// A pattern kept as an XML fragment (`<Pattern>$LINENAME$$BAND$</Pattern>`)
/// is reduced to its text first.
class FileSessionNameGenerator {
public:
    /// The values the tokens expand to.
    struct Options {
        std::string lineName;
        long long lineNumber = -1;
        std::string band;
        unsigned serial = 0;
        std::string sensorType;
        std::string sessionId;
        QDateTime start;
    };

    /// The default file naming pattern.
    static const QString sDefaultFilePattern;

    FileSessionNameGenerator(Options options, QString pattern);

    /// The expanded name. Throws std::runtime_error "Unknown token $<t>$ in
    /// naming pattern: " + pattern, "Unterminated token in naming pattern: "
    /// + pattern, or "Naming pattern needs a value that is not known ($<t>$): "
    /// + pattern (an unset line number or start time).
    std::string createNameFromPattern() const;

    /// The pattern text of a pattern that may be an XML fragment.
    static QString patternText(const QString& pattern);

private:
    Options m_options;
    QString m_pattern;
};

} // namespace util
