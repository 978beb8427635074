#include <platform/util/XmlNesting_p.h>

#include <platform/util/InvalidFileError.h>

#include <QFileDevice>
#include <QXmlStreamReader>

namespace util {

QString XmlNesting::error(const QByteArray& content, const QString& name)
{
    // The same tokenizer that the DOM is built from, so entities and
    // character data are seen as the DOM will see them.
    QXmlStreamReader reader(content);
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth > sMaxDepth)
                return name + QStringLiteral(": XML nested deeper than %1 elements").arg(sMaxDepth);
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::Invalid:
            return QString();
        default:
            break;
        }
    }
    return QString();
}

void XmlNesting::check(const QByteArray& content, const QString& name)
{
    const QString problem = error(content, name);
    if (!problem.isEmpty())
        throw InvalidFileError(name.toStdString(), problem.toStdString());
}

bool XmlNesting::readChecked(QFileDevice& file, const QString& name, QByteArray& content)
{
    if (file.size() > sMaxBytes)
        throw InvalidFileError(name.toStdString(), name.toStdString() + ": " + std::to_string(file.size())
                                                       + " bytes, more than an XML file of a session holds (at most "
                                                       + std::to_string(sMaxBytes >> 20) + " MiB)");
    content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return false;
    check(content, name);
    return true;
}

} // namespace util
