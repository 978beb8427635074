#pragma once

#include <datamodel/model/InfoFile.h>
#include <datamodel/validation/ValidationTraverser.h>

namespace datamodel {

/// The basic file checks: a level-0 image's pixel file must be there, and a
/// band info file must name its sensor. It is also the info files' own
/// validator (InfoFile::Validator).
class BasicValidationTraverser : public virtual ValidationTraverser, public InfoFile::Validator {
public:
    BasicValidationTraverser(Information* information = nullptr, Warning* warning = nullptr,
                             Error* error = nullptr);
    BasicValidationTraverser(const BasicValidationTraverser&) = default;
    BasicValidationTraverser& operator=(const BasicValidationTraverser&) = default;
    ~BasicValidationTraverser() override;

    using ValidationTraverser::validate;
    /// Unless the image's session reads a raw recording, the image's pixel
    /// file must exist; then walks the image's bands. Throws "Can't find
    /// image data for band: " + band + " (tried \"" + pixel file + "\").":
    /// the traversers that run it report the text as an error.
    void validate(L0Image& image) override;
    /// Runs InfoFile::Validator::validate: throws "The SensorId is empty
    /// in: " or "The SensorType is empty in: " + the info file name.
    void validate(InfoFile& file) override;
};

} // namespace datamodel
