#include <datamodel/validation/TmGapValidator.h>

#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CtTimeGap.h>
#include <datamodel/timing/TmFile.h>

#include <stdexcept>

namespace datamodel {

TmGapValidator::TmGapValidator(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
    , NoValidationTraverser(information, warning, error)
    , m_ctLowerBound(seconds(-1.0))
    , m_ctUpperBound(seconds(-1.0))
{
}

TmGapValidator::~TmGapValidator() = default;

void TmGapValidator::validate(RecordingSession& session)
{
    validate(static_cast<const RecordingSession&>(session));
}

void TmGapValidator::validate(const RecordingSession& session)
{
    const TmFile& tm = session.tmFile();
    const TmFile::Records& marks = tm.records();
    if (marks.size() < 2)
        throw std::runtime_error("TM file " + tm.name() + " holds fewer than two time marks");

    const double lower = m_ctLowerBound.value();
    const double upper = m_ctUpperBound.value();
    const double d = marks[1].ctTime - marks[0].ctTime;
    const double lowest = d - sTolerance * d;
    const double highest = d + sTolerance * d;
    double previous = marks[1].ctTime;
    for (std::size_t i = 2; i < marks.size(); ++i) {
        const double ct = marks[i].ctTime;
        if (lower >= 0.0 && ct < lower) {
            previous = ct;
            continue;
        }
        if (upper >= 0.0 && ct >= upper)
            return;
        const double step = ct - previous;
        if (!(step >= lowest && step <= highest)) // a step that is not a number is a gap too
            throw CtTimeGap(seconds(ct));
        previous = ct;
    }
}

} // namespace datamodel
