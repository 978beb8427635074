#pragma once

#include <datamodel/model/Validatable.h>

#include <cstdint>
#include <string>

namespace datamodel {

class Image;
class Take;

/// One CCD line of the camera in one image. It refers back to its take and
/// its image, which own it.
class Band : public virtual Validatable {
public:
    Band(Take& take, Image& image, const std::string& name, unsigned index);
    ~Band() override;
    Band(const Band&) = delete;
    Band& operator=(const Band&) = delete;

    Take& take() { return m_take; }
    const Take& take() const { return m_take; }
    Image& image() { return m_image; }
    const Image& image() const { return m_image; }
    /// The band's name (for example "PANF28A").
    const std::string& name() const { return m_name; }
    /// The band's position in its image.
    std::uint32_t index() const { return m_index; }

    /// Look angle in degrees from the band code that ends the name: N is
    /// nadir (0), F forward (+digits), B backward (-digits), as in PANF28A
    /// (+28) or PANB14A (-14). A name without such a code gives 0.
    double lookAngle() const { return lookAngleFromName(m_name); }
    static double lookAngleFromName(const std::string& name);

    /// Calls the traverser's validate(Band&).
    void traverse(ValidationTraverser& traverser) override;

private:
    Take& m_take;
    Image& m_image;
    std::string m_name;
    std::uint32_t m_index;
};

} // namespace datamodel
