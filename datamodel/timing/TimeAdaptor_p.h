#pragma once

// Private to the library (not installed): used by CameraTime and by tests.

#include <datamodel/timing/CameraTime.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace raster {
class CtFile;
}

namespace datamodel {

/// Uniform access to the per-line CT values of a band, whichever source has
/// them. The source is the band's CT file (raster::CtFile). A session read
/// straight from a mass-memory recording would have its raster reader supply
/// the values; this library does not read such recordings yet, so a band
/// without a CT file has no source, and the first use of the adaptor says so.
class CameraTime::TimeAdaptor {
public:
    /// The image's CT file when one exists at L0Image::ctFilename(), else no
    /// source. Throws "Can't read ct file: " + path when the file exists but
    /// cannot be read (the reader's own message is attached as the nested
    /// exception).
    explicit TimeAdaptor(const L0Image& image);
    /// Reads the CT file `ctFile`. Throws "Can't read ct file: " + path (with
    /// the reader's message as the nested exception).
    explicit TimeAdaptor(const std::string& ctFile);
    ~TimeAdaptor();
    TimeAdaptor(const TimeAdaptor&) = delete;
    TimeAdaptor& operator=(const TimeAdaptor&) = delete;

    /// The number of CT values. Throws "TimeAdaptor not initialized."
    /// without a source.
    std::size_t size() const;
    /// CT value `i`, s. Throws the CT file's name + ": time out of range."
    /// for an index at or past size(), and "TimeAdaptor not initialized."
    /// without a source.
    Seconds value(std::size_t i) const;
    /// Every CT value in line order, s. Throws "TimeAdaptor not
    /// initialized." without a source.
    std::span<const double> values() const;
    /// The CT file read; null without one.
    const raster::CtFile* ctFile() const { return m_ctFile.get(); }

private:
    const raster::CtFile& source() const;

    std::unique_ptr<raster::CtFile> m_ctFile;
};

} // namespace datamodel
