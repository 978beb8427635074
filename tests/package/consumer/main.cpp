// An outside program: reads a band info file through the installed library
// and says which installation root the library found.
#include <datamodel/model/InfoFile.h>
#include <platform/util/Installation.h>

#include <QTemporaryDir>

#include <cstdio>
#include <fstream>

int main()
{
    QTemporaryDir dir;
    const std::string path = dir.path().toStdString() + "/L12_PANF28A.info";
    std::ofstream(path) << "<info><sensor_serialnumber>7</sensor_serialnumber></info>";
    const datamodel::InfoFile info(path, datamodel::InfoFile::STRIPNAMEREGEX);
    std::printf("strip %s sensor %s\n", info.stripName().c_str(), info.sensorId().c_str());
    std::printf("root %s\n", qPrintable(util::getKavixRoot()));
    return info.stripName() == "L12" ? 0 : 1;
}
