#pragma once

namespace datamodel {

class ValidationTraverser;

/// Something a ValidationTraverser can visit. traverse() calls back the
/// traverser's validate() overload for the object's own class.
class Validatable {
public:
    virtual ~Validatable() = default;
    virtual void traverse(ValidationTraverser& traverser) = 0;
};

} // namespace datamodel
