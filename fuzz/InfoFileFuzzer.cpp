// Feeds arbitrary bytes to the band info-file parser (as a file, the way the
// library reads them) and the text to the angle parser. Any exception other
// than std::runtime_error, any crash or sanitizer finding is a bug.

#include <datamodel/model/InfoFile.h>

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

std::string scratchPath()
{
    static const std::string path = [] {
        char pattern[] = "/tmp/fuzz-info-XXXXXX";
        const char* dir = mkdtemp(pattern);
        return std::string(dir ? dir : "/tmp") + "/L12_PANF28A.info";
    }();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = scratchPath();
    if (std::FILE* file = std::fopen(path.c_str(), "wb")) {
        if (size)
            std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    try {
        datamodel::InfoFile info(path, datamodel::InfoFile::STRIPNAMEREGEX);
        (void)info.centerPoint();
        datamodel::InfoFile copy = info;
        (void)copy.integrationTime();
    } catch (const std::runtime_error&) {
    }

    double value = 0.0;
    datamodel::InfoFile::angleFromString(QString::fromUtf8(QByteArray(reinterpret_cast<const char*>(data), int(size))),
                                         value);
    return 0;
}
