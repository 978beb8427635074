#include <datamodel/model/Band.h>

#include <datamodel/validation/ValidationTraverser.h>

namespace datamodel {

Band::Band(Take& take, Image& image, const std::string& name, unsigned index)
    : m_take(take)
    , m_image(image)
    , m_name(name)
    , m_index(index)
{
}

Band::~Band() = default;

double Band::lookAngleFromName(const std::string& name)
{
    // ...<direction><two digits><line letter>
    if (name.size() < 4)
        return 0.0;
    const std::size_t n = name.size();
    const char direction = name[n - 4];
    const char tens = name[n - 3];
    const char units = name[n - 2];
    const char line = name[n - 1];
    if ((line != 'A' && line != 'B') || tens < '0' || tens > '9' || units < '0' || units > '9')
        return 0.0;
    const double degrees = (tens - '0') * 10 + (units - '0');
    if (direction == 'F')
        return degrees;
    if (direction == 'B')
        return -degrees;
    return 0.0;
}

void Band::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
