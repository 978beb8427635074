#include <datamodel/timing/CtTimeGap.h>

#include <datamodel/timing/TimeFormat_p.h>

namespace datamodel {

CtTimeGap::CtTimeGap(Seconds ctTime)
    : std::runtime_error("TM file has gap at CT time " + millisecondsText(ctTime) + "ms")
    , m_ctTime(ctTime)
{
}

CtTimeGap::~CtTimeGap() = default;

} // namespace datamodel
