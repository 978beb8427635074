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

void Band::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
