#include <datamodel/validation/TmValidator.h>

#include <datamodel/session/RecordingSession.h>

namespace datamodel {

TmValidator::TmValidator(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
    , NoValidationTraverser(information, warning, error)
    , TmGapValidator(information, warning, error)
    , TmSequenceValidator(information, warning, error)
{
}

TmValidator::~TmValidator() = default;

void TmValidator::validate(RecordingSession& session)
{
    validate(static_cast<const RecordingSession&>(session));
}

void TmValidator::validate(const RecordingSession& session)
{
    // Found once here, so that a session without a time-mark file says so
    // once rather than once per check.
    try {
        session.tmFile();
    } catch (const std::exception& e) {
        error(e.what());
        return;
    }
    try {
        TmGapValidator::validate(session);
    } catch (const std::exception& e) {
        information(e.what());
    }
    try {
        TmSequenceValidator::validate(session);
    } catch (const std::exception& e) {
        error(e.what());
    }
}

} // namespace datamodel
