#include <platform/util/FileSessionNameGenerator.h>

#include <platform/util/ErrorText.h>
#include <platform/util/XmlNesting_p.h>

#include <QDomDocument>
#include <QRegularExpression>

#include <stdexcept>

namespace util {

const QString FileSessionNameGenerator::sDefaultFilePattern =
    QStringLiteral("$LINENAME$_$ABRVSERIAL$_$yyMMdd$_$hhmm$_$BAND$");

FileSessionNameGenerator::FileSessionNameGenerator(Options options, QString pattern)
    : m_options(std::move(options))
    , m_pattern(std::move(pattern))
{
}

QString FileSessionNameGenerator::patternText(const QString& pattern)
{
    const QString trimmed = pattern.trimmed();
    if (!trimmed.startsWith(QLatin1Char('<')))
        return pattern;
    const QByteArray fragment = "<fragment>" + trimmed.toUtf8() + "</fragment>";
    QDomDocument document;
    if (!XmlNesting::error(fragment, QString()).isEmpty() || !document.setContent(fragment))
        return pattern;
    return document.documentElement().text().trimmed();
}

std::string FileSessionNameGenerator::createNameFromPattern() const
{
    const QString pattern = patternText(m_pattern);
    auto fail = [&](const QString& what) { throw std::runtime_error(what.toStdString() + excerpt(pattern)); };

    QString result;
    qsizetype at = 0;
    while (at < pattern.size()) {
        const qsizetype open = pattern.indexOf(QLatin1Char('$'), at);
        if (open < 0) {
            result += pattern.mid(at);
            break;
        }
        result += pattern.mid(at, open - at);
        const qsizetype close = pattern.indexOf(QLatin1Char('$'), open + 1);
        if (close < 0)
            fail(QStringLiteral("Unterminated token in naming pattern: "));
        const QString token = pattern.mid(open + 1, close - open - 1);
        at = close + 1;

        if (token.isEmpty()) {
            result += QLatin1Char('$');
        } else if (token == QLatin1String("LINENAME")) {
            result += QString::fromStdString(m_options.lineName);
        } else if (token == QLatin1String("LINENUMBER")) {
            if (m_options.lineNumber < 0)
                fail(QStringLiteral("Naming pattern needs a value that is not known ($LINENUMBER$): "));
            result += QString::number(m_options.lineNumber);
        } else if (token == QLatin1String("BAND")) {
            result += QString::fromStdString(m_options.band);
        } else if (token == QLatin1String("SERIAL")) {
            result += QString::number(m_options.serial);
        } else if (token == QLatin1String("ABRVSERIAL")) {
            result += QStringLiteral("%1").arg(m_options.serial % 10000, 3, 10, QLatin1Char('0'));
        } else if (token == QLatin1String("SENSORTYPE")) {
            result += QString::fromStdString(m_options.sensorType);
        } else if (token == QLatin1String("SESSIONID")) {
            result += QString::fromStdString(m_options.sessionId);
        } else if (!token.contains(QRegularExpression(QStringLiteral("[^yMdhHmsz]")))) {
            if (!m_options.start.isValid())
                fail(QStringLiteral("Naming pattern needs a value that is not known ($%1$): ")
                         .arg(QString::fromStdString(excerpt(token))));
            result += m_options.start.toUTC().toString(token);
        } else {
            fail(QStringLiteral("Unknown token $%1$ in naming pattern: ").arg(QString::fromStdString(excerpt(token))));
        }
    }
    return result.toStdString();
}

} // namespace util
