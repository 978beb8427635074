#include <datamodel/timing/TmFile.h>

#include <datamodel/timing/TimeFormat_p.h>

#include <platform/util/RegularFile.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace datamodel {

// The file is read straight into the records: little-endian doubles, GPS first.
static_assert(sizeof(TmFile::TmRecord) == 16, "a record is read straight from the file");
static_assert(std::endian::native == std::endian::little, "the time-mark reader needs a little-endian host");

const double TmFile::sWeekSec = 604800.0;
const double TmFile::sRegularityToleranceSec = 0.005;
const std::int64_t TmFile::sMaxRecords = 604800LL * 16;

namespace {

constexpr qint64 sRecordBytes = 16;
// The neighbourhood test of an irregular step, s.
constexpr double sDiagnosisToleranceSec = 0.00005;
constexpr int sDiagnosisRecords = 5;
constexpr int sDiagnosisMaxMissing = 9;

// Sorts not-a-number values behind every number, so that a corrupt value
// neither breaks the ordering nor enters the trimmed mean unless half the
// sample is corrupt.
bool numbersFirst(double a, double b)
{
    return a < b || (!std::isnan(a) && std::isnan(b));
}

// The mean of the middle half of the sorted steps of `value` over the
// records [a, b): the trimmed mean that makes one jump in the sample (a
// rollover, a missing mark) harmless. Not a number without steps.
template <typename Field>
double trimmedMeanStep(const TmFile::Records& records, std::size_t a, std::size_t b, Field value)
{
    std::vector<double> steps;
    for (std::size_t i = a; i + 1 < b; ++i)
        steps.push_back(value(records[i + 1]) - value(records[i]));
    std::sort(steps.begin(), steps.end(), numbersFirst);
    const std::size_t q = (b - a) / 4;
    // For fewer than four records the window reaches one past the steps.
    const std::size_t end = std::min((b - a) - q, steps.size());
    if (q >= end)
        return std::numeric_limits<double>::quiet_NaN();
    double sum = 0.0;
    for (std::size_t i = q; i < end; ++i)
        sum += steps[i];
    return sum / double(end - q);
}

// Linear interpolation between two marks, written once so that the single
// and the batch conversion compute bit for bit the same value.
inline double interpolate(double x, double x0, double y0, double x1, double y1)
{
    return y0 + (x - x0) * (y1 - y0) / (x1 - x0);
}

[[noreturn]] void throwOutOfRange()
{
    throw std::out_of_range("invalid vector<T> subscript");
}

// The truncated start index of a search; a guess outside the records is
// reported as the vector access that would fail.
long long truncatedIndex(double guess, std::size_t count, const char* notFound)
{
    if (std::isnan(guess))
        throw std::runtime_error(notFound);
    if (guess <= -1.0 || guess >= double(count))
        throwOutOfRange();
    return static_cast<long long>(guess);
}

} // namespace

TmFile::TmFile(const std::string& path)
    : m_ctPeriod(std::numeric_limits<double>::quiet_NaN())
    , m_gpsPeriod(std::numeric_limits<double>::quiet_NaN())
    , m_gpsRollover(false)
    , m_startIndex(0)
    , m_name(path)
    , m_ctStrictlyRising(false)
{
    QFile file(QString::fromStdString(path));
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Failed to open TM file: " + path, reason);
    const qint64 count = file.size() / sRecordBytes;
    if (count <= 0)
        throw std::runtime_error("TM file: " + path + " has zero size");
    if (count > sMaxRecords)
        throw std::runtime_error("TM file: " + path + " holds " + std::to_string(count)
                                 + " records, more than a week of time marks (at most "
                                 + std::to_string(sMaxRecords) + ")");

    m_records.reserve(std::size_t(count));
    m_records.resize(std::size_t(count), TmRecord{-1.0, -1.0});
    const qint64 bytes = count * sRecordBytes;
    if (file.read(reinterpret_cast<char*>(m_records.data()), bytes) != bytes)
        throw std::runtime_error("IO Error reading .tm file:" + path);

    computeFrequencies();
    // An irregular file still loads; the time-mark validators judge it.
    (void)analyzeAndFix();
}

