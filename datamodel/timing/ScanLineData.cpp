#include <datamodel/timing/ScanLineData.h>

#include <platform/util/AtomicFile.h>
#include <platform/util/RegularFile.h>

#include <QFile>

#include <algorithm>
#include <cmath>
#include <climits>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace datamodel {

namespace {

constexpr qint64 sRecordSize = 8;

std::uint32_t readU32(const unsigned char* p)
{
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 | std::uint32_t(p[3]) << 24;
}

void writeU32(unsigned char* p, std::uint32_t v)
{
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
    p[2] = static_cast<unsigned char>(v >> 16);
    p[3] = static_cast<unsigned char>(v >> 24);
}

} // namespace

ScanLineData::ScanLineData(double scale)
    : m_scale(scale)
{
}

ScanLineData ScanLineData::read(const std::string& path, double scale)
{
    QFile file(QString::fromStdString(path));
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Can't open file: " + path, reason);
    const qint64 size = file.size();
    if (size % sRecordSize != 0)
        throw std::runtime_error("File size is no multiple of the data size, in: " + path);

    if (size / sRecordSize > ScanLineData::sMaxRecords)
        throw std::runtime_error("File holds " + std::to_string(size / sRecordSize)
                                 + " records, more than a band has scan lines (at most "
                                 + std::to_string(ScanLineData::sMaxRecords) + "), in: " + path);

    ScanLineData data(scale);
    data.m_fileName = path;
    if (size == 0)
        return data;

    std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
    if (file.read(reinterpret_cast<char*>(bytes.data()), size) != size)
        throw std::runtime_error("Failed to read file: " + path);

    // Each record starts a run; the previous run's value is also stored at
    // the line before, so that every run is held by its first and last line.
    std::int64_t previousLine = 0;
    float previousValue = 0.0f;
    for (qint64 offset = 0; offset < size; offset += sRecordSize) {
        const std::uint32_t line = readU32(&bytes[std::size_t(offset)]);
        if (offset > 0 && std::int64_t(line) <= previousLine)
            throw std::runtime_error("Scan line " + std::to_string(line) + " of record "
                                     + std::to_string(offset / sRecordSize) + " does not follow line "
                                     + std::to_string(previousLine) + " of the record before, in: " + path);
        const auto fileValue = static_cast<std::int32_t>(readU32(&bytes[std::size_t(offset) + 4]));
        const auto value = static_cast<float>(fileValue * scale);
        if (offset > 0 && std::int64_t(line) - 1 > previousLine)
            data.m_values[std::uint32_t(line - 1)] = previousValue;
        data.m_values[line] = value;
        previousLine = line;
        previousValue = value;
    }
    return data;
}

void ScanLineData::write(const std::string& path)
{
    std::vector<unsigned char> bytes;
    bytes.reserve(m_values.size() * sRecordSize);
    double lastWritten = -1.0;
    for (const auto& [line, value] : m_values) {
        if (double(value) == lastWritten)
            continue;
        unsigned char record[sRecordSize];
        writeU32(record, line);
        // Rounded to the nearest file unit (halves away from zero, which for
        // the non-negative values of real files is adding one half and
        // truncating), clamped to the field's range. Rounding negative values
        // the same way keeps a read-write round trip exact for them too.
        const double fileValue = std::clamp(double(value) / m_scale, double(INT32_MIN), double(INT32_MAX));
        writeU32(record + 4, static_cast<std::uint32_t>(static_cast<std::int32_t>(std::lround(fileValue))));
        bytes.insert(bytes.end(), record, record + sRecordSize);
        lastWritten = value;
    }

    util::AtomicFile::writeWhole(path, "scan-line data file", bytes.data(), bytes.size(),
                                 "Can't open file for writing: " + path);
    m_fileName = path;
}

void ScanLineData::requireValues() const
{
    if (m_values.empty())
        throw std::runtime_error("No scan-line data in: " + m_fileName);
}

float ScanLineData::value(double line) const
{
    requireValues();
    if (!(line > 0.0))
        return m_values.begin()->second;
    const double floored = std::floor(line);
    if (floored >= double(UINT32_MAX))
        return std::prev(m_values.end())->second;
    auto after = m_values.upper_bound(static_cast<std::uint32_t>(floored));
    if (after == m_values.begin())
        return after->second;
    return std::prev(after)->second;
}

float ScanLineData::nominalValue() const
{
    requireValues();
    // Count the lines each value is in force over: a stored line holds until
    // the next stored line; the last stored line counts once.
    std::map<float, std::uint64_t> linesPerValue;
    std::vector<float> order;
    for (auto it = m_values.begin(); it != m_values.end(); ++it) {
        auto next = std::next(it);
        const std::uint64_t span = next == m_values.end() ? 1 : std::uint64_t(next->first) - it->first;
        if (linesPerValue.find(it->second) == linesPerValue.end())
            order.push_back(it->second);
        linesPerValue[it->second] += span;
    }
    float best = order.front();
    for (float candidate : order)
        if (linesPerValue[candidate] > linesPerValue[best])
            best = candidate;
    return best;
}

float ScanLineData::minValue() const
{
    requireValues();
    return std::min_element(m_values.begin(), m_values.end(),
                            [](const auto& a, const auto& b) { return a.second < b.second; })
        ->second;
}

float ScanLineData::maxValue() const
{
    requireValues();
    return std::max_element(m_values.begin(), m_values.end(),
                            [](const auto& a, const auto& b) { return a.second < b.second; })
        ->second;
}

std::string ScanLineData::implausibility(Quantity quantity) const
{
    if (m_values.empty())
        return "no runs";
    for (const auto& [line, value] : m_values) {
        if (quantity == Quantity::IntegrationTime && !(value > 0.0f && value <= 1.0f))
            return "integration time " + std::to_string(double(value) * 1000.0) + " ms at scan line "
                + std::to_string(line) + " is outside (0, 1000] ms";
        if (quantity == Quantity::TdiStages && !(value >= 1.0f && value <= 256.0f && value == std::floor(value)))
            return "TDI stage count " + std::to_string(value) + " at scan line " + std::to_string(line)
                + " is not a whole number in [1, 256]";
    }
    return {};
}

} // namespace datamodel
