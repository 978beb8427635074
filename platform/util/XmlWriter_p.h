#pragma once

// Private to the libraries (not installed): the libraries write their XML
// files through it.

#include <QByteArray>
#include <QString>

class QDomDocument;

namespace util {

/// Writes DOM documents the same way every time: UTF-8 with an XML
/// declaration, an indentation of 4, children in document order and the
/// attributes of each element in alphabetical order (the DOM itself keeps no
/// attribute order, so its own output changes from run to run).
class XmlWriter {
public:
    static QByteArray toBytes(const QDomDocument& document);
    /// Writes the document to `path` whole or not at all (temporary file
    /// beside it, then rename). Returns false, leaving any earlier file
    /// untouched, when the file cannot be written.
    static bool save(const QDomDocument& document, const QString& path);
};

} // namespace util
