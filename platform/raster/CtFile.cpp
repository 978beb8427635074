#include <platform/raster/CtFile.h>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

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

CtFile::CtFile(const std::string& path)
    : m_name(path)
{
    QFile file(QString::fromStdString(path));
    if (QFileInfo(file).isDir() || !file.open(QIODevice::ReadOnly))
        throw std::runtime_error("Can't open CT file: " + path);
    const qint64 size = file.size();
    if (size == 0)
        throw std::runtime_error("CT file is empty: " + path);
    if (size < qint64(sHeaderBytes))
        throw std::runtime_error("CT file is truncated: " + path + " (" + number(std::uint64_t(size))
                                 + " bytes, the header alone takes " + number(sHeaderBytes) + ")");

    unsigned char header[sHeaderBytes];
    if (file.read(reinterpret_cast<char*>(header), qint64(sHeaderBytes)) != qint64(sHeaderBytes))
        throw std::runtime_error("Failed to read CT file: " + path);
    if (std::memcmp(header, sSignature, 4) != 0)
        throw std::runtime_error("Not a CT file (no CT01 signature): " + path);
    std::uint32_t headerBytes = 0;
    std::uint64_t lines = 0;
    std::memcpy(&headerBytes, header + 4, 4);
    std::memcpy(&lines, header + 8, 8);
    if (headerBytes < sHeaderBytes)
        throw std::runtime_error("CT file has an invalid header size: " + path + " (" + number(headerBytes)
                                 + " bytes, at least " + number(sHeaderBytes) + " expected)");

    // Compare without overflow: the line count may be anything in a broken file.
    const std::uint64_t available = std::uint64_t(size) > headerBytes ? std::uint64_t(size) - headerBytes : 0;
    const bool tooShort = std::uint64_t(size) < headerBytes || lines > available / 8;
    if (tooShort || available != lines * 8) {
        const std::string detail = " (" + number(lines) + " scan lines need " + number(headerBytes) + " + 8 x "
            + number(lines) + " bytes, the file has " + number(std::uint64_t(size)) + ")";
        if (tooShort)
            throw std::runtime_error("CT file is truncated: " + path + detail);
        throw std::runtime_error("CT file is longer than its scan lines: " + path + detail);
    }

    if (!file.seek(qint64(headerBytes)))
        throw std::runtime_error("Failed to read CT file: " + path);
    m_values.resize(std::size_t(lines));
    const qint64 bytes = qint64(lines * 8);
    if (bytes > 0 && file.read(reinterpret_cast<char*>(m_values.data()), bytes) != bytes)
        throw std::runtime_error("Failed to read CT file: " + path);
}

void CtFile::write(const std::string& path, const std::vector<double>& values)
{
    QByteArray bytes(qsizetype(sHeaderBytes + 8 * values.size()), Qt::Uninitialized);
    char* out = bytes.data();
    std::memcpy(out, sSignature, 4);
    const std::uint32_t headerBytes = std::uint32_t(sHeaderBytes);
    const std::uint64_t lines = values.size();
    std::memcpy(out + 4, &headerBytes, 4);
    std::memcpy(out + 8, &lines, 8);
    if (!values.empty())
        std::memcpy(out + sHeaderBytes, values.data(), 8 * values.size());
    QSaveFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw std::runtime_error("Can't write CT file: " + path);
}

} // namespace raster
