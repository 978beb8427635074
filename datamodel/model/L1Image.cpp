#include <datamodel/model/L1Image.h>

#include <datamodel/validation/ValidationTraverser.h>

namespace datamodel {

L1Image::~L1Image() = default;

void L1Image::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
