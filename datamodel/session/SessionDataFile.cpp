#include <datamodel/session/SessionDataFile.h>

#include <platform/util/ErrorText.h>
#include <platform/util/Installation.h>
#include <platform/util/InvalidFileError.h>
#include <platform/util/RegularFile.h>
#include <platform/util/XmlNesting_p.h>
#include <platform/util/XmlValidator.h>
#include <platform/util/XmlWriter_p.h>

#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <stdexcept>

namespace datamodel {

QString SessionDataFile::path(const QString& sessionPath)
{
    return sessionPath + QStringLiteral("/raw/sessionData.xml");
}

QString SessionDataFile::schemaPath()
{
    return util::getKavixRoot() + QStringLiteral("/etc/schemas/sessionData.xsd");
}

std::optional<QString> SessionDataFile::load(const QString& sessionPath)
{
    return load(sessionPath, nullptr);
}

std::optional<QString> SessionDataFile::load(const QString& sessionPath, QString* reason)
{
    const QString file = path(sessionPath);
    auto none = [&](const QString& why) -> std::optional<QString> {
        if (reason)
            *reason = file + QStringLiteral(": ") + why;
        return std::nullopt;
    };
    if (reason)
        reason->clear();
    if (!QFileInfo::exists(file))
        return std::nullopt;
    const QString schema = schemaPath();
    if (!QFileInfo::exists(schema))
        throw std::runtime_error("Missing installation file " + schema.toStdString());

    // Read once: what is validated is what is parsed. A file that cannot be
    // read fails the validation, as the validator reading it would.
    const std::string invalid = "'" + file.toStdString() + "' is not valid according to the schema in '"
        + schema.toStdString() + "'";
    // The refusal keeps its message; why travels as the nested reason.
    auto refuse = [&](const std::string& why) {
        try {
            throw std::runtime_error(why);
        } catch (...) {
            std::throw_with_nested(util::InvalidFileError(file.toStdString(), invalid));
        }
    };
    QFile input(file);
    QByteArray content;
    std::string unreadable;
    if (!util::openRegularFile(input, &unreadable))
        refuse(unreadable);
    std::string unusable;
    try {
        if (!util::XmlNesting::readChecked(input, file, content))
            unusable = input.errorString().toStdString();
    } catch (const util::InvalidFileError& e) {
        unusable = e.what();
    }
    if (!unusable.empty())
        refuse(unusable);
    QString problems;
    if (!util::XmlValidator(schema).validateContent(content, file, &problems))
        refuse(problems.replace(QLatin1Char('\n'), QLatin1String("; ")).toStdString());

    QDomDocument document;
    QString error;
    int line = 0;
    int column = 0;
    if (!document.setContent(content, &error, &line, &column))
        return none(QStringLiteral("not well-formed XML: %1 (line %2, column %3)").arg(error).arg(line).arg(column));
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String("SessionData"))
        return none(QStringLiteral("the root element is <%1>, not <SessionData>")
                        .arg(QString::fromStdString(util::excerpt(root.tagName()))));
    if (!root.hasAttribute(QStringLiteral("version")))
        return none(QStringLiteral("<SessionData> has no version"));
    if (root.attribute(QStringLiteral("version")) != QLatin1String("1.0"))
        return none(QStringLiteral("version \"%1\" is not \"1.0\"")
                        .arg(QString::fromStdString(util::excerpt(root.attribute(QStringLiteral("version"))))));
    const QDomNodeList patterns = root.elementsByTagName(QStringLiteral("FileNamingPattern"));
    if (patterns.count() != 1)
        return none(QStringLiteral("%1 <FileNamingPattern> elements instead of one").arg(patterns.count()));

    QString pattern;
    QTextStream stream(&pattern);
    for (QDomNode child = patterns.item(0).firstChild(); !child.isNull(); child = child.nextSibling())
        child.save(stream, 4);
    stream.flush();
    return pattern;
}

void SessionDataFile::save(const QString& sessionPath, const QString& pattern)
{
    QDomDocument document;
    document.appendChild(document.createProcessingInstruction(QStringLiteral("xml"),
                                                              QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
    QDomElement root = document.createElement(QStringLiteral("SessionData"));
    root.setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    document.appendChild(root);
    QDomElement holder = document.createElement(QStringLiteral("FileNamingPattern"));
    root.appendChild(holder);
    if (!pattern.isEmpty()) {
        QDomDocument fragment;
        if (fragment.setContent(pattern))
            holder.appendChild(document.importNode(fragment.documentElement(), true));
        else
            holder.appendChild(document.createTextNode(pattern));
    }
    util::XmlWriter::save(document, path(sessionPath).toStdString(), "session data file",
                          "Could not open file sessionData.xml for writting");
}

} // namespace datamodel
