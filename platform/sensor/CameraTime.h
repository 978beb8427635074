#pragma once

#include <platform/util/Seconds.h>

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace util {
class AtomicFile;
}

namespace sensor {

/// One stretch of scan lines over which the camera kept its line period.
struct CtglEntry {
    std::uint32_t firstLine = 0; ///< the stretch's first scan line
    std::uint32_t lines = 0;     ///< scan lines in the stretch, its first included
    util::Seconds cycleTime;    ///< mean time from line to line over the stretch, s
};

/// The timing model of one band: the GPS time of every scan line, held in
/// line order, with its CTG file (gridded camera time).
///
/// CTG file: binary, little-endian, no header; the GPS time of scan line i,
/// in seconds, as an IEEE-754 double at offset 8 i. The file is exactly
/// 8 n bytes long for n scan lines (0 bytes: a band without lines).
///
/// Time between lines: the model is piecewise linear in the line position.
/// At a fractional line position p with k = floor(p), the time is
/// t[k] + (p - k) (t[k+1] - t[k]); before line 0 and after the last line
/// it continues with the first and the last step. The cycle time at p is
/// the step t[k+1] - t[k] of the line interval that holds p (the first or
/// the last interval beyond the ends).
///
/// The CTGL representation summarises the line period: a map from the GPS
/// time of the first line of each stretch of steady period to the stretch.
/// A stretch ends where the step departs from the stretch's period by more
/// than sCycleTolerance (relative) and the departure persists for at least
/// sMinStretchSteps steps, so a single odd step (a glitch, a step backwards,
/// an eight-line saw-tooth) stays inside its stretch and a change of the
/// camera's line rate starts a new one. The line spacing is non-uniform when
/// there is more than one stretch.
class CameraTime {
public:
    using Time = util::Seconds;
    using CtglMap = std::map<Time, CtglEntry>;

    /// Relative departure of a step from a stretch's period that counts as
    /// a change of the line period.
    static constexpr double sCycleTolerance = 0.05;
    /// Steps a changed period must hold to start a new stretch.
    static constexpr std::size_t sMinStretchSteps = 8;

    /// No times and no CTG file name.
    CameraTime();
    /// Reads the CTG file `ctgFile` and keeps its name. Throws as loadData().
    explicit CameraTime(const std::string& ctgFile);
    CameraTime(const CameraTime&) = default;
    CameraTime& operator=(const CameraTime&) = default;

    /// Replaces the times with those of the CTG file named. Throws
    /// std::runtime_error "No CTG file name set.", "Can't open CTG file: ",
    /// "CTG file size is no multiple of 8 bytes: " and "Failed to read CTG
    /// file: ", each followed by the path; the times are kept on failure.
    void loadData();
    /// Writes the times to the CTG file named (whole or not at all). Throws
    /// "No CTG file name set." and util::FileWriteError "Can't write CTG
    /// file: " + path + " (" + the system's reason + ")".
    void writeData() const;

    /// Reads the CTG file `path` into `times`, whose memory is reused.
    /// Throws as loadData(); `times` is unspecified after a failure.
    static void readCtgFile(const std::string& path, std::vector<Time>& times);
    /// Writes `times` in the CTG layout to the opened `file`, which the
    /// caller then commits. The one writer of the CTG byte layout. Throws
    /// util::FileWriteError.
    static void writeCtg(util::AtomicFile& file, std::span<const Time> times);
    void setCtgFileName(const std::string& path) { m_ctgFileName = path; }
    const std::string& ctgFileName() const { return m_ctgFileName; }

    /// The GPS time of every scan line, s.
    std::vector<Time>& values() { return m_values; }
    const std::vector<Time>& values() const { return m_values; }
    std::size_t size() const { return m_values.size(); }

    /// The GPS time at a (possibly fractional) line position. Throws
    /// "No camera times for: " + CTG file name when there are none.
    Time gpsTime(float line) const;
    /// The time from line to line at a line position. Throws "No cycle time
    /// with fewer than two camera times for: " + CTG file name.
    Time cycleTime(float line) const;
    /// Whether the camera changed its line period within the band (more
    /// than one CTGL stretch).
    bool isNonUniformCT() const;
    /// The stretches of steady line period, keyed by the GPS time of their
    /// first line; empty without times.
    CtglMap getInternalCtglRepresentation() const;

private:
    std::vector<Time> m_values;
    std::string m_ctgFileName;
};

} // namespace sensor