void TmFile::checkPlausible() const
{
    auto refuse = [this](std::size_t record, const std::string& what) {
        throw std::runtime_error("Time-mark file " + m_name + ", record " + std::to_string(record) + ": " + what);
    };
    if (m_records.size() < 2)
        throw std::runtime_error("Time-mark file " + m_name
                                 + " holds one time mark; converting camera times needs at least two");
    // After a repaired rollover the GPS times run on into the next week.
    const double gpsEnd = m_gpsRollover ? 2.0 * sWeekSec : sWeekSec;
    for (std::size_t i = 0; i < m_records.size(); ++i) {
        const TmRecord& r = m_records[i];
        if (!std::isfinite(r.gpsTime))
            refuse(i, "the GPS time is not a finite number");
        if (!std::isfinite(r.ctTime))
            refuse(i, "the camera time is not a finite number");
        if (r.gpsTime < 0.0 || r.gpsTime >= gpsEnd)
            refuse(i, "GPS time " + generalText(r.gpsTime, 12) + " s lies outside the GPS week");
        if (r.ctTime < 0.0)
            refuse(i, "camera time " + generalText(r.ctTime, 12) + " s is negative");
    }
    // Both clocks run at one second per second, give or take the camera
    // clock's drift: a mark whose GPS step and camera-time step disagree by
    // far more is not a mark of this flight.
    for (std::size_t i = 1; i < m_records.size(); ++i) {
        const double gpsStep = m_records[i].gpsTime - m_records[i - 1].gpsTime;
        const double ctStep = m_records[i].ctTime - m_records[i - 1].ctTime;
        if (ctStep > 0.0 && std::abs(gpsStep - ctStep) > 1.0 + 0.01 * ctStep)
            refuse(i, "the GPS time steps by " + generalText(gpsStep, 9) + " s where the camera time steps by "
                          + generalText(ctStep, 9) + " s");
    }
    if (!(m_gpsPeriod > 0.0))
        throw std::runtime_error("Time-mark file " + m_name + ": the GPS times of the marks do not advance (period "
                                 + generalText(m_gpsPeriod, 6) + " s)");
    if (!(m_ctPeriod > 0.0))
        throw std::runtime_error("Time-mark file " + m_name
                                 + ": the camera times of the marks do not advance (period "
                                 + generalText(m_ctPeriod, 6) + " s)");
    if (!(m_records.back().gpsTime > m_records.front().gpsTime))
        throw std::runtime_error("Time-mark file " + m_name + ": the last mark's GPS time is not after the first's");
    if (!(m_records.back().ctTime > m_records.front().ctTime))
        throw std::runtime_error("Time-mark file " + m_name
                                 + ": the last mark's camera time is not after the first's");
}

void TmFile::computeFrequencies()
{
    // The middle of the flight: 100 records before its midpoint.
    const std::size_t n = m_records.size();
    std::size_t a = 0;
    std::size_t b = n;
    if (n > 100) {
        // Files of 101 to 199 records: the window starts at the first record.
        a = n / 2 > 100 ? n / 2 - 100 : 0;
        b = n / 2;
    }
    m_gpsPeriod = trimmedMeanStep(m_records, a, b, [](const TmRecord& r) { return r.gpsTime; });
    m_ctPeriod = trimmedMeanStep(m_records, a, b, [](const TmRecord& r) { return r.ctTime; });
}

