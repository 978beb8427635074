#pragma once

#include <datamodel/model/Image.h>
#include <datamodel/model/InfoFile.h>
#include <datamodel/model/Serializable.h>

#include <string>

namespace datamodel {

/// A level-0 (as recorded) image of one band of a take. It is made from the
/// band's .info file and owns one Band.
class L0Image : public Image, public Serializable, public virtual Validatable, public virtual Cacheable {
public:
    /// `filename` is the pixel file; `swathWidthPx` the number of samples of
    /// a scan line and `sampleOffsetPx` the first recorded sample.
    L0Image(Take& take, const InfoFile& info, const std::string& filename, unsigned swathWidthPx = 12000,
            int sampleOffsetPx = 0);
    ~L0Image() override;

    /// Whether a ".min" file sits beside the pixel file.
    virtual bool hasMinFile() const;

    const InfoFile& infoFile() const { return m_info; }
    /// The band name, from the info file's band identifier.
    const std::string& bandName() const { return m_info.bandId(); }
    const std::string& filename() const { return m_filename; }
    unsigned swathWidth() const { return m_swathWidthPx; }
    int sampleOffset() const { return m_sampleOffsetPx; }

    raster::ImageReader& reader() const override;
    utzRaster::ImageWriter* createWriter(const utzRaster::ImageGeometry& geometry, bool overwrite,
                                         ImageType type) override;

    void write(Serializer& serializer) const override;
    void write(QDomElement& parent, QDomDocument& document) const override;
    void read(Serializer& serializer) override;

    void uncache() override;
    /// Calls the manager's traverse(L0Image&).
    void traverse(CacheManager& manager) override;
    /// Calls the traverser's validate(L0Image&).
    void traverse(ValidationTraverser& traverser) override;

private:
    InfoFile m_info;
    std::string m_filename;
    unsigned m_swathWidthPx;
    int m_sampleOffsetPx;
};

} // namespace datamodel
