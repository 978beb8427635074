#include <platform/sensor/CameraTime.h>

#include <platform/raster/CtFile.h>

#include <platform/util/AtomicFile.h>
#include <platform/util/RegularFile.h>

#include <QFile>
#include <QFileInfo>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace sensor {

namespace {

// CTG files are little-endian doubles, read and written straight from and
// to the vector of times.
static_assert(sizeof(CameraTime::Time) == sizeof(double), "a time is a double underneath");
static_assert(std::endian::native == std::endian::little, "the CTG reader needs a little-endian host");

// The line interval [k, k + 1] that holds (or, beyond the ends, continues to)
// the line position; requires at least two lines.
std::size_t intervalOf(float line, std::size_t count)
{
    double k = std::floor(double(line));
    if (!(k >= 0.0))
        k = 0.0;
    if (k > double(count - 2))
        k = double(count - 2);
    return std::size_t(k);
}

bool withinTolerance(double step, double reference)
{
    return std::abs(step - reference) <= CameraTime::sCycleTolerance * std::abs(reference);
}

} // namespace

CameraTime::CameraTime() = default;

CameraTime::CameraTime(const std::string& ctgFile)
    : m_ctgFileName(ctgFile)
{
    loadData();
}

void CameraTime::readCtgFile(const std::string& path, std::vector<Time>& times)
{
    QFile file(QString::fromStdString(path));
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Can't open CTG file: " + path, reason);
    const qint64 size = file.size();
    if (size % 8 != 0)
        throw std::runtime_error("CTG file size is no multiple of 8 bytes: " + path);
    if (std::uint64_t(size / 8) > raster::CtFile::sMaxLines)
        throw std::runtime_error("CTG file holds " + std::to_string(size / 8) + " scan lines, more than a band can (at most "
                                 + std::to_string(raster::CtFile::sMaxLines) + "): " + path);
    times.resize(std::size_t(size / 8));
    if (size > 0 && file.read(reinterpret_cast<char*>(times.data()), size) != size)
        throw std::runtime_error("Failed to read CTG file: " + path);
}

void CameraTime::loadData()
{
    if (m_ctgFileName.empty())
        throw std::runtime_error("No CTG file name set.");
    std::vector<Time> values;
    readCtgFile(m_ctgFileName, values);
    m_values = std::move(values);
}

void CameraTime::writeCtg(util::AtomicFile& file, std::span<const Time> times)
{
    // One block of little-endian doubles, in line order.
    file.write(times.data(), times.size_bytes());
}

void CameraTime::writeData() const
{
    if (m_ctgFileName.empty())
        throw std::runtime_error("No CTG file name set.");
    util::AtomicFile file(m_ctgFileName, "CTG file");
    file.open();
    writeCtg(file, m_values);
    file.commit();
}

CameraTime::Time CameraTime::gpsTime(float line) const
{
    const std::size_t n = m_values.size();
    if (n == 0)
        throw std::runtime_error("No camera times for: " + m_ctgFileName);
    if (n == 1)
        return m_values.front();
    const double position = line;
    // A whole line within the band gives its time exactly.
    if (position >= 0.0 && position < double(n) && position == std::floor(position))
        return m_values[std::size_t(position)];
    const std::size_t k = intervalOf(line, n);
    const double t0 = m_values[k].value();
    const double t1 = m_values[k + 1].value();
    return Time::from_value(t0 + (position - double(k)) * (t1 - t0));
}

CameraTime::Time CameraTime::cycleTime(float line) const
{
    const std::size_t n = m_values.size();
    if (n < 2)
        throw std::runtime_error("No cycle time with fewer than two camera times for: " + m_ctgFileName);
    const std::size_t k = intervalOf(line, n);
    return m_values[k + 1] - m_values[k];
}

CameraTime::CtglMap CameraTime::getInternalCtglRepresentation() const
{
    CtglMap stretches;
    const std::size_t n = m_values.size();
    if (n == 0)
        return stretches;
    if (n == 1) {
        stretches.emplace(m_values.front(), CtglEntry{0, 1, Time::from_value(0.0)});
        return stretches;
    }
    auto step = [this](std::size_t k) { return (m_values[k + 1] - m_values[k]).value(); };
    auto close = [&](std::size_t first, std::size_t end) {
        // Lines [first, end) with the step into line `end`: the mean period.
        const std::size_t last = std::min(end, n - 1);
        const double cycleSec = (m_values[last] - m_values[first]).value() / double(last - first);
        stretches.emplace(m_values[first], CtglEntry{std::uint32_t(first), std::uint32_t(end - first),
                                                     Time::from_value(cycleSec)});
    };

    const std::size_t steps = n - 1;
    std::size_t first = 0;
    double reference = step(0);
    for (std::size_t k = 1; k < steps; ++k) {
        const double s = step(k);
        if (withinTolerance(s, reference))
            continue;
        bool persists = k + sMinStretchSteps <= steps;
        for (std::size_t j = k + 1; persists && j < k + sMinStretchSteps; ++j)
            persists = withinTolerance(step(j), s);
        if (!persists)
            continue;
        close(first, k);
        first = k;
        reference = s;
    }
    close(first, n);
    return stretches;
}

bool CameraTime::isNonUniformCT() const
{
    return getInternalCtglRepresentation().size() > 1;
}

} // namespace sensor
