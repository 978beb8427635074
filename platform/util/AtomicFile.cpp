#include <platform/util/AtomicFile.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
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
    // A folder in the target's place could never be replaced: refuse it now,
    // as opening it for writing would.
    struct stat target {};
    if (::stat(m_path.c_str(), &target) == 0 && S_ISDIR(target.st_mode))
        fail(FileWriteError::Step::Open, EISDIR);
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

void AtomicFile::syncData()
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
}

void AtomicFile::moveIntoPlace()
{
    if (std::rename(m_temporary.c_str(), m_path.c_str()) != 0)
        fail(FileWriteError::Step::Rename, errno);
    m_temporary.clear();
}

void AtomicFile::syncFolder(const std::string& path)
{
    const std::string folder = folderOf(path);
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    const int synced = ::fsync(fd);
    const int error = errno;
    ::close(fd);
    // Some file systems cannot sync a folder; the rename is as durable as
    // they make it.
    if (synced != 0 && error != EINVAL && error != EROFS)
        throw FileWriteError("Can't write the folder " + folder + " (" + systemReason(error) + ")",
                             FileWriteError::Step::Rename, error);
}

void AtomicFile::commit()
{
    syncData();
    moveIntoPlace();
    syncFolder(m_path);
}

std::vector<std::exception_ptr> AtomicFile::commitAll(std::span<AtomicFile* const> files)
{
    std::vector<std::exception_ptr> failures(files.size());
    // The syncs wait on the disk, not on the processor: a few in flight at
    // once let the file system write them in one journal commit.
    constexpr std::size_t sParallelSyncs = 4;
    std::atomic<std::size_t> next{0};
    auto syncSome = [&] {
        for (std::size_t i; (i = next.fetch_add(1)) < files.size();) {
            try {
                files[i]->syncData();
            } catch (...) {
                failures[i] = std::current_exception();
            }
        }
    };
    {
        std::vector<std::jthread> helpers;
        for (std::size_t t = 1; t < std::min(sParallelSyncs, files.size()); ++t)
            helpers.emplace_back(syncSome);
        syncSome();
    }

    std::vector<std::string> folders;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (failures[i])
            continue;
        try {
            files[i]->moveIntoPlace();
            const std::string folder = folderOf(files[i]->m_path);
            if (std::find(folders.begin(), folders.end(), folder) == folders.end())
                folders.push_back(folder);
        } catch (...) {
            failures[i] = std::current_exception();
        }
    }
    for (const std::string& folder : folders) {
        try {
            syncFolder(folder + "/.");
        } catch (...) {
            for (std::size_t i = 0; i < files.size(); ++i)
                if (!failures[i] && folderOf(files[i]->m_path) == folder)
                    failures[i] = std::current_exception();
        }
    }
    return failures;
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

void AtomicFile::writeWhole(const std::string& path, const std::string& what, const void* data, std::size_t bytes,
                            const std::string& openFailure)
{
    AtomicFile file(path, what);
    try {
        file.open();
    } catch (const FileWriteError&) {
        if (openFailure.empty())
            throw;
        std::throw_with_nested(std::runtime_error(openFailure));
    }
    file.write(data, bytes);
    file.commit();
}

} // namespace util
