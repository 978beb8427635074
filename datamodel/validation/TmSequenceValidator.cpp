#include <datamodel/validation/TmSequenceValidator.h>

#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/TmFile.h>

#include <stdexcept>

namespace datamodel {

TmSequenceValidator::TmSequenceValidator(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
    , NoValidationTraverser(information, warning, error)
{
}

TmSequenceValidator::~TmSequenceValidator() = default;

void TmSequenceValidator::validate(RecordingSession& session)
{
    validate(static_cast<const RecordingSession&>(session));
}

void TmSequenceValidator::validate(const RecordingSession& session)
{
    const TmFile& tm = session.tmFile();
    const TmFile::Records& marks = tm.records();
    for (std::size_t i = 1; i < marks.size(); ++i)
        if (!(marks[i].ctTime > marks[i - 1].ctTime))
            throw std::runtime_error("CT time goes backwards in TM file: " + tm.name());
}

} // namespace datamodel
