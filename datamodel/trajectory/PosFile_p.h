#pragma once

// The trajectory readers' hot path: the inline operations of PosFile that
// find the records around a time and read mapped records. Private to the
// library (not installed); included by the readers' sources and by tests or
// benchmarks that measure these operations on their own.

#include <datamodel/trajectory/PosFile.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <utility>

namespace datamodel {

inline PosFile::Bracket PosFile::locateFrom(double t, int i)
{
    requireIndex(i);
    const double ti = adjustedTime(i);
    if (std::abs(ti - t) < sSameTimeSec)
        return {i, true};
    // The estimate is nearly always the first of the two records around t.
    if (ti < t && i + 1 < m_numSets && adjustedTime(i + 1) >= t)
        return {i, false};
    return walkFrom(t, i, ti);
}

inline void PosFile::requireInsideRecording(double adjustedTime) const
{
    if (!(adjustedTime >= m_startTime && adjustedTime <= adjusted(m_endTime)))
        throwOutsideRecording();
}

inline int PosFile::estimateIndex(Seconds gpsTime) const
{
    const double t = adjusted(gpsTime.value());
    const std::size_t entry = lowerBound(t);
    if (entry == m_index.size())
        throwTimeOutOfRange();
    const auto [t1, i1] = m_index[entry];
    if (entry == 0)
        return i1;
    const auto [t0, i0] = m_index[entry - 1];
    if (t1 == t0 || t0 == t)
        return i0;
    if (t1 == t)
        return i1;
    return estimateBetween(t0, i0, t1, i1, t);
}

inline int PosFile::estimateBetween(double t0, int i0, double t1, int i1, double t)
{
    double fraction = (t - t0) / (t1 - t0);
    if (!(fraction >= 0.0))
        fraction = 0.0;
    else if (fraction > 1.0)
        fraction = 1.0;
    return i0 + int(double(i1 - i0) * fraction);
}

inline const unsigned char* PosFile::nextRecordBytes()
{
    if (m_map && m_position >= 0 && m_position + m_recordBytes <= m_mapBytes) {
        const unsigned char* bytes = m_map + m_position;
        m_position += m_recordBytes;
        return bytes;
    }
    return readNextRecordBytes();
}

inline void PosFile::seekForRead(int index)
{
    if (m_map && index >= 0 && index < m_numSets)
        m_position = qint64(index) * m_recordBytes;
    else
        checkedSeek(index);
}

inline void PosFile::blendStdDevs(const std::array<float, 6>& a, const std::array<float, 6>& b, double dt, double span,
                                  std::array<float, 6>& out)
{
    // Two values per instruction where the compiler offers vectors; each
    // lane is rounded as the scalar operation would be.
#if defined(__GNUC__)
    using Pair = double __attribute__((vector_size(16)));
    const Pair dtPair = {dt, dt};
    const Pair spanPair = {span, span};
    for (std::size_t k = 0; k < 6; k += 2) {
        const Pair va = {double(a[k]), double(a[k + 1])};
        const Pair vb = {double(b[k]), double(b[k + 1])};
        const Pair value = dtPair * (vb - va) / spanPair + va;
        out[k] = float(value[0]);
        out[k + 1] = float(value[1]);
    }
#else
    for (std::size_t k = 0; k < 6; ++k)
        out[k] = float(dt * (double(b[k]) - double(a[k])) / span + double(a[k]));
#endif
}

inline bool PosFile::estimatesWithin(double from, double to, int first, int last) const
{
    const std::size_t entry = lowerBound(from);
    if (!m_ordered || entry == 0 || entry == m_index.size())
        return false;
    const double t0 = m_index[entry - 1].first;
    const double t1 = m_index[entry].first;
    const int i0 = m_index[entry - 1].second;
    const int i1 = m_index[entry].second;
    if (!(t0 < from && from <= to && to < t1))
        return false;
    // Between two entries of an ordered file, estimateIndex() never
    // decreases with the time.
    return estimateBetween(t0, i0, t1, i1, from) >= first && estimateBetween(t0, i0, t1, i1, to) <= last;
}

inline std::size_t PosFile::lowerBound(double t) const
{
    // The search halves the range without branching on the comparison:
    // random lookups would mispredict about every second branch.
    const std::pair<double, int>* entry = m_index.data();
    std::size_t length = m_index.size();
    if (length == 0)
        return 0;
    while (length > 1) {
        const std::size_t half = length / 2;
        entry += entry[half - 1].first < t ? half : 0;
        length -= half;
    }
    entry += entry->first < t ? 1 : 0;
    return std::size_t(entry - m_index.data());
}

inline void PosFile::prefetchRecords(int first, int count) const
{
#if defined(__GNUC__)
    if (!m_map || first < 0 || first + count > m_numSets)
        return;
    const unsigned char* begin = m_map + qint64(first) * m_recordBytes;
    const unsigned char* end = begin + qint64(count) * m_recordBytes;
    for (const unsigned char* line = begin; line < end; line += 64)
        __builtin_prefetch(line);
    __builtin_prefetch(end - 1);
#else
    (void)first;
    (void)count;
#endif
}

inline double PosFile::storedTime(int index)
{
    const qint64 offset = qint64(index) * m_recordBytes + m_layout.timeOffset;
    if (m_map && offset >= 0 && offset + qint64(sizeof(double)) <= m_mapBytes) {
        double time;
        std::memcpy(&time, m_map + offset, sizeof time);
        return time;
    }
    return readStoredTime(index);
}

inline double PosFile::adjustedTime(int index)
{
    return adjusted(storedTime(index));
}

inline void PosFile::requireIndex(int index) const
{
    if (index < 0 || index >= m_numSets)
        throwIndexOutOfBounds();
}

} // namespace datamodel
