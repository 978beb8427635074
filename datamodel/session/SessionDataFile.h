#pragma once

#include <QString>

#include <optional>

namespace datamodel {

/// The session data file `raw/sessionData.xml` of a recording session: it
/// keeps the session's file naming pattern as an XML fragment, and must be
/// valid against the installation's `etc/schemas/sessionData.xsd`.
class SessionDataFile {
public:
    /// The file of the session at `sessionPath`.
    static QString path(const QString& sessionPath);
    /// The installation's schema of the file.
    static QString schemaPath();

    /// The file naming pattern kept in the session's file: the child nodes of
    /// its one `FileNamingPattern` element written back as XML text. No value
    /// when there is no file, or it cannot be read, is not well-formed, has
    /// another root, no version or a version other than "1.0", or not exactly
    /// one `FileNamingPattern`. Throws std::runtime_error "Missing
    /// installation file " + schema path when a file exists but the schema
    /// does not, and util::InvalidFileError "'" + file + "' is not valid
    /// according to the schema in '" + schema + "'" followed by ": " and the
    /// first reasons, with line numbers, when the schema rejects it (or it is
    /// nested deeper than 256 elements).
    static std::optional<QString> load(const QString& sessionPath);

    /// The same; when a file is there but gives no pattern, `reason` (when
    /// given) receives why, beginning with the file's path, so that a caller
    /// can report it; otherwise it is emptied.
    static std::optional<QString> load(const QString& sessionPath, QString* reason);

    /// Writes the session's file (whole or not at all) with `pattern`, an XML
    /// fragment, as the content of `FileNamingPattern` (empty for none).
    /// Throws "Could not open file sessionData.xml for writting" when the
    /// file cannot be written.
    static void save(const QString& sessionPath, const QString& pattern);
};

} // namespace datamodel
