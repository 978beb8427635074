#pragma once

#include <cstdint>
#include <vector>

namespace utzRaster {

/// Size of an image to be written.
struct ImageGeometry {
    unsigned lines = 0;
    unsigned samples = 0;
};

/// Line-by-line writing of one band image. The image is complete on disk only
/// after close(); a writer destroyed before close() leaves no file behind.
class ImageWriter {
public:
    virtual ~ImageWriter() = default;
    virtual void writeLine(const std::vector<std::uint16_t>& pixels) = 0;
    virtual void close() = 0;
};

} // namespace utzRaster