bool TmFile::isRolloverStep(const TmRecord& earlier, const TmRecord& later) const
{
    // Within two periods of the week's end on either side; or, when marks
    // are missing around the week's end, GPS time running back by more than
    // half a week (no other step does that in a file the checks accept).
    const double limit = 2.0 * m_gpsPeriod;
    return (later.gpsTime < limit && earlier.gpsTime > sWeekSec - limit)
           || (later.gpsTime >= 0.0 && earlier.gpsTime < sWeekSec && later.gpsTime < earlier.gpsTime - 0.5 * sWeekSec);
}

void TmFile::repairRollover()
{
    for (std::size_t i = 1; i < m_records.size(); ++i) {
        if (isRolloverStep(m_records[i - 1], m_records[i])) {
            m_gpsRollover = true;
            // The earlier record's CT field (not its GPS field) is brought
            // back into the week: that is how these files are corrected.
            if (m_records[i - 1].ctTime > sWeekSec)
                m_records[i - 1].ctTime -= sWeekSec;
            for (std::size_t k = i; k < m_records.size(); ++k)
                m_records[k].gpsTime += sWeekSec;
            break;
        }
    }
    updateOrdering();
}

void TmFile::updateOrdering()
{
    m_ctStrictlyRising = true;
    for (std::size_t i = 1; i < m_records.size(); ++i)
        m_ctStrictlyRising = m_ctStrictlyRising && m_records[i].ctTime > m_records[i - 1].ctTime;
}

bool TmFile::analyzeAndFix()
{
    if (m_records.empty())
        return false;
    repairRollover();

    for (std::size_t i = 1; i < m_records.size(); ++i) {
        const TmRecord& earlier = m_records[i - 1];
        const TmRecord& later = m_records[i];
        const double dCt = later.ctTime - earlier.ctTime - m_ctPeriod;
        if (dCt > sRegularityToleranceSec || dCt < -sRegularityToleranceSec || std::isnan(dCt)) {
            const iterator laterRecord = m_records.begin() + std::ptrdiff_t(i);
            if (!fixData(laterRecord, laterRecord - 1))
                return false;
        }
        const double dGps = later.gpsTime - earlier.gpsTime - m_gpsPeriod;
        if (dGps > sRegularityToleranceSec || dGps < -sRegularityToleranceSec)
            return false;
    }
    return true;
}

bool TmFile::fixData(const iterator& later, const iterator& earlier)
{
    // Irregular steps are described, never repaired: the records stay as
    // recorded and the time-mark validators judge the file.
    const std::ptrdiff_t index = later - m_records.begin();
    if (earlier + 1 != later || index <= 0 || index >= std::ptrdiff_t(m_records.size()))
        return false;
    (void)diagnoseStep(std::size_t(index));
    return false;
}

TmFile::StepDiagnosis TmFile::diagnoseStep(std::size_t later) const
{
    const std::size_t n = m_records.size();
    if (later == 0 || later >= n)
        throwOutOfRange();
    const std::size_t earlier = later - 1;
    StepDiagnosis diagnosis;

    if (earlier > 0 && later + 1 < n) {
        // Three steps around the pair: regular when only one mark is off.
        const TmRecord& before = m_records[earlier - 1];
        const TmRecord& after = m_records[later + 1];
        const double ctOff = (after.ctTime - before.ctTime) / 3.0 - m_ctPeriod;
        const double gpsOff = (after.gpsTime - before.gpsTime) / 3.0 - m_gpsPeriod;
        if (std::abs(ctOff) <= sDiagnosisToleranceSec && std::abs(gpsOff) <= sDiagnosisToleranceSec) {
            diagnosis.isolatedMark = true;
            return diagnosis;
        }
    }

    // Up to five records on each side: how many periods the GPS span holds
    // beyond its steps.
    const std::size_t first = earlier >= std::size_t(sDiagnosisRecords) ? earlier - sDiagnosisRecords : 0;
    const std::size_t last = std::min(n - 1, later + sDiagnosisRecords);
    const double spanSec = m_records[last].gpsTime - m_records[first].gpsTime;
    const double steps = double(last - first);
    for (int missing = 0; missing <= sDiagnosisMaxMissing; ++missing) {
        if (std::abs(spanSec - (steps + missing) * m_gpsPeriod) <= sDiagnosisToleranceSec) {
            diagnosis.missingMarks = missing;
            break;
        }
    }
    return diagnosis;
}

