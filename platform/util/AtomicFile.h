#pragma once

#include <cstddef>
#include <exception>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace util {

/// A failure to write a file, with the step that failed and the system's
/// error number (0 when there is none).
class FileWriteError : public std::runtime_error {
public:
    enum class Step { Open, Write, Sync, Rename };

    FileWriteError(const std::string& message, Step step, int errorNumber)
        : std::runtime_error(message)
        , m_step(step)
        , m_errorNumber(errorNumber)
    {
    }
    Step step() const { return m_step; }
    int errorNumber() const { return m_errorNumber; }

private:
    Step m_step;
    int m_errorNumber;
};

/// A file that appears whole or not at all. The bytes go to a temporary file
/// beside the target (".<name>.<pid>.<n>.part", created with the umask's
/// permissions); commit() makes them durable (fdatasync), renames the
/// temporary file onto the target and syncs the folder, so that after a
/// crash or a power loss the target is either the old file or the new one.
/// Every step is checked: a failure throws FileWriteError "Can't write " +
/// what + ": " + path + " (" + the system's reason + ")" and removes the
/// temporary file, leaving the target as it was. Destroying a file that was
/// not committed removes the temporary file too.
class AtomicFile {
public:
    /// `what` names the kind of file in messages ("CTG file").
    AtomicFile(std::string path, std::string what);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Creates the temporary file. Throws FileWriteError with Step::Open.
    void open();
    /// Writes all `bytes` (retrying short writes). Throws with Step::Write,
    /// "No space left on device" and the like in parentheses.
    void write(const void* data, std::size_t bytes);
    /// Syncs, renames onto the target and syncs the folder. Throws with
    /// Step::Sync or Step::Rename.
    void commit();
    /// Removes the temporary file; the target stays as it was.
    void discard() noexcept;

    /// Commits many written files: syncs them side by side (a few at a time,
    /// so that the file system can join their journal commits), renames
    /// each that synced onto its target, in order, then syncs each folder
    /// once. Returns one entry per file: null when it was committed, else
    /// the FileWriteError that stopped it (its temporary file removed).
    static std::vector<std::exception_ptr> commitAll(std::span<AtomicFile* const> files);

    const std::string& path() const { return m_path; }
    const std::string& temporaryPath() const { return m_temporary; }

    /// Writes `bytes` to `path` whole or not at all, as above. With an
    /// `openFailure` text, a file that cannot be created throws
    /// std::runtime_error with that text instead, the FileWriteError nested.
    static void writeWhole(const std::string& path, const std::string& what, const void* data, std::size_t bytes,
                           const std::string& openFailure = {});

private:
    [[noreturn]] void fail(FileWriteError::Step step, int errorNumber);
    /// fdatasync and close.
    void syncData();
    /// Renames the temporary file onto the target.
    void moveIntoPlace();
    /// Syncs the folder of `path` so that a rename in it lasts.
    static void syncFolder(const std::string& path);

    std::string m_path;
    std::string m_what;
    std::string m_temporary;
    int m_fd = -1;
};

/// The system's text for an error number ("No space left on device").
std::string systemReason(int errorNumber);

} // namespace util
