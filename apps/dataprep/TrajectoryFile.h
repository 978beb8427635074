#pragma once

#include <datamodel/trajectory/PosFile.h>

#include <QString>

#include <memory>

namespace dataprep {

/// A trajectory file opened the way the library's ImuTrajectory opens one:
/// as a SOL file and, when that fails, as an SBET file (with its smrmsg
/// accuracy file), so the content decides, not the name. Unlike
/// ImuTrajectory it keeps why each reader refused a file.
class TrajectoryFile {
public:
    enum class Format { Sol, Sbet, Smrmsg };

    /// Opens `path` as a SOL or else as an SBET file. Throws
    /// std::runtime_error "<path> is neither a SOL nor an SBET file (SOL
    /// reader: <reason>; SBET reader: <reason>)".
    static TrajectoryFile open(const QString& path);
    /// Opens an smrmsg accuracy file on its own; throws the reader's error.
    static TrajectoryFile openAccuracy(const QString& path);

    Format format() const { return m_format; }
    /// "SOL", "SBET" or "smrmsg".
    const char* formatName() const;
    datamodel::PosFile& reader() const { return *m_reader; }

private:
    TrajectoryFile(Format format, std::unique_ptr<datamodel::PosFile> reader);

    Format m_format;
    std::unique_ptr<datamodel::PosFile> m_reader;
};

} // namespace dataprep
