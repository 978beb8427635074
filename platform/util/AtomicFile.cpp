#include <platform/util/AtomicFile.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace util {

namespace {

std::atomic<unsigned> sTemporaryCounter{0};

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

std::string systemReason(int errorNumber)
{
    char buffer[256];
    // The GNU strerror_r returns the text, which may or may not be the buffer.
    return ::strerror_r(errorNumber, buffer, sizeof buffer);
}

AtomicFile::AtomicFile(std::string path, std::string what)
    : m_path(std::move(path))
    , m_what(std::move(what))
{
}

AtomicFile::~AtomicFile()
{
    discard();
}

void AtomicFile::fail(FileWriteError::Step step, int errorNumber)
{
    discard();
    std::string message = "Can't write " + m_what + ": " + m_path;
    if (errorNumber != 0)
        message += " (" + systemReason(errorNumber) + ")";
    throw FileWriteError(message, step, errorNumber);
}

void AtomicFile::open()
{
    discard();
    const std::string folder = folderOf(m_path);
    const std::string name = nameOf(m_path);
    for (int attempt = 0; attempt < 100; ++attempt) {
        m_temporary = folder + "/." + name + "." + std::to_string(::getpid()) + "."
            + std::to_string(sTemporaryCounter.fetch_add(1)) + ".part";
        m_fd = ::open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_fd >= 0)
            return;
        if (errno != EEXIST)
            break;
    }
    const int error = errno;
    m_temporary.clear();
    fail(FileWriteError::Step::Open, error);
}

void AtomicFile::write(const void* data, std::size_t bytes)
{
    if (m_fd < 0)
        fail(FileWriteError::Step::Write, EBADF);
    const auto* next = static_cast<const char*>(data);
    while (bytes > 0) {
        const ssize_t written = ::write(m_fd, next, bytes);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            fail(FileWriteError::Step::Write, errno);
        }
        if (written == 0)
            fail(FileWriteError::Step::Write, ENOSPC);
        next += written;
        bytes -= std::size_t(written);
    }
}

void AtomicFile::commit()
{
    if (m_fd < 0)
        fail(FileWriteError::Step::Sync, EBADF);
    if (::fdatasync(m_fd) != 0)
        fail(FileWriteError::Step::Sync, errno);
    const int fd = m_fd;
    m_fd = -1;
    // close() reports delayed write errors on some file systems.
    if (::close(fd) != 0) {
        const int error = errno;
        fail(FileWriteError::Step::Sync, error);
    }
    if (std::rename(m_temporary.c_str(), m_path.c_str()) != 0)
        fail(FileWriteError::Step::Rename, errno);
    m_temporary.clear();
    // The rename itself is durable once the folder is synced.
    const int folder = ::open(folderOf(m_path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        const int synced = ::fsync(folder);
        const int error = errno;
        ::close(folder);
        if (synced != 0 && error != EINVAL)
            fail(FileWriteError::Step::Rename, error);
    }
}

void AtomicFile::discard() noexcept
{
    if (m_fd >= 0) {
        ::close(m_fd);
        m_fd = -1;
    }
    if (!m_temporary.empty()) {
        ::unlink(m_temporary.c_str());
        m_temporary.clear();
    }
}

void AtomicFile::writeWhole(const std::string& path, const std::string& what, const void* data, std::size_t bytes)
{
    AtomicFile file(path, what);
    file.open();
    file.write(data, bytes);
    file.commit();
}

} // namespace util