void TmFile::load(int type, const Seconds& from, const Seconds& to)
{
    const TmRecord& last = m_records.back();
    const bool ct = type == CT_TYPE;
    if (ct && last.ctTime < to.value())
        throw std::runtime_error("maximum CT time in " + m_name + " is " + millisecondsText(seconds(last.ctTime))
                                 + "ms");
    if (!ct && last.gpsTime < to.value())
        throw std::runtime_error("maximum GPS time in " + m_name + " is " + generalText(last.gpsTime, 6));

    m_startIndex = -1;
    for (std::size_t i = 0; i < m_records.size(); ++i) {
        const double value = ct ? m_records[i].ctTime : m_records[i].gpsTime;
        if (value > from.value()) {
            m_startIndex = i > 0 ? std::int32_t(i - 1) : 0;
            return;
        }
    }
    m_startIndex = 0;
    throw std::runtime_error(" invalid data range");
}

bool TmFile::hasCtTime(const Seconds& t) const
{
    return m_records.front().ctTime <= t.value() && t.value() <= m_records.back().ctTime;
}

bool TmFile::hasGpsTime(const Seconds& t) const
{
    return m_records.front().gpsTime <= t.value() && t.value() <= m_records.back().gpsTime;
}

const TmFile::TmRecord& TmFile::recordAt(long long i) const
{
    if (i < 0 || std::size_t(i) >= m_records.size())
        throwOutOfRange();
    return m_records[std::size_t(i)];
}

long long TmFile::predictedCtIndex(double ct) const
{
    const double guess = (ct - recordAt(m_startIndex).ctTime) / m_ctPeriod + m_startIndex;
    return truncatedIndex(guess, m_records.size(), "Can't find CT time.");
}

long long TmFile::predictedGpsIndex(double gps) const
{
    const double guess = (gps - recordAt(m_startIndex).gpsTime) / m_gpsPeriod + m_startIndex;
    return truncatedIndex(guess, m_records.size(), "Can't find GPS time.");
}

std::size_t TmFile::findCtBracket(double ct) const
{
    const long long count = static_cast<long long>(m_records.size());
    long long i = predictedCtIndex(ct);
    int direction = 0;
    for (;;) {
        const TmRecord& record = recordAt(i);
        if (record.ctTime <= ct && ct <= recordAt(i + 1).ctTime)
            return std::size_t(i);
        const int step = ct >= record.ctTime ? 1 : -1;
        // Turning back means the marks around ct are out of order (or not
        // numbers): the search would never end.
        if (direction != 0 && step != direction)
            throw std::runtime_error("Can't find CT time.");
        direction = step;
        i += step;
        if (i < 0 || i >= count)
            throw std::runtime_error("Can't find CT time.");
    }
}

Seconds TmFile::gpsAtCT(const Seconds& ctTime) const
{
    const double ct = ctTime.value();
    if (ct < m_records.front().ctTime)
        throw std::runtime_error("CTTime too small.");
    if (ct >= m_records.back().ctTime)
        throw std::runtime_error("CTTime too big.");
    const std::size_t i = findCtBracket(ct);
    const TmRecord& a = m_records[i];
    const TmRecord& b = m_records[i + 1];
    return seconds(interpolate(ct, a.ctTime, a.gpsTime, b.ctTime, b.gpsTime));
}

