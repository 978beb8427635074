#pragma once

#include <datamodel/model/Image.h>

namespace datamodel {

/// A level-1 (radiometrically corrected) image. Abstract: concrete level-1
/// products supply the pixel access.
class L1Image : public Image {
public:
    using Image::Image;
    ~L1Image() override;

    /// Calls the traverser's validate(L1Image&).
    void traverse(ValidationTraverser& traverser) override;
    using Image::traverse;
};

} // namespace datamodel
