#pragma once

#include <platform/geo/XYZPoint.h>
#include <platform/util/LargeBlockAllocator.h>
#include <platform/util/Seconds.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace sensor {

/// One exterior-orientation sample: the camera's projection centre and
/// attitude at a GPS time, in the local space-rectangular system of its
/// EOPData's anchor.
struct EOP {
    double time = 0.0;            ///< GPS time, s of the week (counted on past a week rollover)
    std::int32_t flags = 0;       ///< 0; reserved
    std::array<float, 4> q{1.0f, 0.0f, 0.0f, 0.0f}; ///< attitude, unit quaternion q0 (scalar), q1, q2, q3
    double x = 0.0;               ///< position east, m
    double y = 0.0;               ///< position north, m
    double z = 0.0;               ///< position up, m
};

/// Standard deviations of a sample: x, y, z (m), omega, phi, kappa (rad).
using EOPStdDevs = std::array<double, 6>;

/// The samples of an exterior-orientation trajectory with what describes
/// them, and the EOP file that holds them (docs/formats/eop-file.md).
///
/// Made with a file name and `load` true, the file is read at once (a
/// failure throws std::runtime_error naming the file and what is wrong);
/// with `load` false, or an empty name, the container starts empty.
/// `withStdDevs` says whether the container keeps standard deviations per
/// sample (a file read says so itself).
///
/// The return conventions are the platform's: reads by index and by time
/// return 0 on success and non-zero on failure; writes of samples and
/// standard deviations return true on success.
class EOPData {
public:
    EOPData(const std::string& fileName, bool load, bool withStdDevs);

    /// Number of samples.
    int size() const;
    /// Appends a sample with its standard deviations (ignored when the
    /// container keeps none).
    void append(const EOP& sample, const EOPStdDevs& stdDevs = {});
    /// Makes room for `samples` samples in all, so that appending them
    /// allocates nothing.
    void reserve(int samples);

    /// Sample `index`; non-zero when out of range.
    int atIndex(int index, EOP& sample) const;
    /// The sample at `gpsTime`: position interpolated linearly between the
    /// samples around it, attitude by spherical linear interpolation of the
    /// quaternions (the shorter way); a time on a sample gives that sample.
    /// Non-zero outside [first time, last time] or without samples.
    int atGPS(util::Seconds gpsTime, EOP& sample) const;
    /// Replaces sample `index`; false when out of range.
    bool setRecord(int index, const EOP& sample);

    bool hasStdDevs() const;
    /// Standard deviations of sample `index`; non-zero when out of range or
    /// the container keeps none.
    int stdDevAtIndex(int index, EOPStdDevs& stdDevs) const;
    /// Standard deviations at a time, interpolated linearly; non-zero
    /// outside the samples' time range or without standard deviations.
    int stdDevAtGPS(util::Seconds gpsTime, EOPStdDevs& stdDevs) const;
    /// Sets the standard deviations of sample `index` (the container keeps
    /// them from then on); false when out of range.
    bool setStdDevs(int index, const EOPStdDevs& stdDevs);
    /// The same standard deviations for every sample.
    void setDefaultStdDevs(const EOPStdDevs& stdDevs);

    /// The anchor of the local system: longitude and latitude in radians,
    /// ellipsoidal height in metres.
    const geo::XYZPoint& anchorPoint() const;
    void setAnchorPoint(const geo::XYZPoint& anchor);
    /// The interval between samples as generated, s (0 when unknown).
    double frequency() const;
    void setFrequency(double frequency);
    /// The GPS week's start the sample times count from, s since the GPS
    /// epoch (a multiple of 604800).
    std::uint32_t absTime() const;
    void setAbsTime(std::uint32_t absTime);
    /// Where the positions, the times and the samples came from.
    const std::string& posSource() const;
    const std::string& tmSource() const;
    const std::string& appSource() const;
    void setPosSource(const std::string& source);
    void setTmSource(const std::string& source);
    void setAppSource(const std::string& source);

    /// The file the container was read from or last written to, or named.
    const std::string& fileName() const;
    void setFileName(const std::string& fileName);

    /// Writes the container to `fileName` whole or not at all (the old file
    /// stays on failure) and takes it as its file name. `format` 0 is the
    /// only format. Throws std::runtime_error naming the file and the
    /// system's reason.
    void write(const std::string& fileName, int format = 0);

private:
    using Samples = std::vector<EOP, util::LargeBlockAllocator<EOP>>;
    using StdDevs = std::vector<EOPStdDevs, util::LargeBlockAllocator<EOPStdDevs>>;

    void read(const std::string& fileName);

    std::string m_fileName;
    geo::XYZPoint m_anchor;
    double m_frequency = 0.0;
    std::uint32_t m_absTime = 0;
    std::string m_posSource;
    std::string m_tmSource;
    std::string m_appSource;
    bool m_hasStdDevs = false;
    Samples m_samples;
    StdDevs m_stdDevs; ///< one per sample when m_hasStdDevs
};

} // namespace sensor
