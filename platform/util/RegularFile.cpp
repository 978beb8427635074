#include <platform/util/RegularFile.h>

#include <QFile>

#include <sys/stat.h>

namespace util {

bool openRegularFile(QFile& file)
{
    struct stat status {};
    if (::stat(QFile::encodeName(file.fileName()).constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    return file.open(QIODevice::ReadOnly);
}

} // namespace util
