#include <platform/util/XmlWriter_p.h>

#include <platform/util/AtomicFile.h>

#include <QDomDocument>
#include <QDomElement>
#include <QDomNamedNodeMap>
#include <QXmlStreamWriter>

#include <algorithm>
#include <utility>
#include <vector>

namespace util {

namespace {

void writeNode(QXmlStreamWriter& writer, const QDomNode& node)
{
    switch (node.nodeType()) {
    case QDomNode::ElementNode: {
        const QDomElement element = node.toElement();
        writer.writeStartElement(element.tagName());
        const QDomNamedNodeMap attributes = element.attributes();
        std::vector<std::pair<QString, QString>> sorted;
        for (int i = 0; i < attributes.count(); ++i) {
            const QDomAttr attribute = attributes.item(i).toAttr();
            sorted.emplace_back(attribute.name(), attribute.value());
        }
        std::sort(sorted.begin(), sorted.end());
        for (const auto& [name, value] : sorted)
            writer.writeAttribute(name, value);
        for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling())
            writeNode(writer, child);
        writer.writeEndElement();
        break;
    }
    case QDomNode::TextNode:
        writer.writeCharacters(node.toText().data());
        break;
    case QDomNode::CDATASectionNode:
        writer.writeCDATA(node.toCDATASection().data());
        break;
    case QDomNode::CommentNode:
        writer.writeComment(node.toComment().data());
        break;
    case QDomNode::ProcessingInstructionNode: {
        const QDomProcessingInstruction pi = node.toProcessingInstruction();
        if (pi.target() != QLatin1String("xml"))
            writer.writeProcessingInstruction(pi.target(), pi.data());
        break;
    }
    default:
        break;
    }
}

} // namespace

QByteArray XmlWriter::toBytes(const QDomDocument& document)
{
    QByteArray bytes;
    QXmlStreamWriter writer(&bytes);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(4);
    writer.writeStartDocument();
    for (QDomNode child = document.firstChild(); !child.isNull(); child = child.nextSibling())
        writeNode(writer, child);
    writer.writeEndDocument();
    return bytes;
}

void XmlWriter::save(const QDomDocument& document, const std::string& path, const std::string& what,
                     const std::string& openFailure)
{
    const QByteArray bytes = toBytes(document);
    AtomicFile::writeWhole(path, what, bytes.constData(), std::size_t(bytes.size()), openFailure);
}

} // namespace util
