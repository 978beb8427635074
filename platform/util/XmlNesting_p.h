#pragma once

// Private to the libraries (not installed): every XML reader of the
// libraries checks its input through it before building a DOM.

#include <QByteArray>
#include <QString>

class QFileDevice;

namespace util {

/// The nesting limit of the XML readers. The DOM takes time that grows with
/// the square of the depth and recursion as deep as the document, so a
/// document nested deeper than any file of ours (a dozen levels) is refused
/// before a DOM is built.
class XmlNesting {
public:
    /// The deepest element nesting that a reader accepts.
    static constexpr int sMaxDepth = 256;
    /// The largest XML file a reader reads: far above any file of a session
    /// (a flight-data file of a long flight holds a few megabytes).
    static constexpr qint64 sMaxBytes = qint64(64) << 20;

    /// "<name>: XML nested deeper than 256 elements" when `content` nests
    /// elements deeper than sMaxDepth; else empty. Takes time linear in the
    /// content's size and stops at the first syntax error: whether the
    /// document is well-formed is for the parser to say.
    static QString error(const QByteArray& content, const QString& name);

    /// Throws util::InvalidFileError with error() when there is one.
    static void check(const QByteArray& content, const QString& name);

    /// Reads the whole of `file`, which is open for reading, and checks it.
    /// Returns false when it cannot be read; throws as check() does, and
    /// util::InvalidFileError "<name>: <n> bytes, more than an XML file of a
    /// session holds (at most 64 MiB)" before reading a larger file.
    static bool readChecked(QFileDevice& file, const QString& name, QByteArray& content);
};

} // namespace util
