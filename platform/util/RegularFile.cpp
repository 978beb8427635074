#include <platform/util/RegularFile.h>

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <exception>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

namespace util {

namespace {

std::string kindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return "a folder, not a file";
    if (S_ISFIFO(mode))
        return "a pipe, not a file";
    if (S_ISSOCK(mode))
        return "a socket, not a file";
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return "a device, not a file";
    return "not a regular file";
}

} // namespace

std::string notRegularReason(const QString& path, bool checkReadable)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status {};
    if (::stat(name.constData(), &status) != 0) {
        const int error = errno;
        struct stat link {};
        if (error == ENOENT && ::lstat(name.constData(), &link) == 0 && S_ISLNK(link.st_mode))
            return "a link to " + QFileInfo(path).symLinkTarget().toStdString() + ", which does not exist";
        return error == ENOENT ? std::string("no such file") : std::string(std::strerror(error));
    }
    if (!S_ISREG(status.st_mode))
        return kindOf(status.st_mode);
    if (checkReadable && ::access(name.constData(), R_OK) != 0)
        return "not readable";
    return {};
}

bool openRegularFile(QFile& file, std::string* reason)
{
    std::string why = notRegularReason(file.fileName());
    if (why.empty() && !file.open(QIODevice::ReadOnly))
        why = file.errorString().toStdString();
    if (why.empty())
        return true;
    if (reason)
        *reason = std::move(why);
    return false;
}

void throwWithReason(const std::string& message, const std::string& reason)
{
    if (reason.empty())
        throw std::runtime_error(message);
    try {
        throw std::runtime_error(reason);
    } catch (...) {
        std::throw_with_nested(std::runtime_error(message));
    }
}

} // namespace util
