#pragma once

#include <QString>

namespace util {

/// Validates XML files against an XML Schema (XSD).
class XmlValidator {
public:
    /// Uses the schema file `schemaPath`.
    explicit XmlValidator(QString schemaPath);

    /// Whether `filePath` is well-formed and valid against the schema. On
    /// failure `error` (when given) receives the reasons, one per line, with
    /// line numbers. A schema that cannot be read makes every file invalid.
    bool validate(const QString& filePath, QString* error = nullptr) const;

private:
    QString m_schemaPath;
};

} // namespace util
