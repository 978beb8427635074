#include <platform/util/XmlValidator.h>

#include <platform/util/ErrorText.h>
#include <platform/util/RegularFile.h>
#include <platform/util/XmlNesting_p.h>

#include <libxml/parser.h>
#include <libxml/xmlversion.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlschemas.h>

#include <QFile>

#include <climits>
#include <memory>

namespace util {

namespace {

// libxml2's messages of one validation: the first few, and how many in all.
struct Messages {
    QStringList first;
    int count = 0;

    QString text() const
    {
        QString result = first.join(QLatin1Char('\n'));
        if (count > first.size())
            result += QStringLiteral("\n(%1 more)").arg(count - first.size());
        return result;
    }
};

// libxml2 2.12 made the error of a structured handler const.
#if LIBXML_VERSION >= 21200
using ErrorArgument = const xmlError*;
#else
using ErrorArgument = xmlErrorPtr;
#endif

void collect(void* context, ErrorArgument error)
{
    auto* messages = static_cast<Messages*>(context);
    if (!error || !messages)
        return;
    if (++messages->count > XmlValidator::sMaxReasons)
        return;
    QString message = QString::fromUtf8(error->message ? error->message : "unknown error").trimmed();
    message = QString::fromStdString(excerpt(message));
    if (error->line > 0)
        message = QStringLiteral("line %1: %2").arg(error->line).arg(message);
    messages->first.append(message);
}

// Sends every message libxml2 raises on this thread to `messages` while it
// lives, including those raised where no context has a handler of its own
// (loading files); the handlers in place before are put back afterwards.
class CaptureErrors {
public:
    explicit CaptureErrors(Messages& messages)
        : m_structured(xmlStructuredError)
        , m_structuredContext(xmlStructuredErrorContext)
        , m_generic(xmlGenericError)
        , m_genericContext(xmlGenericErrorContext)
    {
        xmlSetStructuredErrorFunc(&messages, collect);
        xmlSetGenericErrorFunc(nullptr, ignore);
    }
    ~CaptureErrors()
    {
        xmlSetStructuredErrorFunc(m_structuredContext, m_structured);
        xmlSetGenericErrorFunc(m_genericContext, m_generic);
    }
    CaptureErrors(const CaptureErrors&) = delete;
    CaptureErrors& operator=(const CaptureErrors&) = delete;

private:
    static void ignore(void*, const char*, ...) {}

    xmlStructuredErrorFunc m_structured;
    void* m_structuredContext;
    xmlGenericErrorFunc m_generic;
    void* m_genericContext;
};

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
    QFile file(filePath);
    QByteArray content;
    if (!openRegularFile(file) || (content = file.readAll(), file.error() != QFileDevice::NoError)) {
        if (error)
            *error = QStringLiteral("cannot read ") + filePath;
        return false;
    }
    return validateContent(content, filePath, error);
}

bool XmlValidator::validateContent(const QByteArray& content, const QString& name, QString* error) const
{
    const QString nesting = XmlNesting::error(content, name);
    if (!nesting.isEmpty()) {
        if (error)
            *error = nesting;
        return false;
    }
    if (content.size() > INT_MAX) {
        if (error)
            *error = name + QStringLiteral(": too large to validate");
        return false;
    }

    Messages messages;
    const CaptureErrors capture(messages);
    const QByteArray schemaPath = m_schemaPath.toLocal8Bit();
    std::unique_ptr<xmlSchemaParserCtxt, ParserContextDeleter> parser(xmlSchemaNewParserCtxt(schemaPath.constData()));
    if (!parser) {
        if (error)
            *error = QStringLiteral("cannot read schema ") + m_schemaPath;
        return false;
    }
    xmlSchemaSetParserStructuredErrors(parser.get(), collect, &messages);
    std::unique_ptr<xmlSchema, SchemaDeleter> schema(xmlSchemaParse(parser.get()));
    if (!schema) {
        if (error)
            *error = QStringLiteral("invalid schema ") + m_schemaPath + QLatin1Char('\n') + messages.text();
        return false;
    }

    messages = Messages();
    const QByteArray url = name.toLocal8Bit();
    std::unique_ptr<xmlDoc, DocumentDeleter> document(
        xmlReadMemory(content.constData(), int(content.size()), url.constData(), nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (!document) {
        if (error)
            *error = QStringLiteral("not well-formed XML: ") + name
                     + (messages.count ? QLatin1Char('\n') + messages.text() : QString());
        return false;
    }
    std::unique_ptr<xmlSchemaValidCtxt, ValidContextDeleter> validation(xmlSchemaNewValidCtxt(schema.get()));
    if (!validation) {
        if (error)
            *error = QStringLiteral("out of memory validating ") + name;
        return false;
    }
    xmlSchemaSetValidStructuredErrors(validation.get(), collect, &messages);
    const bool valid = xmlSchemaValidateDoc(validation.get(), document.get()) == 0;
    if (!valid && error)
        *error = messages.text();
    return valid;
}

} // namespace util
