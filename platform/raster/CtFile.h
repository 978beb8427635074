#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace raster {

/// The camera-clock (CT) file of one band: the CT value of every scan line,
/// as the camera stamped it.
///
/// Binary, little-endian: a header of at least 16 bytes (the signature
/// "CT01", the header size as an unsigned 32-bit number at offset 4, the
/// number of scan lines n as an unsigned 64-bit number at offset 8), followed
/// by n doubles, the CT values in seconds. The file is exactly header size +
/// 8 n bytes long; a larger header size leaves room for later header fields.
class CtFile {
public:
    /// The signature of the files this reader understands.
    static constexpr char sSignature[5] = "CT01";
    /// The size of the header this writer writes (and the smallest allowed), bytes.
    static constexpr std::size_t sHeaderBytes = 16;
    /// The most scan lines a band may hold (nine hours at 2 kHz); a larger
    /// header is refused before anything is read.
    static constexpr std::uint64_t sMaxLines = std::uint64_t(1) << 26;

    /// Reads the whole file. Throws std::runtime_error, each message followed
    /// by the path: "Can't open CT file: " (missing or unreadable), "CT file
    /// is empty: ", "Not a CT file (no CT01 signature): ", "CT file has an
    /// invalid header size: ", "CT file is truncated: " and "CT file is
    /// longer than its scan lines: " (the size disagrees with the header;
    /// details in parentheses), "Failed to read CT file: ".
    explicit CtFile(const std::string& path);

    /// Reads the CT values of the file `path` into `values`, whose memory is
    /// reused. Throws as the constructor; `values` is unspecified after a
    /// failure.
    static void read(const std::string& path, std::vector<double>& values);
    /// The number of scan lines of the file `path`, from its header, checked
    /// against its size. Throws as the constructor.
    static std::size_t lineCount(const std::string& path);

    /// The CT value of every scan line, s, in line order.
    const std::vector<double>& values() const { return m_values; }
    std::size_t size() const { return m_values.size(); }
    /// The path the file was read from.
    const std::string& name() const { return m_name; }

    /// Writes `values` as a CT file (whole or not at all). Throws
    /// util::FileWriteError "Can't write CT file: " + path + " (" + the
    /// system's reason + ")".
    static void write(const std::string& path, const std::vector<double>& values);

private:
    std::vector<double> m_values;
    std::string m_name;
};

} // namespace raster
