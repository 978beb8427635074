// Feeds arbitrary bytes to the band info-file parser (as a file, the way the
// library reads them) and the text to the angle parser. Any exception other
// than std::runtime_error, any crash or sanitizer finding is a bug.

#include "FuzzSupport.h"

#include <datamodel/model/InfoFile.h>

#include <QByteArray>
#include <QString>

#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("L12_PANF28A.info", data, size);
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
