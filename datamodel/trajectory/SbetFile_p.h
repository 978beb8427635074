#pragma once

// The accuracy lookups' hot path: the inline operations of
// SbetFile::SmrmsFile. Private to the library (not installed); included by
// the SBET reader's source.

#include <datamodel/trajectory/PosFile_p.h>
#include <datamodel/trajectory/SbetFile.h>

#include <array>

namespace datamodel {

inline void SbetFile::SmrmsFile::accuracyAtInline(Seconds gpsTime, std::array<float, 6>& stdDev)
{
    const double t = lookupTime(gpsTime.value());
    if (inSpan(t))
        blendStdDevs(m_span.first, m_span.second, t - m_span.firstTime, m_span.secondTime - m_span.firstTime, stdDev);
    else
        lookUp(t, stdDev);
}

inline double SbetFile::SmrmsFile::lookupTime(double t) const
{
    const double first = startTime().value();
    const double last = gpstime(endTime()).value();
    if (t < first)
        t = first;
    if (t > last)
        t = last;
    return adjusted(t);
}

inline bool SbetFile::SmrmsFile::inSpan(double t) const
{
    return t >= m_span.from && t <= m_span.to;
}

inline void SbetFile::SmrmsFile::forgetSpan()
{
    m_span.from = 1.0;
    m_span.to = 0.0;
}

} // namespace datamodel
