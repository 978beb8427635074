#include "TrajectoryFile.h"

#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/SbetFile.h>
#include <datamodel/trajectory/SolFile.h>

namespace dataprep {

TrajectoryFile::TrajectoryFile(Format format, std::unique_ptr<datamodel::PosFile> reader)
    : m_format(format)
    , m_reader(std::move(reader))
{
}

TrajectoryFile TrajectoryFile::open(const QString& path)
{
    std::unique_ptr<datamodel::PosFile> reader = datamodel::ImuTrajectory::openReader(path.toStdString());
    const Format format = dynamic_cast<const datamodel::SolFile*>(reader.get()) ? Format::Sol : Format::Sbet;
    return TrajectoryFile(format, std::move(reader));
}

TrajectoryFile TrajectoryFile::openAccuracy(const QString& path)
{
    return TrajectoryFile(Format::Smrmsg, std::make_unique<datamodel::SbetFile::SmrmsFile>(path.toStdString()));
}

const char* TrajectoryFile::formatName() const
{
    switch (m_format) {
    case Format::Sol:
        return "SOL";
    case Format::Sbet:
        return "SBET";
    case Format::Smrmsg:
        break;
    }
    return "smrmsg";
}

} // namespace dataprep
