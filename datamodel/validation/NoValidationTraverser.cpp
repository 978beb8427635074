#include <datamodel/validation/NoValidationTraverser.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/model/L1Image.h>

namespace datamodel {

NoValidationTraverser::NoValidationTraverser(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
{
}

NoValidationTraverser::~NoValidationTraverser() = default;

void NoValidationTraverser::validate(L0Image& image)
{
    ValidationTraverser::validate(static_cast<Image&>(image));
}

void NoValidationTraverser::validate(L1Image& image)
{
    ValidationTraverser::validate(static_cast<Image&>(image));
}

} // namespace datamodel
