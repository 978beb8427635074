#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace datamodel {

/// Per-scan-line values of one band (integration times or TDI stages), held
/// as runs: every run of equal values is stored at its first and its last
/// scan line. Values are held in the library's units: the file's values times
/// `scale` (1e-6 for integration times, whose file unit is the microsecond;
/// 1 for TDI stage counts).
///
/// The file is binary, little-endian, without header: 8-byte records in
/// ascending line order, each the first line of a run (unsigned 32-bit) and
/// its value in file units (signed 32-bit).
///
/// Between stored lines a value is that of the nearest stored line at or
/// before it; before the first stored line the first value holds, after the
/// last the last value holds.
class ScanLineData {
public:
    using Map = std::map<std::uint32_t, float>;

    /// Empty data with the given scale and no file.
    explicit ScanLineData(double scale);

    /// The most records a file may hold: one per scan line of the longest
    /// band. A larger file is refused before it is read.
    static constexpr std::int64_t sMaxRecords = std::int64_t(1) << 26;

    /// Reads `path`. Throws std::runtime_error "Can't open file: ",
    /// "File size is no multiple of the data size, in: " or
    /// "Failed to read file: ", each followed by the path; a file of more
    /// than sMaxRecords records, or whose scan lines do not rise from record
    /// to record, is refused with a message that names it too.
    static ScanLineData read(const std::string& path, double scale);

    /// What the values are, for implausibility().
    enum class Quantity { IntegrationTime, TdiStages };
    /// Why the values cannot be integration times (seconds, in (0, 1]) or
    /// TDI stage counts (whole numbers in [1, 256]): "no runs", or the first
    /// value out of range with its scan line. Empty when they can.
    std::string implausibility(Quantity quantity) const;

    /// Writes the runs to `path` (whole or not at all) and takes `path` as
    /// the file name. Throws "Can't open file for writing: " + path.
    void write(const std::string& path);

    const Map& values() const { return m_values; }
    /// Stores `value` (library units) at `line`.
    void set(std::uint32_t line, float value) { m_values[line] = value; }
    bool empty() const { return m_values.empty(); }
    const std::string& fileName() const { return m_fileName; }
    double scale() const { return m_scale; }

    /// The value at a scan line (see the class comment). Throws
    /// std::runtime_error "No scan-line data in: " + file name when empty.
    float value(double line) const;
    /// The value in force over the most scan lines (ties: the earlier run).
    float nominalValue() const;
    float minValue() const;
    float maxValue() const;

private:
    void requireValues() const;

    Map m_values;
    std::string m_fileName;
    double m_scale;
};

} // namespace datamodel
