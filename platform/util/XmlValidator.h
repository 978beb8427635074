#pragma once

#include <QByteArray>
#include <QString>

namespace util {

/// Validates XML files against an XML Schema (XSD). libxml2's messages are
/// collected into the error text; nothing is printed.
class XmlValidator {
public:
    /// How many of libxml2's messages an error text gives at most.
    static constexpr int sMaxReasons = 5;

    /// Uses the schema file `schemaPath`.
    explicit XmlValidator(QString schemaPath);

    /// Whether `filePath` is well-formed and valid against the schema. On
    /// failure `error` (when given) receives the reasons, one per line, with
    /// line numbers: the first sMaxReasons of them, each cut to
    /// util::sMaxQuotedChars characters, and how many more there were. A
    /// schema that cannot be read makes every file invalid; so does a file
    /// nested deeper than util::XmlNesting::sMaxDepth elements, which is not
    /// parsed at all.
    bool validate(const QString& filePath, QString* error = nullptr) const;

    /// The same for `content`, the text of the file `name` (which is only
    /// used in messages), so that a reader can validate what it parses.
    bool validateContent(const QByteArray& content, const QString& name, QString* error = nullptr) const;

private:
    QString m_schemaPath;
};

} // namespace util
