#include <flightsim/AtomicFile.h>

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace flightsim {

AtomicFile::AtomicFile(const QString& path, std::size_t bufferBytes)
    : m_path(path)
    , m_buffer(bufferBytes)
{
    const QFileInfo info(path);
    m_temporary = info.path() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".partial");
    m_fd = ::open(QFile::encodeName(m_temporary).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (m_fd < 0)
        fail("cannot create the temporary file");
}

AtomicFile::~AtomicFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
    if (!m_committed)
        ::unlink(QFile::encodeName(m_temporary).constData());
}

void AtomicFile::fail(const char* what)
{
    const int error = errno;
    throw std::runtime_error("Cannot write: " + m_path.toStdString() + ": " + what
                             + (error ? std::string(" (") + std::strerror(error) + ")" : std::string()));
}

void AtomicFile::write(const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (m_used + size > m_buffer.size()) {
        flush();
        if (size >= m_buffer.size()) {
            std::size_t done = 0;
            while (done < size) {
                const ssize_t n = ::write(m_fd, bytes + done, size - done);
                if (n < 0 && errno == EINTR)
                    continue;
                if (n <= 0)
                    fail("write failed");
                done += std::size_t(n);
            }
            m_written += size;
            return;
        }
    }
    std::memcpy(m_buffer.data() + m_used, bytes, size);
    m_used += size;
    m_written += size;
}

void AtomicFile::flush()
{
    std::size_t done = 0;
    while (done < m_used) {
        const ssize_t n = ::write(m_fd, m_buffer.data() + done, m_used - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            fail("write failed");
        done += std::size_t(n);
    }
    m_used = 0;
}

void AtomicFile::commit()
{
    if (m_committed)
        return;
    flush();
    errno = 0;
    const int fd = m_fd;
    m_fd = -1;
    if (::close(fd) != 0)
        fail("close failed");
    if (std::rename(QFile::encodeName(m_temporary).constData(), QFile::encodeName(m_path).constData()) != 0)
        fail("cannot rename the temporary file onto it");
    m_committed = true;
}

void AtomicFile::writeWhole(const QString& path, const QByteArray& bytes)
{
    AtomicFile file(path, std::size_t(bytes.size()) + 1);
    file.write(bytes);
    file.commit();
}

} // namespace flightsim
