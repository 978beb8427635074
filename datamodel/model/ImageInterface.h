#pragma once

namespace raster {
class ImageReader;
}

namespace datamodel {

/// Access to an image's pixel data.
class ImageInterface {
public:
    virtual ~ImageInterface() = default;
    /// The reader of the image's pixel data; throws std::runtime_error when
    /// the pixel file cannot be read.
    virtual raster::ImageReader& reader() const = 0;
};

} // namespace datamodel
