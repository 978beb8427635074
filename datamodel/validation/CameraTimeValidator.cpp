#include <datamodel/validation/CameraTimeValidator.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>

#include <stdexcept>

namespace datamodel {

CameraTimeValidator::CameraTimeValidator(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
    , NoValidationTraverser(information, warning, error)
    , ClockSequenceValidator(information, warning, error)
    , SmoothnessValidator(information, warning, error)
    , IntegrationTimeValidator(information, warning, error)
{
}

CameraTimeValidator::~CameraTimeValidator() = default;

void CameraTimeValidator::validate(RecordingSession& session)
{
    ValidationTraverser::validate(static_cast<ImageCollection&>(session));
    if (!m_allCtgsPresent || !m_invalidFiles.empty())
        throw std::runtime_error("Detected errors in ctg files.");
}

void CameraTimeValidator::validate(L0Image& image)
{
    CameraTime& times = image.cameraTime();
    if (!times.ctgFileCreated()) {
        m_allCtgsPresent = false;
        return;
    }
    try {
        checkTimes(times);
    } catch (const std::exception& e) {
        warning(e.what());
        m_invalidFiles.push_back(image.ctgFilename());
    }
}

void CameraTimeValidator::validate(CameraTime& times)
{
    checkTimes(times);
}

void CameraTimeValidator::checkTimes(CameraTime& times)
{
    // Through the bases' references, so that an override of one check is the
    // one that runs.
    ClockSequenceValidator& sequence = *this;
    const SmoothnessValidator& smoothness = *this;
    IntegrationTimeValidator& integration = *this;
    times.cache();
    if (times.isNonUniformCT()) {
        sequence.validateV2(times);
        smoothness.validateV2(times);
        integration.validateV2(times);
    } else {
        sequence.validateV1(times);
        smoothness.validateV1(times);
        integration.validateV1(times);
    }
}

} // namespace datamodel
