#pragma once

// Private to the libraries (not installed): the libraries write their XML
// files through it.

#include <QByteArray>

#include <string>
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
    /// Writes the document to `path` whole or not at all (util::AtomicFile).
    /// When the file cannot be created, throws std::runtime_error
    /// `openFailure` with the system's reason nested; a later failure throws
    /// util::FileWriteError "Can't write " + what + ": " + path + " (" +
    /// reason + ")". Either way an earlier file stays as it was.
    static void save(const QDomDocument& document, const std::string& path, const std::string& what,
                     const std::string& openFailure);
};

} // namespace util
