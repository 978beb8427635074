#pragma once

#include <string>

namespace datamodel {

class CameraTime;

/// Writes a band's per-line GPS times as a plain CTG file: the GPS time of
/// scan line i in seconds, a little-endian IEEE-754 double at offset 8 i, no
/// header, exactly 8 n bytes for n lines.
class CtgWriter {
public:
    /// Keeps a reference to `times`, which must outlive the writer.
    explicit CtgWriter(const CameraTime& times);
    virtual ~CtgWriter();

    /// Loads the times if needed and writes them to `path`, whole or not at
    /// all. Throws "Can't open for write: " + path (the system's reason
    /// nested), the loading failure of the times ("Could not initialize the
    /// camera times object. Reason: " + ...), and util::FileWriteError
    /// "Can't write CTG file: " + path + " (" + reason + ")" when writing,
    /// syncing or renaming fails.
    void write(const std::string& path);

private:
    const CameraTime* m_times;
};

} // namespace datamodel
