#include <datamodel/trajectory/PosFile.h>

#include <datamodel/trajectory/PosFile_p.h>

#include <datamodel/log/VNLLog.h>

#include <platform/util/RegularFile.h>

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <numbers>
#include <stdexcept>

namespace datamodel {

static_assert(std::endian::native == std::endian::little,
              "the trajectory readers take the files' little-endian numbers as they lie");

namespace {

VNLLog& log()
{
    static VNLLog logger("datamodel.PosFile");
    return logger;
}

const char* const sIndexOutOfBounds = "Index out of bounds.";
const char* const sOutsideRecording = "GPS time is out side of recording time for the trajectory.";
const char* const sTimeOutOfRange = "gps time is out of range";

/// Records whose intervals give frequency().
constexpr int sFrequencyRecords = 250;

double halfTurn(bool radians)
{
    return radians ? std::numbers::pi : 180.0;
}

/// The angle in (-h, h]: fmod(angle + h, 2h), moved up by 2h when not
/// positive, less h. An angle already in range skips fmod, which would
/// return its argument unchanged (or 0 for exactly 2h, which becomes 2h).
[[gnu::always_inline]] inline double normalise(double angle, double h)
{
    double r = angle + h;
    if (!(r > 0.0 && r <= 2.0 * h)) {
        r = std::fmod(r, 2.0 * h);
        if (r <= 0.0)
            r += 2.0 * h;
    }
    return r - h;
}

/// Brings both angles into (-h, h] and moves them so that linear
/// interpolation between them takes the shorter way (see UnwrapAngle).
[[gnu::always_inline]] inline void unwrap(double& a, double& b, double h)
{
    a = normalise(a, h);
    b = normalise(b, h);
    // After normalising, every loop below runs at most once (or not at all
    // for angles that are not numbers).
    if (a == 0.0 && b > h) {
        while (b > h)
            b -= 2.0 * h;
    } else if (b == 0.0 && a > h) {
        while (a > h)
            a -= 2.0 * h;
    } else {
        const double d = std::abs(a - b);
        if (d > h) {
            if (a * b >= 0.0) {
                if (a >= h / 2.0 && b >= h / 2.0)
                    return;
                while (a > 1.5 * h)
                    a -= 2.0 * h;
                while (b > 1.5 * h)
                    b -= 2.0 * h;
            } else {
                while (a < 0.0)
                    a += 2.0 * h;
                while (b < 0.0)
                    b += 2.0 * h;
            }
        } else if (d == h && a * b <= 0.0) {
            if (a >= 0.0 && b < 0.0)
                b += 2.0 * h;
            else if (b > 0.0)
                b -= 2.0 * h;
        }
    }
}

double loadDouble(const unsigned char* bytes)
{
    double value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// A number for a message: up to 12 significant digits, "nan", "inf".
std::string numberText(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.12g", value);
    return text;
}

/// The largest step from one record to the next at the start of a file,
/// and from the last record of a GPS week to the first record of the next
/// that is taken for a week rollover, s. Trajectories are recorded many
/// times a second.
constexpr double sLargestStepSec = 3600.0;
constexpr double sLargestRolloverStepSec = sLargestStepSec;

} // namespace

PosFile::PosFile(const std::string& fileName)
    : m_fileName(fileName)
{
    m_file.setFileName(QString::fromStdString(fileName));
    if (!open())
        throw std::runtime_error("Could not open " + fileName);
}

PosFile::~PosFile()
{
    close();
}

bool PosFile::open()
{
    if (m_file.isOpen())
        return true;
    if (!util::openRegularFile(m_file))
        return false;
    mapFile();
    m_position = 0;
    return true;
}

void PosFile::mapFile()
{
    // A mapped file is read without a system call per record, which is what
    // makes random lookups cheap; the mapping holds no memory of its own
    // beyond the page cache that reading would fill anyway. When the file
    // cannot be mapped (an empty file, an unusual file system) records are
    // read with seek and read.
    const qint64 size = m_file.size();
    if (size <= 0)
        return;
    if (uchar* map = m_file.map(0, size)) {
        m_map = map;
        m_mapBytes = size;
    }
}

void PosFile::close()
{
    if (m_map) {
        m_file.unmap(const_cast<uchar*>(m_map));
        m_map = nullptr;
        m_mapBytes = 0;
    }
    m_file.close();
}

bool PosFile::isOpen() const
{
    return m_file.isOpen();
}

void PosFile::setStartStopTime(Seconds start, Seconds stop)
{
    m_startTime = start.value();
    m_endTime = stop.value();
}

void PosFile::setLayout(const RecordLayout& layout)
{
    m_layout = layout;
    m_recordBytes = layout.recordBytes;
    m_buffer.assign(std::size_t(layout.recordBytes), 0);
}

bool PosFile::readBytes(qint64 offset, void* buffer, qint64 size)
{
    if (m_map) {
        if (offset < 0 || offset + size > m_mapBytes)
            return false;
        std::memcpy(buffer, m_map + offset, std::size_t(size));
        return true;
    }
    if (!m_file.isOpen() || !m_file.seek(offset))
        return false;
    return m_file.read(static_cast<char*>(buffer), size) == size;
}

void PosFile::checkFile(RecordTest test, bool testLastRecord, RecordCheck check)
{
    const qint64 recordBytes = m_recordBytes;
    const qint64 size = m_file.size();
    std::vector<unsigned char> record(std::size_t(recordBytes), 0);

    if (size < recordBytes || !readBytes(0, record.data(), recordBytes))
        throw std::runtime_error("Failed to read first record from file.");
    const double firstTime = loadDouble(record.data() + m_layout.timeOffset);
    if (!test(record.data(), firstTime))
        throw std::runtime_error("First record is not valid.");

    // The last complete record: a trailing partial record (a file cut short
    // while it was written) is not part of the trajectory.
    const qint64 count = size / recordBytes;
    if (count > INT_MAX)
        throw std::runtime_error("Too many records in trajectory file: " + m_fileName);
    const qint64 lastOffset = (count - 1) * recordBytes;
    if (!m_map && !m_file.seek(lastOffset))
        throw std::runtime_error("Failed to move to last record.");
    if (!readBytes(lastOffset, record.data(), recordBytes))
        throw std::runtime_error("Failed to read last record.");
    const double lastTime = loadDouble(record.data() + m_layout.timeOffset);
    if (testLastRecord && !test(record.data(), lastTime))
        throw std::runtime_error("Last record is not valid.");

    m_startTime = firstTime;
    m_endTime = lastTime;
    m_numSets = int(count);
    m_trailingBytes = int(size % recordBytes);
    m_position = 0;
    checkRecords(testLastRecord, check);
    mapFileIndex(sIndexStep);
    VNL_LOG_DEBUG(log(), m_fileName << ": " << m_numSets << " records from " << m_startTime << " to " << m_endTime
                                    << (hasGpsRollover() ? " (GPS week rollover)" : "") << ", " << m_index.size()
                                    << " index entries" << (m_ordered ? "" : ", not in increasing order")
                                    << (m_trailingBytes ? ", trailing partial record ignored" : ""));
}

void PosFile::checkRecords(bool testLastRecord, RecordCheck check)
{
    // Text or random bytes read as records mostly hold numbers no flight
    // has (a latitude of 1e185); what is left (text of digits reads as
    // numbers near 1e-77) does not rise in time from record to record.
    // Reading a few records, not all of them, keeps opening a two-hour file
    // well under a millisecond; the lookups are not slowed by a check.
    const int last = testLastRecord ? m_numSets - 1 : m_numSets - 2;
    std::vector<unsigned char> record(std::size_t(m_recordBytes), 0);
    auto read = [&](int index) {
        if (!readBytes(qint64(index) * m_recordBytes, record.data(), m_recordBytes))
            throw std::runtime_error(m_layout.readError);
        return loadDouble(record.data() + m_layout.timeOffset);
    };
    auto refuse = [](int index, const std::string& problem) {
        throw std::runtime_error("Record " + std::to_string(index) + " is not valid: " + problem + ".");
    };
    auto inspect = [&](int index) {
        const double time = read(index);
        if (!isValidGpsTime(seconds(time)))
            refuse(index, "its time " + numberText(time) + " s is not a GPS time of the week");
        if (const std::string problem = check(record.data()); !problem.empty())
            refuse(index, problem);
    };

    inspect(0);
    double previous = read(0);
    bool rolledOver = false;
    for (int i = 1; i <= std::min(last, sRisingRecords - 1); ++i) {
        const double time = read(i);
        // Across the end of the week the time starts again near 0.
        const bool rollover = !rolledOver && time < previous && time + sSecondsPerWeek - previous > 0.0
            && time + sSecondsPerWeek - previous <= sLargestRolloverStepSec;
        if (!(time > previous) && !rollover)
            refuse(i, "its time " + numberText(time) + " s is not after the time " + numberText(previous)
                          + " s of the record before it");
        if (!rollover && time - previous > sLargestStepSec)
            refuse(i, "its time " + numberText(time) + " s lies more than " + numberText(sLargestStepSec)
                          + " s after the time " + numberText(previous) + " s of the record before it");
        rolledOver = rolledOver || rollover;
        previous = time;
    }
    for (long long i = sIndexStep; i < last; i += sIndexStep)
        inspect(int(i));
    if (last > 0)
        inspect(last);
}

std::string PosFile::positionProblem(double latitudeRad, double longitudeRad, double heightM)
{
    if (!(std::abs(latitudeRad) <= std::numbers::pi / 2.0))
        return "latitude " + numberText(latitudeRad) + " rad is outside [-pi/2, pi/2]";
    if (!(std::abs(longitudeRad) <= std::numbers::pi))
        return "longitude " + numberText(longitudeRad) + " rad is outside [-pi, pi]";
    if (!(heightM >= sMinHeightM && heightM <= sMaxHeightM))
        return "height " + numberText(heightM) + " m is outside [" + numberText(sMinHeightM) + ", "
            + numberText(sMaxHeightM) + "]";
    return {};
}

std::string PosFile::angleProblem(const char* name, double angleRad, double limitRad)
{
    if (!(std::abs(angleRad) <= limitRad))
        return std::string(name) + " " + numberText(angleRad) + " rad is outside [-" + numberText(limitRad) + ", "
            + numberText(limitRad) + "]";
    return {};
}

std::string PosFile::stdDevProblem(const char* name, double value, const char* unit)
{
    if (!(value >= 0.0 && value <= sMaxStdDev))
        return std::string(name) + " standard deviation " + numberText(value) + " " + unit + " is outside [0, "
            + numberText(sMaxStdDev) + "]";
    return {};
}

void PosFile::mapFileIndex(int step)
{
    m_index.clear();
    m_ordered = true;
    double previous = std::numeric_limits<double>::min();
    // Entries are collected in insertion order, which is ascending record
    // order; equal times keep the record inserted last, as an ordered map
    // whose insertion overwrites would. A time that is not a number cannot
    // be looked up and is left out.
    auto insert = [this](double time, int index) {
        if (!std::isnan(time))
            m_index.emplace_back(time, index);
    };
    const long long last = m_numSets - 1LL;
    if (step == 1)
        m_index.reserve(std::size_t(m_numSets));
    for (long long i = 0; i < last; i += step) {
        const double time = adjustedTime(int(i));
        insert(time, int(i));
        if (step > 1 && !(time > previous)) {
            VNL_LOG_DEBUG(log(), m_fileName << ": record " << i << " is not later than the record " << step
                                            << " before it; indexing every record");
            mapFileIndex(1);
            m_ordered = false;
            return;
        }
        previous = time;
    }
    const double end = adjusted(m_endTime);
    insert(end, m_numSets - 1);
    if (!(end > previous))
        m_ordered = false;

    std::sort(m_index.begin(), m_index.end());
    auto out = m_index.begin();
    for (auto it = m_index.begin(); it != m_index.end(); ++it) {
        if (out != m_index.begin() && (out - 1)->first == it->first)
            (out - 1)->second = it->second;
        else
            *out++ = *it;
    }
    m_index.erase(out, m_index.end());
    m_index.shrink_to_fit();
    m_position = 0;
}

bool PosFile::seekRecord(int index)
{
    if (!m_file.isOpen())
        return false;
    const qint64 offset = qint64(index) * m_recordBytes;
    if (!m_map && !m_file.seek(offset))
        return false;
    m_position = offset;
    return true;
}

void PosFile::checkedSeek(int index)
{
    if (index < 0 || index >= m_numSets)
        throw std::runtime_error(m_layout.indexError);
    if (!seekRecord(index))
        throw std::runtime_error(m_layout.seekError);
}

const unsigned char* PosFile::readNextRecordBytes()
{
    if (m_map || !readBytes(m_position, m_buffer.data(), m_recordBytes))
        return nullptr;
    m_position += m_recordBytes;
    return m_buffer.data();
}

double PosFile::readStoredTime(int index)
{
    const qint64 offset = qint64(index) * m_recordBytes + m_layout.timeOffset;
    if (!m_file.isOpen())
        throw std::runtime_error(m_layout.seekError);
    double time;
    if (!readBytes(offset, &time, sizeof time))
        throw std::runtime_error(m_layout.readError);
    return time;
}

bool PosFile::isTimeInsideFile(Seconds t) const
{
    const double time = adjusted(t.value());
    return time >= m_startTime && time <= adjusted(m_endTime);
}

bool PosFile::isValidGpsTime(Seconds t)
{
    return t.value() >= 0.0 && t.value() < sSecondsPerWeek;
}

void PosFile::getRecord(int index, ImuRecord& record)
{
    requireIndex(index);
    readRecord(index, record);
}

PosFile::Bracket PosFile::walkFrom(double t, int i, double ti)
{
    // Only the record times are read on the way.
    int j = i;
    if (ti < t) {
        do
            requireIndex(++j);
        while (!(adjustedTime(j) >= t));
        return {j - 1, false};
    }
    do
        requireIndex(--j);
    while (!(adjustedTime(j) <= t));
    return {j, false};
}

void PosFile::throwIndexOutOfBounds()
{
    throw std::runtime_error(sIndexOutOfBounds);
}

void PosFile::throwOutsideRecording()
{
    throw std::runtime_error(sOutsideRecording);
}

void PosFile::throwTimeOutOfRange()
{
    throw std::runtime_error(sTimeOutOfRange);
}

void PosFile::getRecord(Seconds gpsTime, ImuRecord& record)
{
    const double t = adjusted(gpsTime.value());
    requireInsideRecording(t);
    const int estimate = estimateIndex(seconds(t));
    // The estimate is nearly always the first of the two records around t:
    // ask for both (and whatever else reading them needs) at once, so that
    // the cache misses overlap instead of following one another.
    prefetchRecords(estimate, 2);
    anticipate(t);
    const Bracket bracket = locateFrom(t, estimate);
    if (bracket.exact) {
        readRecord(bracket.first, record);
        return;
    }
    ImuRecord a;
    ImuRecord b;
    readRecord(bracket.first, a);
    readRecord(bracket.first + 1, b);
    record.time = t;
    interpolate(a, b, record);
    record.time = gpsTime.value();
}

int PosFile::getNearestIndex(Seconds gpsTime, bool before)
{
    const double t = adjusted(gpsTime.value());
    requireInsideRecording(t);
    const int i = estimateIndex(seconds(t));
    requireIndex(i);
    const double ti = adjustedTime(i);
    if (std::abs(ti - t) < sSameTimeSec)
        return i;
    int nearest;
    if (ti < t) {
        int j = i;
        while (j < m_numSets && !(adjustedTime(j) >= t))
            ++j;
        nearest = before ? j - 1 : j;
    } else {
        int j = i;
        while (j >= 0 && !(adjustedTime(j) <= t))
            --j;
        nearest = before ? j : j + 1;
    }
    return std::clamp(nearest, 0, m_numSets - 1);
}

double PosFile::frequency()
{
    const int first = std::max((m_numSets - sFrequencyRecords) / 2, 0);
    const int end = std::min(first + sFrequencyRecords, m_numSets);
    std::array<double, sFrequencyRecords> intervals{};
    int count = 0;
    try {
        double previous = adjustedTime(first);
        for (int i = first + 1; i < end; ++i) {
            const double time = adjustedTime(i);
            intervals[std::size_t(count++)] = time - previous;
            previous = time;
        }
    } catch (const std::runtime_error&) {
        // A record that cannot be read ends the sample.
    }
    if (count == 0)
        return std::numeric_limits<double>::quiet_NaN();
    // Not-a-number intervals (corrupt times) sort last, so that the order is total.
    std::sort(intervals.begin(), intervals.begin() + count, [](double a, double b) {
        return a < b || (!std::isnan(a) && std::isnan(b));
    });
    const int dropped = count / 4;
    double sum = 0.0;
    for (int k = dropped; k < count - dropped; ++k)
        sum += intervals[std::size_t(k)];
    return sum / double(count - 2 * dropped);
}

void PosFile::readAttitudes(int first, int count, Attitude* out)
{
    if (first < 0 || count < 0 || qint64(first) + count > m_numSets)
        throw std::runtime_error(sIndexOutOfBounds);
    const qint64 begin = qint64(first) * m_recordBytes;
    const qint64 end = begin + qint64(count) * m_recordBytes;
    if (m_map && end <= m_mapBytes) {
        const unsigned char* record = m_map + begin;
        for (int k = 0; k < count; ++k, record += m_recordBytes) {
            out[k].time = loadDouble(record + m_layout.timeOffset);
            out[k].roll = loadDouble(record + m_layout.rollOffset);
            out[k].pitch = loadDouble(record + m_layout.pitchOffset);
        }
        return;
    }
    if (!m_file.isOpen())
        throw std::runtime_error(m_layout.seekError);
    for (int k = 0; k < count; ++k) {
        if (!readBytes(begin + qint64(k) * m_recordBytes, m_buffer.data(), m_recordBytes))
            throw std::runtime_error(m_layout.readError);
        out[k].time = loadDouble(m_buffer.data() + m_layout.timeOffset);
        out[k].roll = loadDouble(m_buffer.data() + m_layout.rollOffset);
        out[k].pitch = loadDouble(m_buffer.data() + m_layout.pitchOffset);
    }
}

double PosFile::linear(double y0, double y1, double x0, double x1, double x)
{
    if (x0 == x1 || x0 == x)
        return y0;
    if (x1 == x)
        return y1;
    return (x - x0) * (y1 - y0) / (x1 - x0) + y0;
}

double PosFile::linearInterpolateAngle(double x0, double a0, double x1, double a1, double x, bool radians)
{
    if (x == x0 && x0 != x1)
        return a0;
    if (x == x1 && x0 != x1)
        return a1;
    const double h = halfTurn(radians);
    unwrap(a0, a1, h);
    return normalise(linear(a0, a1, x0, x1, x), h);
}

void PosFile::UnwrapAngle(double& a, double& b, bool radians)
{
    unwrap(a, b, halfTurn(radians));
}

void PosFile::interpolate(const ImuRecord& a, const ImuRecord& b, ImuRecord& out) const
{
    const double t = adjusted(out.time);
    const double ta = adjusted(a.time);
    const double tb = adjusted(b.time);
    const double dt = t - ta;
    const double span = tb - ta;
    if (ta < t && t < tb) {
        // As nearly always: linearInterpolateAngle() written out for a time
        // strictly between the records.
        constexpr double h = std::numbers::pi;
        double a0 = a.longitude;
        double a1 = b.longitude;
        unwrap(a0, a1, h);
        out.longitude = normalise(dt * (a1 - a0) / span + a0, h);
        a0 = a.heading;
        a1 = b.heading;
        unwrap(a0, a1, h);
        out.heading = normalise(dt * (a1 - a0) / span + a0, h);
    } else {
        out.longitude = linearInterpolateAngle(ta, a.longitude, tb, b.longitude, t, true);
        out.heading = linearInterpolateAngle(ta, a.heading, tb, b.heading, t, true);
        // linear() of an end, its tests on the times made once.
        if (ta == tb || ta == t || tb == t) {
            const ImuRecord& end = ta == tb || ta == t ? a : b;
            out.latitude = end.latitude;
            out.height = end.height;
            out.roll = end.roll;
            out.pitch = end.pitch;
            out.stdDev() = end.stdDev();
            return;
        }
    }
    out.latitude = dt * (b.latitude - a.latitude) / span + a.latitude;
    out.height = dt * (b.height - a.height) / span + a.height;
    out.roll = dt * (b.roll - a.roll) / span + a.roll;
    out.pitch = dt * (b.pitch - a.pitch) / span + a.pitch;
    blendStdDevs(a.stdDev(), b.stdDev(), dt, span, out.stdDev());
}

} // namespace datamodel
