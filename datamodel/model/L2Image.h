#pragma once

#include <datamodel/model/Image.h>
#include <datamodel/model/Serializable.h>

#include <string>

namespace datamodel {

/// A level-2 (rectified) image of a take, such as a quick ortho.
class L2Image : public virtual Validatable, public virtual Cacheable, public Image, public Serializable {
public:
    L2Image(Take& take, const std::string& filename);
    ~L2Image() override;

    const std::string& filename() const { return m_filename; }

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
};

} // namespace datamodel
