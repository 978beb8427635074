#include <platform/util/XmlValidator.h>

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <memory>

namespace util {

namespace {

// Collects libxml2's messages into one text.
void collect(void* context, const xmlError* error)
{
    auto* text = static_cast<QString*>(context);
    if (!error || !text)
        return;
    QString message = QString::fromUtf8(error->message ? error->message : "unknown error").trimmed();
    if (error->line > 0)
        message = QStringLiteral("line %1: %2").arg(error->line).arg(message);
    if (!text->isEmpty())
        text->append(QLatin1Char('\n'));
    text->append(message);
}

void collectStructured(void* context, xmlErrorPtr error)
{
    collect(context, error);
}

struct ParserContextDeleter {
    void operator()(xmlSchemaParserCtxtPtr p) const { xmlSchemaFreeParserCtxt(p); }
};
struct SchemaDeleter {
    void operator()(xmlSchemaPtr p) const { xmlSchemaFree(p); }
};
struct ValidContextDeleter {
    void operator()(xmlSchemaValidCtxtPtr p) const { xmlSchemaFreeValidCtxt(p); }
};
struct DocumentDeleter {
    void operator()(xmlDocPtr p) const { xmlFreeDoc(p); }
};

} // namespace

XmlValidator::XmlValidator(QString schemaPath)
    : m_schemaPath(std::move(schemaPath))
{
}

bool XmlValidator::validate(const QString& filePath, QString* error) const
{
    QString messages;
    const QByteArray schemaPath = m_schemaPath.toLocal8Bit();
    std::unique_ptr<xmlSchemaParserCtxt, ParserContextDeleter> parser(xmlSchemaNewParserCtxt(schemaPath.constData()));
    if (!parser) {
        if (error)
            *error = QStringLiteral("cannot read schema ") + m_schemaPath;
        return false;
    }
    xmlSchemaSetParserStructuredErrors(parser.get(), collectStructured, &messages);
    std::unique_ptr<xmlSchema, SchemaDeleter> schema(xmlSchemaParse(parser.get()));
    if (!schema) {
        if (error)
            *error = QStringLiteral("invalid schema ") + m_schemaPath + QLatin1Char('\n') + messages;
        return false;
    }

    const QByteArray path = filePath.toLocal8Bit();
    std::unique_ptr<xmlDoc, DocumentDeleter> document(
        xmlReadFile(path.constData(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (!document) {
        if (error)
            *error = QStringLiteral("not well-formed XML: ") + filePath;
        return false;
    }
    std::unique_ptr<xmlSchemaValidCtxt, ValidContextDeleter> validation(xmlSchemaNewValidCtxt(schema.get()));
    if (!validation)
        return false;
    xmlSchemaSetValidStructuredErrors(validation.get(), collectStructured, &messages);
    const bool valid = xmlSchemaValidateDoc(validation.get(), document.get()) == 0;
    if (!valid && error)
        *error = messages;
    return valid;
}

} // namespace util
