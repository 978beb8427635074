#include <datamodel/timing/TimeAdaptor_p.h>

#include <datamodel/model/L0Image.h>

#include <platform/raster/CtFile.h>

#include <QFileInfo>

#include <exception>
#include <stdexcept>

namespace datamodel {

namespace {

std::unique_ptr<raster::CtFile> openCtFile(const std::string& path)
{
    try {
        return std::make_unique<raster::CtFile>(path);
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error("Can't read ct file: " + path));
    }
}

} // namespace

CameraTime::TimeAdaptor::TimeAdaptor(const L0Image& image)
{
    const std::string& path = image.ctFilename();
    if (QFileInfo::exists(QString::fromStdString(path)))
        m_ctFile = openCtFile(path);
}

CameraTime::TimeAdaptor::TimeAdaptor(const std::string& ctFile)
    : m_ctFile(openCtFile(ctFile))
{
}

CameraTime::TimeAdaptor::~TimeAdaptor() = default;

const raster::CtFile& CameraTime::TimeAdaptor::source() const
{
    if (!m_ctFile)
        throw std::runtime_error("TimeAdaptor not initialized.");
    return *m_ctFile;
}

std::size_t CameraTime::TimeAdaptor::size() const
{
    return source().size();
}

std::span<const double> CameraTime::TimeAdaptor::values() const
{
    return source().values();
}

Seconds CameraTime::TimeAdaptor::value(std::size_t i) const
{
    const raster::CtFile& file = source();
    if (i >= file.size())
        throw std::runtime_error(file.name() + ": time out of range.");
    return seconds(file.values()[i]);
}

} // namespace datamodel
