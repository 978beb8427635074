#pragma once

#include <cstdint>
#include <vector>

namespace raster {

/// Line-by-line access to the pixel data of one band image.
class ImageReader {
public:
    virtual ~ImageReader() = default;
    virtual unsigned lines() const = 0;
    virtual unsigned samples() const = 0;
    /// Reads scan line `line` (0-based) into `pixels` (resized to samples()).
    /// Throws std::runtime_error for a line outside the image or a read error.
    virtual void readLine(unsigned line, std::vector<std::uint16_t>& pixels) const = 0;
};

} // namespace raster
