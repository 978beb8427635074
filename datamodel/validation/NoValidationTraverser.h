#pragma once

#include <datamodel/validation/ValidationTraverser.h>

namespace datamodel {

/// A traverser that checks nothing: its overloads only continue the walk
/// (a collection's images and sub-collections, an image's bands). The
/// validators that check one kind of object derive from it and override
/// just that kind.
class NoValidationTraverser : public virtual ValidationTraverser {
public:
    NoValidationTraverser(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    NoValidationTraverser(const NoValidationTraverser&) = default;
    NoValidationTraverser& operator=(const NoValidationTraverser&) = default;
    ~NoValidationTraverser() override;

    using ValidationTraverser::validate;
    /// Walks the image's bands.
    void validate(L0Image& image) override;
    /// Walks the image's bands.
    void validate(L1Image& image) override;
};

} // namespace datamodel
