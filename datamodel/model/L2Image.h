#pragma once

#include <datamodel/model/Image.h>
#include <datamodel/model/Serializable.h>

#include <QDomDocument>
#include <QDomElement>

#include <string>

namespace datamodel {

/// A level-2 (rectified) image of a take, such as a quick ortho. An image
/// read from a strip's products list keeps its element and writes it back
/// unchanged.
class L2Image : public virtual Validatable, public virtual Cacheable, public Image, public Serializable {
public:
    L2Image(Take& take, const std::string& filename);
    /// An image described by `element` (kept as a deep copy); its file name
    /// is the element's "filename" attribute.
    L2Image(Take& take, const QDomElement& element);
    ~L2Image() override;

    const std::string& filename() const { return m_filename; }
    /// The element the image was read from; null for an image made otherwise.
    const QDomElement& element() const { return m_element; }

    raster::ImageReader& reader() const override;
    utzRaster::ImageWriter* createWriter(const utzRaster::ImageGeometry& geometry, bool overwrite,
                                         ImageType type) override;

    void write(Serializer& serializer) const override;
    void write(QDomElement& parent, QDomDocument& document) const override;
    void read(Serializer& serializer) override;

    void uncache() override;
    /// Calls the manager's traverse(L2Image&).
    void traverse(CacheManager& manager) override;
    /// Calls the traverser's validate(L2Image&).
    void traverse(ValidationTraverser& traverser) override;

private:
    std::string m_filename;
    QDomDocument m_document; // owns m_element
    QDomElement m_element;
};

} // namespace datamodel
