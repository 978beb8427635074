#include <platform/raster/CtFile.h>

#include <platform/util/AtomicFile.h>
#include <platform/util/RegularFile.h>

#include <QFile>
#include <QFileInfo>

#include <bit>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace raster {

namespace {

// The file's numbers are little-endian and are read straight into memory.
static_assert(std::endian::native == std::endian::little, "the CT file reader needs a little-endian host");

std::string number(std::uint64_t value)
{
    return std::to_string(value);
}

} // namespace

namespace {

// The header of an open CT file, checked against the file's size: the offset
// of the first value and the number of scan lines.
struct Layout {
    std::uint32_t headerBytes = 0;
    std::uint64_t lines = 0;
};

Layout readLayout(QFile& file, const std::string& path)
{
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Can't open CT file: " + path, reason);
    const qint64 size = file.size();
    if (size == 0)
        throw std::runtime_error("CT file is empty: " + path);
    if (size < qint64(CtFile::sHeaderBytes))
        throw std::runtime_error("CT file is truncated: " + path + " (" + number(std::uint64_t(size))
                                 + " bytes, the header alone takes " + number(CtFile::sHeaderBytes) + ")");

    unsigned char header[CtFile::sHeaderBytes];
    if (file.read(reinterpret_cast<char*>(header), qint64(sizeof header)) != qint64(sizeof header))
        throw std::runtime_error("Failed to read CT file: " + path);
    if (std::memcmp(header, CtFile::sSignature, 4) != 0)
        throw std::runtime_error("Not a CT file (no CT01 signature): " + path);
    Layout layout;
    std::memcpy(&layout.headerBytes, header + 4, 4);
    std::memcpy(&layout.lines, header + 8, 8);
    if (layout.headerBytes < CtFile::sHeaderBytes)
        throw std::runtime_error("CT file has an invalid header size: " + path + " (" + number(layout.headerBytes)
                                 + " bytes, at least " + number(CtFile::sHeaderBytes) + " expected)");

    if (layout.lines > CtFile::sMaxLines)
        throw std::runtime_error("CT file holds " + number(layout.lines) + " scan lines, more than a band can (at most "
                                 + number(CtFile::sMaxLines) + "): " + path);

    // Compare without overflow: the line count may be anything in a broken file.
    const std::uint64_t bytes = std::uint64_t(size);
    const std::uint64_t available = bytes > layout.headerBytes ? bytes - layout.headerBytes : 0;
    const bool tooShort = bytes < layout.headerBytes || layout.lines > available / 8;
    if (tooShort || available != layout.lines * 8) {
        const std::string detail = " (" + number(layout.lines) + " scan lines need " + number(layout.headerBytes)
            + " + 8 x " + number(layout.lines) + " bytes, the file has " + number(bytes) + ")";
        if (tooShort)
            throw std::runtime_error("CT file is truncated: " + path + detail);
        throw std::runtime_error("CT file is longer than its scan lines: " + path + detail);
    }
    return layout;
}

} // namespace

CtFile::CtFile(const std::string& path)
    : m_name(path)
{
    read(path, m_values);
}

void CtFile::read(const std::string& path, std::vector<double>& values)
{
    QFile file(QString::fromStdString(path));
    const Layout layout = readLayout(file, path);
    if (!file.seek(qint64(layout.headerBytes)))
        throw std::runtime_error("Failed to read CT file: " + path);
    values.resize(std::size_t(layout.lines));
    const qint64 bytes = qint64(layout.lines * 8);
    if (bytes > 0 && file.read(reinterpret_cast<char*>(values.data()), bytes) != bytes)
        throw std::runtime_error("Failed to read CT file: " + path);
}

std::size_t CtFile::lineCount(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    return std::size_t(readLayout(file, path).lines);
}

void CtFile::write(const std::string& path, const std::vector<double>& values)
{
    unsigned char header[sHeaderBytes];
    std::memcpy(header, sSignature, 4);
    const std::uint32_t headerBytes = std::uint32_t(sHeaderBytes);
    const std::uint64_t lines = values.size();
    std::memcpy(header + 4, &headerBytes, 4);
    std::memcpy(header + 8, &lines, 8);
    util::AtomicFile file(path, "CT file");
    file.open();
    file.write(header, sizeof header);
    file.write(values.data(), 8 * values.size());
    file.commit();
}

} // namespace raster
