#include "TrajectoryFile.h"

#include <datamodel/trajectory/SbetFile.h>
#include <datamodel/trajectory/SolFile.h>

#include <platform/util/ErrorText.h>

#include <exception>
#include <stdexcept>

namespace dataprep {

TrajectoryFile::TrajectoryFile(Format format, std::unique_ptr<datamodel::PosFile> reader)
    : m_format(format)
    , m_reader(std::move(reader))
{
}

TrajectoryFile TrajectoryFile::open(const QString& path)
{
    const std::string name = path.toStdString();
    std::string solReason;
    try {
        return TrajectoryFile(Format::Sol, std::make_unique<datamodel::SolFile>(name));
    } catch (const std::exception& e) {
        solReason = util::fullMessage(e);
    }
    try {
        return TrajectoryFile(Format::Sbet, std::make_unique<datamodel::SbetFile>(name));
    } catch (const std::exception& e) {
        throw std::runtime_error(name + " is neither a SOL nor an SBET file (SOL reader: " + solReason
                                 + "; SBET reader: " + util::fullMessage(e) + ")");
    }
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
