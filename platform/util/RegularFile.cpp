#include <platform/util/RegularFile.h>

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <exception>
#include <stdexcept>

#include <sys/stat.h>

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

bool openRegularFile(QFile& file, std::string* reason)
{
    auto refuse = [reason](std::string why) {
        if (reason)
            *reason = std::move(why);
        return false;
    };
    const QByteArray path = QFile::encodeName(file.fileName());
    struct stat status {};
    if (::stat(path.constData(), &status) != 0) {
        const int error = errno;
        struct stat link {};
        if (error == ENOENT && ::lstat(path.constData(), &link) == 0 && S_ISLNK(link.st_mode))
            return refuse("a link to " + QFileInfo(file.fileName()).symLinkTarget().toStdString()
                          + ", which does not exist");
        return refuse(error == ENOENT ? std::string("no such file") : std::string(std::strerror(error)));
    }
    if (!S_ISREG(status.st_mode))
        return refuse(kindOf(status.st_mode));
    if (!file.open(QIODevice::ReadOnly))
        return refuse(file.errorString().toStdString());
    return true;
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
