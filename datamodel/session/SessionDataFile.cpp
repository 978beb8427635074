#include <datamodel/session/SessionDataFile.h>

#include <platform/util/Installation.h>
#include <platform/util/RegularFile.h>
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
    const QString file = path(sessionPath);
    if (!QFileInfo::exists(file))
        return std::nullopt;
    const QString schema = schemaPath();
    if (!QFileInfo::exists(schema))
        throw std::runtime_error("Missing installation file " + schema.toStdString());
    if (!util::XmlValidator(schema).validate(file))
        throw std::runtime_error("'" + file.toStdString() + "' is not valid according to the schema in '"
                                 + schema.toStdString() + "'");

    QFile input(file);
    if (!util::openRegularFile(input))
        return std::nullopt;
    QDomDocument document;
    if (!document.setContent(&input))
        return std::nullopt;
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String("SessionData") || !root.hasAttribute(QStringLiteral("version"))
        || root.attribute(QStringLiteral("version")) != QLatin1String("1.0"))
        return std::nullopt;
    const QDomNodeList patterns = root.elementsByTagName(QStringLiteral("FileNamingPattern"));
    if (patterns.count() != 1)
        return std::nullopt;

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
