#include <datamodel/model/L2Image.h>

#include <datamodel/model/CacheManager.h>
#include <datamodel/model/Serializer.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <stdexcept>

namespace datamodel {

L2Image::L2Image(Take& take, const std::string& filename)
    : Image(take)
    , m_filename(filename)
{
}

L2Image::L2Image(Take& take, const QDomElement& element)
    : Image(take)
    , m_filename(element.attribute(QStringLiteral("filename")).toStdString())
{
    m_element = m_document.importNode(element, true).toElement();
    m_document.appendChild(m_element);
}

L2Image::~L2Image() = default;

raster::ImageReader& L2Image::reader() const
{
    throw std::runtime_error("Reading level-2 pixel data is not supported yet: " + m_filename);
}

utzRaster::ImageWriter* L2Image::createWriter(const utzRaster::ImageGeometry&, bool, ImageType)
{
    throw std::runtime_error("Writing level-2 pixel data is not supported yet: " + m_filename);
}

void L2Image::write(Serializer& serializer) const
{
    write(serializer.element(), serializer.document());
}

void L2Image::write(QDomElement& parent, QDomDocument& document) const
{
    if (m_element.isNull())
        throw std::runtime_error("Writing a level-2 image to XML is not supported yet: " + m_filename);
    parent.appendChild(document.importNode(m_element, true));
}

void L2Image::read(Serializer&)
{
    throw std::runtime_error("Reading a level-2 image from XML is not supported yet: " + m_filename);
}

void L2Image::uncache() {}

void L2Image::traverse(CacheManager& manager)
{
    manager.traverse(*this);
}

void L2Image::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
