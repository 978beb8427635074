#pragma once

#include <datamodel/model/Cacheable.h>
#include <datamodel/model/ImageInterface.h>
#include <datamodel/model/Validatable.h>

#include <vector>

namespace utzRaster {
struct ImageGeometry;
class ImageWriter;
} // namespace utzRaster

namespace datamodel {

class Band;
class Take;

/// An image of a take. It owns its bands and refers back to its take.
class Image : public virtual ImageInterface, public virtual Validatable, public virtual Cacheable {
public:
    /// The processing level of pixel data handed to a writer.
    enum ImageType {
        Level0 = 0, ///< raw recorded pixels
        Level1 = 1, ///< radiometrically corrected pixels
        Level2 = 2, ///< rectified (orthorectified) pixels
    };

    explicit Image(Take& take);
    /// Deletes every band.
    ~Image() override;
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    /// A new writer for pixel data of this image; the caller owns it.
    virtual utzRaster::ImageWriter* createWriter(const utzRaster::ImageGeometry& geometry, bool overwrite,
                                                 ImageType type) = 0;

    const std::vector<Band*>& bands() const { return m_bands; }
    Take& take() { return m_take; }
    const Take& take() const { return m_take; }

    /// Calls the traverser's validate(Image&).
    void traverse(ValidationTraverser& traverser) override;
    /// Image classes without their own cache walk are released as a whole
    /// through `manager.uncache(Cacheable&)`.
    void traverse(CacheManager& manager) override;

protected:
    /// Appends `band`; the image takes ownership.
    virtual void addBand(Band* band);

private:
    std::vector<Band*> m_bands;
    Take& m_take;
};

} // namespace datamodel
