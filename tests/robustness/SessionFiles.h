#pragma once

#include <QDir>
#include <QString>

#include <vector>

namespace robustness {

/// One kind of file that the library reads in a session, as the corpus
/// mutates it: where it lies in the simulated flight, whether it is binary
/// records or XML, where the numbers of its first record are, and which
/// dataprep commands read it.
struct FileType {
    enum class Format { Binary, Xml };
    enum class Number { Double, Int32 };

    /// Short name used in case names ("sbet").
    QString key;
    /// Name pattern relative to the session folder; the first match is taken.
    QString pattern;
    Format format = Format::Binary;
    /// Binary files: bytes of the header before the first record, bytes of a
    /// record, and where the numbers of the first record lie (from the
    /// start of the file) and of which type.
    int headerBytes = 0;
    int recordBytes = 0;
    std::vector<int> numberOffsets;
    Number number = Number::Double;
    /// The header or the record count tells the length the file must have,
    /// so a cut anywhere is noticeable.
    bool lengthIsDeclared = false;
    /// `dataprep prepare` reads the file; when not, why prepare cannot notice
    /// what is done to it.
    bool readByPrepare = true;
    QString notReadReason;
    /// `dataprep inspect` reads the file.
    bool inspectable = false;
    /// The case starts from the flight as simulated, without CTG files, so
    /// that prepare converts the camera times with the damaged file (the
    /// time-mark and CT files); else from the flight prepared once, whose
    /// CTG files prepare only checks (which spares writing and syncing
    /// them in every case).
    bool needsUnpreparedFlight = false;
    /// A flight may lack the file altogether (the reader treats a missing
    /// file as absent, which a dangling link looks like).
    bool optional = false;
};

/// The file types of a session that the corpus covers, and how to find
/// each in a simulated flight.
class SessionFiles {
public:
    /// The file types, in the order the corpus lists them.
    static const std::vector<FileType>& types();
    /// The path of `type` in the session folder `session`, relative to it;
    /// empty when the flight holds no such file.
    static QString find(const QDir& session, const FileType& type);
    /// The band a band file belongs to (the band code in its name:
    /// "PANN00A"), empty for files of the whole session.
    static QString bandOf(const QString& fileName);
};

} // namespace robustness