void TmFile::gpsAtCT(std::span<const double> ctSec, std::span<Seconds> gps) const
{
    if (ctSec.size() != gps.size())
        throw std::invalid_argument("gpsAtCT: " + std::to_string(ctSec.size()) + " CT values but room for "
                                    + std::to_string(gps.size()) + " GPS times");
    const std::size_t count = ctSec.size();
    if (count == 0)
        return;
    auto oneByOne = [&] {
        for (std::size_t k = 0; k < count; ++k)
            gps[k] = gpsAtCT(seconds(ctSec[k]));
    };

    // The single walk gives the same brackets as the search of gpsAtCT()
    // when the marks rise strictly, the values ascend within the file's
    // range, and every predicted start index lies within the records (the
    // prediction grows with the value, so the two ends decide). Otherwise,
    // and on exact hits of a mark (where the search's direction decides the
    // bracket), the values go through gpsAtCT() one by one.
    const double firstCt = ctSec.front();
    const double lastCt = ctSec.back();
    const std::size_t n = m_records.size();
    const double* values = ctSec.data();
    double unordered = 0.0; // pairs out of order, or not numbers (counted in a double, which vectorizes)
#pragma omp simd reduction(+ : unordered)
    for (std::size_t k = 0; k < count - 1; ++k)
        unordered += values[k + 1] >= values[k] ? 0.0 : 1.0;
    if (unordered != 0.0 || !m_ctStrictlyRising || !(m_ctPeriod > 0.0) || !std::isfinite(m_ctPeriod)
        || !(firstCt >= m_records.front().ctTime) || !(lastCt < m_records.back().ctTime)) {
        oneByOne();
        return;
    }
    const double startCt = m_records[std::size_t(m_startIndex)].ctTime;
    const double firstGuess = (firstCt - startCt) / m_ctPeriod + m_startIndex;
    const double lastGuess = (lastCt - startCt) / m_ctPeriod + m_startIndex;
    if (!(firstGuess > -1.0) || !(lastGuess < double(n))) {
        oneByOne();
        return;
    }

    const auto firstAfter = std::partition_point(m_records.begin(), m_records.end(),
                                                 [firstCt](const TmRecord& r) { return r.ctTime <= firstCt; });
    std::size_t i = std::size_t(firstAfter - m_records.begin()) - 1;
    Seconds* out = gps.data();
    std::size_t k = 0;
    while (k < count) {
        const TmRecord& a = m_records[i];
        const TmRecord& b = m_records[i + 1];
        for (; k < count && values[k] == a.ctTime; ++k)
            out[k] = gpsAtCT(seconds(values[k]));
        const std::size_t end = std::size_t(std::lower_bound(values + k, values + count, b.ctTime) - values);
        const double c0 = a.ctTime;
        const double g0 = a.gpsTime;
        const double c1 = b.ctTime;
        const double g1 = b.gpsTime;
#pragma omp simd
        for (std::size_t j = k; j < end; ++j)
            out[j] = Seconds::from_value(interpolate(values[j], c0, g0, c1, g1));
        k = end;
        ++i;
    }
}

Seconds TmFile::ctAtGPS(const Seconds& gpsTime)
{
    const double gps = gpsTime.value();
    long long i = predictedGpsIndex(gps);
    int direction = 0;
    for (;;) {
        const TmRecord& record = recordAt(i);
        if (record.gpsTime <= gps && gps <= recordAt(i + 1).gpsTime)
            break;
        const int step = gps >= record.gpsTime ? 1 : -1;
        if (direction != 0 && step != direction)
            throw std::runtime_error("Can't find GPS time.");
        direction = step;
        i += step;
    }
    const TmRecord& a = m_records[std::size_t(i)];
    const TmRecord& b = m_records[std::size_t(i) + 1];
    return seconds(interpolate(gps, a.gpsTime, a.ctTime, b.gpsTime, b.ctTime));
}

bool TmFile::hasGpsRollover() const
{
    if (m_gpsRollover)
        return true;
    for (std::size_t i = 1; i < m_records.size(); ++i)
        if (isRolloverStep(m_records[i - 1], m_records[i]))
            return true;
    return false;
}

} // namespace datamodel
