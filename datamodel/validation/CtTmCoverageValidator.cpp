#include <datamodel/validation/CtTmCoverageValidator.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>

namespace datamodel {

CtTmCoverageValidator::CtTmCoverageValidator(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
    , NoValidationTraverser(information, warning, error)
{
}

CtTmCoverageValidator::~CtTmCoverageValidator() = default;

void CtTmCoverageValidator::validate(RecordingSession& session)
{
    ValidationTraverser::validate(static_cast<ImageCollection&>(session));
}

void CtTmCoverageValidator::validate(L0Image& image)
{
    // Not through CameraTime::traverse: that loads every line first, and a
    // band without a CTG file would then fail with the loader's longer text
    // instead of the time-mark file's own.
    validate(image.cameraTime());
}

void CtTmCoverageValidator::validate(CameraTime& times)
{
    Seconds first;
    Seconds last;
    times.computeMinMax(first, last);
}

} // namespace datamodel
