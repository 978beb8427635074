#include <datamodel/model/L0Image.h>

#include <datamodel/model/Band.h>
#include <datamodel/model/CacheManager.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <QDir>
#include <QFileInfo>

#include <stdexcept>

namespace datamodel {

L0Image::L0Image(Take& take, const InfoFile& info, const std::string& filename, unsigned swathWidthPx,
                 int sampleOffsetPx)
    : Image(take)
    , m_info(info)
    , m_filename(filename)
    , m_swathWidthPx(swathWidthPx)
    , m_sampleOffsetPx(sampleOffsetPx)
{
    addBand(new Band(take, *this, info.bandId(), 0));
}

L0Image::~L0Image() = default;

bool L0Image::hasMinFile() const
{
    const QFileInfo pixelFile(QString::fromStdString(m_filename));
    const QString directory = pixelFile.dir().canonicalPath();
    if (directory.isEmpty())
        return false;
    return QFileInfo::exists(directory + QLatin1Char('/') + pixelFile.baseName() + QStringLiteral(".min"));
}

raster::ImageReader& L0Image::reader() const
{
    throw std::runtime_error("Reading level-0 pixel data is not supported yet: " + m_filename);
}

utzRaster::ImageWriter* L0Image::createWriter(const utzRaster::ImageGeometry&, bool, ImageType)
{
    throw std::runtime_error("Writing level-0 pixel data is not supported yet: " + m_filename);
}

void L0Image::write(Serializer&) const
{
    throw std::runtime_error("Writing a level-0 image to XML is not supported yet: " + m_filename);
}

void L0Image::write(QDomElement&, QDomDocument&) const
{
    throw std::runtime_error("Writing a level-0 image to XML is not supported yet: " + m_filename);
}

void L0Image::read(Serializer&)
{
    throw std::runtime_error("Reading a level-0 image from XML is not supported yet: " + m_filename);
}

void L0Image::uncache()
{
    // Nothing is cached on a level-0 image yet.
}

void L0Image::traverse(CacheManager& manager)
{
    manager.traverse(*this);
}

void L0Image::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
