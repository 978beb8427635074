#pragma once

#include <datamodel/model/Seconds.h>
#include <datamodel/model/Validatable.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace sensor {
class CameraTime;
}

namespace datamodel {

class L0Image;
class TmFile;

/// The GPS time of every scan line of one level-0 band, owned by its image
/// (L0Image::cameraTime()). The times come from the band's CTG file when it
/// can be read; otherwise they are built from the band's CT file and the
/// session's time-mark file, in memory, without writing a CTG file. Nothing
/// is read until a time is first asked for. The times themselves, their
/// file and the time between lines belong to the timing model
/// (sensor::CameraTime).
///
/// A failed load throws and leaves the object not initialized, so the next
/// call tries again. Loading changes the object from const accessors: one
/// CameraTime must not be used from two threads before it is initialized.
class CameraTime : public virtual Validatable {
public:
    class TimeAdaptor;

    /// No image, no times.
    CameraTime();
    /// The times of `image`'s band, not read yet.
    explicit CameraTime(const L0Image& image);
    /// The times of `image`'s band, starting from a copy of `other`'s timing
    /// model (which `other` loads first); the copy is read again from its
    /// CTG file on first use.
    CameraTime(const L0Image& image, const CameraTime& other);
    ~CameraTime() override;
    CameraTime(const CameraTime&) = delete;
    CameraTime& operator=(const CameraTime&) = delete;

    /// The times of a CTG file, read at once, without an image. Throws as
    /// the timing model's CTG reader does.
    static std::unique_ptr<CameraTime> fromCtgFile(const std::string& ctgFile);

    /// Whether the times are in memory (does not load).
    bool isInitialized() const { return m_initialized; }
    /// Loads the times if they are not in memory yet.
    void cache();
    /// The number of scan lines.
    std::size_t size() const;
    /// The GPS time of scan line `i`. Throws "CT index out of range." for
    /// `i` at or past size(). The line is handed to the timing model as a
    /// single-precision position, exact up to line 2^24.
    Seconds value(std::size_t i) const;
    /// The time from line to line at a line position.
    Seconds cycleTime(float line) const;
    /// Throws "Could not initialize the camera times object. Reason: " + the
    /// loading failure.
    const std::vector<Seconds>& values() const;
    /// The writable times; loading failures pass through unchanged.
    std::vector<Seconds>& values();
    /// Whether the camera changed its line period within the band.
    bool isNonUniformCT() const;
    /// The mean time from line to line, rounded to `digits` + 1 decimals of
    /// a second. Throws "Not computing average delta with less than 2 times".
    Seconds averageTimeDelta(unsigned digits) const;
    /// The GPS times of the first and the last scan line. Without times in
    /// memory and without a CTG file they come from the two end lines of the
    /// CT file through the session's time-mark file, and no CTG file is
    /// made. Throws "No ctg data available." for a band without lines.
    void computeMinMax(Seconds& min, Seconds& max) const;
    /// Loads, takes `path` as the CTG file name unless it is empty, and has
    /// the timing model write its CTG file.
    void write(const std::string& path);

    /// The image's CTG file name. Throws "CameraTime not initialized."
    /// without an image.
    const std::string& ctgFileName() const;
    /// Whether the CTG file exists on disk.
    bool ctgFileCreated() const;
    /// Throws "CameraTime not initialized." without an image.
    const L0Image& img() const;
    /// The timing model; null until the times are loaded or built.
    const sensor::CameraTime* model() const { return m_model.get(); }

    /// Loads, then calls the traverser's validate(CameraTime&).
    void traverse(ValidationTraverser& traverser) override;

    /// Builds the times from the CT file `ctFile` and the time-mark file
    /// `tmFile` (opened for this call, not the session's).
    void createFromCtTm(const std::string& ctFile, const std::string& tmFile);
    /// Builds the times from the image's CT file and the session's
    /// time-mark file and writes the CTG file. This is how a missing CTG
    /// file is made. Throws "CameraTime not initialized." without an image.
    void createFromCtTmFiles();

    /// The conversion of a band's camera times to GPS times that every way
    /// of building times goes through: checks that `tm` holds the band's CT
    /// range (TmFile::load, whose messages pass through) and converts every
    /// line into `gps`, resized to the number of lines (its memory reused).
    /// Throws `ctFileName` + ": time out of range." for a band without lines.
    static void convertCtToGps(std::span<const double> ctSec, const std::string& ctFileName, TmFile& tm,
                               std::vector<Seconds>& gps);

protected:
    /// Converts every line's CT value to GPS time through `tm`, unless the
    /// times are already in memory. Throws "CameraTime not initialized." when
    /// a timing model must be made and there is no image.
    void createFromCtTm(const TimeAdaptor& ct, const TmFile& tm);
    /// Loads the times: the timing model's CTG file, then the CT file and
    /// the session's time-mark file. Throws "Could not read CTG file.
    /// Reason: " + first failure + "\n\nAnd also could not create a valid CTG
    /// from CT. Inner Exception: " + second failure.
    void initializeData() const;

private:
    explicit CameraTime(const std::string& ctgFile);
    /// Converts the CT values through `tm` (convertCtToGps) and keeps the
    /// result, unless the times are in memory already.
    void buildFromCt(const TimeAdaptor& ct, TmFile& tm) const;
    /// Makes `times` the model's, creating the model for the image's CTG
    /// file when there is none. Throws "CameraTime not initialized." when a
    /// model is needed and there is no image.
    void adopt(std::vector<Seconds>&& times) const;
    TmFile& sessionTmFile() const;

    const L0Image* m_image;
    mutable bool m_initialized;
    mutable std::unique_ptr<sensor::CameraTime> m_model;
};

} // namespace datamodel
