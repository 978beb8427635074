#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace flightsim {

/// A file written whole or not at all: the bytes go to a temporary file
/// beside the target (".<name>.partial"), through a large buffer, and
/// commit() renames it onto the target. Destroying an uncommitted file
/// removes the temporary file. Failures throw std::runtime_error
/// "Cannot write: " + path + ": " + the system's reason.
class AtomicFile {
public:
    explicit AtomicFile(const QString& path, std::size_t bufferBytes = std::size_t(4) << 20);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    void write(const void* data, std::size_t size);
    void write(const QByteArray& bytes) { write(bytes.constData(), std::size_t(bytes.size())); }
    /// Flushes, closes and renames onto the target.
    void commit();
    std::uint64_t bytesWritten() const { return m_written; }
    const QString& path() const { return m_path; }

    /// Writes `bytes` to `path` whole or not at all.
    static void writeWhole(const QString& path, const QByteArray& bytes);

private:
    [[noreturn]] void fail(const char* what);
    void flush();

    QString m_path;
    QString m_temporary;
    int m_fd = -1;
    std::vector<unsigned char> m_buffer;
    std::size_t m_used = 0;
    std::uint64_t m_written = 0;
    bool m_committed = false;
};

} // namespace flightsim
