#pragma once

#include <datamodel/model/Seconds.h>

#include <stdexcept>

namespace datamodel {

/// A gap in the time-mark file at a camera time: "TM file has gap at CT
/// time " + the CT in milliseconds with one decimal + "ms". Thrown by the
/// time-mark gap check; the CT time is kept for the catcher.
class CtTimeGap : public std::runtime_error {
public:
    explicit CtTimeGap(Seconds ctTime);
    CtTimeGap(const CtTimeGap&) = default;
    CtTimeGap& operator=(const CtTimeGap&) = default;
    ~CtTimeGap() override;

    /// The CT time of the gap, s.
    Seconds ctTime() const { return m_ctTime; }

private:
    Seconds m_ctTime;
};

} // namespace datamodel
