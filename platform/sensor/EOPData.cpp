#include <platform/sensor/EOPData.h>

#include <platform/util/AtomicFile.h>
#include <platform/util/InvalidFileError.h>
#include <platform/util/RegularFile.h>

#include <QByteArrayView>
#include <QFile>
#include <QStringDecoder>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace sensor {

namespace {

// The EOP file (docs/formats/eop-file.md): little-endian, a fixed header
// part, three length-prefixed texts, the sample count, the samples and, when
// flagged, the standard deviations. Every field is encoded on its own, so
// the layout does not depend on the host's struct packing or byte order.
constexpr unsigned char sSignature[8] = {'E', 'O', 'P', 'D', 'A', 'T', 'A', '\0'};
constexpr std::uint32_t sVersion = 1;
/// Signature, version, absolute time, anchor, frequency, std-dev flag.
constexpr std::size_t sFixedHeaderBytes = 52;
/// Longest source text, bytes: far beyond any path, small enough to read whole.
constexpr std::uint32_t sMaxTextBytes = 65536;
constexpr std::size_t sSampleBytes = 52;
constexpr std::size_t sStdDevBytes = 48;
/// Largest departure of a stored attitude quaternion's length from 1. A
/// float quaternion normalised in double is off by about 1e-7.
constexpr double sUnitTolerance = 1e-3;
constexpr std::uint32_t sSecondsPerWeek = 604800;
/// Samples encoded or decoded per block: 200 KB of buffer at most.
constexpr std::size_t sBlockSamples = 2048;

template <typename T>
using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;

template <typename T>
void put(unsigned char*& out, T value)
{
    static_assert(sizeof(T) == 4 || sizeof(T) == 8);
    const auto bits = std::bit_cast<BitsOf<T>>(value);
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(out, &bits, sizeof bits);
    } else {
        for (std::size_t i = 0; i < sizeof(T); ++i)
            out[i] = static_cast<unsigned char>(bits >> (8 * i));
    }
    out += sizeof(T);
}

template <typename T>
T get(const unsigned char*& in)
{
    static_assert(sizeof(T) == 4 || sizeof(T) == 8);
    BitsOf<T> bits = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&bits, in, sizeof bits);
    } else {
        for (std::size_t i = 0; i < sizeof(T); ++i)
            bits |= BitsOf<T>(in[i]) << (8 * i);
    }
    in += sizeof(T);
    return std::bit_cast<T>(bits);
}

std::string number(double value)
{
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

std::string number(std::uint64_t value)
{
    return std::to_string(value);
}

bool isUtf8(const std::string& text)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder(QByteArrayView(text.data(), qsizetype(text.size())));
    return !decoder.hasError();
}

// The checks a file must pass to be read; the writer makes them too, so that
// every file written reads back. Each returns what is wrong, or nothing.

std::string finiteProblem(double value, const char* what)
{
    if (std::isfinite(value))
        return {};
    return std::string(what) + " is not a finite number (" + number(value) + ")";
}

std::string textProblem(const std::string& text, const char* what)
{
    if (text.size() > sMaxTextBytes)
        return std::string("the ") + what + " text is " + number(std::uint64_t(text.size())) + " bytes long, more than "
            + number(std::uint64_t(sMaxTextBytes));
    if (!isUtf8(text))
        return std::string("the ") + what + " text is not UTF-8";
    return {};
}

std::string headerProblem(const geo::XYZPoint& anchor, double frequency, std::uint32_t absTime)
{
    for (const std::string& problem :
         {finiteProblem(anchor.x, "the anchor's longitude"), finiteProblem(anchor.y, "the anchor's latitude"),
          finiteProblem(anchor.z, "the anchor's height"), finiteProblem(frequency, "the frequency")})
        if (!problem.empty())
            return problem;
    if (absTime % sSecondsPerWeek != 0)
        return "the absolute time " + number(std::uint64_t(absTime)) + " s is no whole number of GPS weeks (604800 s)";
    return {};
}

double lengthOf(const std::array<float, 4>& q)
{
    double squares = 0.0;
    for (float component : q)
        squares += double(component) * double(component);
    return std::sqrt(squares);
}

/// Whether a sample passes the checks; files hold many, so this is kept
/// cheap and the message is made apart, only for a sample that fails.
inline bool isValid(const EOP& sample, const EOP* previous)
{
    double squares = 0.0;
    for (float component : sample.q)
        squares += double(component) * double(component);
    // Within the tolerance of length 1, which also rules out NaN and infinity.
    constexpr double sMinSquares = (1.0 - sUnitTolerance) * (1.0 - sUnitTolerance);
    constexpr double sMaxSquares = (1.0 + sUnitTolerance) * (1.0 + sUnitTolerance);
    return squares >= sMinSquares && squares <= sMaxSquares && std::isfinite(sample.time) && std::isfinite(sample.x)
        && std::isfinite(sample.y) && std::isfinite(sample.z) && (!previous || sample.time > previous->time);
}

inline bool isValid(const EOPStdDevs& stdDevs)
{
    bool finite = true;
    for (double value : stdDevs)
        finite &= std::isfinite(value);
    return finite;
}

/// What is wrong with sample `index` (the one before it `previous`, if any).
std::string sampleProblem(const EOP& sample, std::size_t index, const EOP* previous)
{
    if (isValid(sample, previous))
        return {};
    const std::string where = "sample " + number(std::uint64_t(index)) + ": ";
    const double values[] = {sample.time, sample.x, sample.y, sample.z, sample.q[0], sample.q[1], sample.q[2],
                             sample.q[3]};
    const char* names[] = {"the time", "x", "y", "z", "q0", "q1", "q2", "q3"};
    for (std::size_t i = 0; i < std::size(values); ++i)
        if (std::string problem = finiteProblem(values[i], names[i]); !problem.empty())
            return where + problem;
    if (previous && !(sample.time > previous->time))
        return where + "its time " + number(sample.time) + " s does not come after the time before, "
            + number(previous->time) + " s";
    return where + "its attitude quaternion has the length " + number(lengthOf(sample.q)) + ", not 1";
}

std::string stdDevProblem(const EOPStdDevs& stdDevs, std::size_t index)
{
    static const char* const names[] = {"the x standard deviation",     "the y standard deviation",
                                        "the z standard deviation",     "the omega standard deviation",
                                        "the phi standard deviation",   "the kappa standard deviation"};
    for (std::size_t i = 0; i < stdDevs.size(); ++i)
        if (std::string problem = finiteProblem(stdDevs[i], names[i]); !problem.empty())
            return "sample " + number(std::uint64_t(index)) + ": " + problem;
    return {};
}

void encodeSample(unsigned char*& out, const EOP& sample)
{
    put(out, sample.time);
    put(out, sample.flags);
    for (float component : sample.q)
        put(out, component);
    put(out, sample.x);
    put(out, sample.y);
    put(out, sample.z);
}

EOP decodeSample(const unsigned char*& in)
{
    EOP sample;
    sample.time = get<double>(in);
    sample.flags = get<std::int32_t>(in);
    for (float& component : sample.q)
        component = get<float>(in);
    sample.x = get<double>(in);
    sample.y = get<double>(in);
    sample.z = get<double>(in);
    return sample;
}

/// Sequential reads of an open EOP file of `size` bytes, with the messages
/// of a file that ends too early.
class FileReader {
public:
    FileReader(QFile& file, const std::string& path, std::uint64_t size)
        : m_file(file)
        , m_path(path)
        , m_size(size)
    {
    }

    std::uint64_t offset() const { return m_offset; }
    std::uint64_t size() const { return m_size; }

    /// Throws when the header, which takes `headerBytes` at least, does not fit.
    void requireHeader(std::uint64_t headerBytes) const
    {
        if (headerBytes > m_size)
            invalid("EOP file is truncated: " + m_path + " (the header takes " + number(headerBytes)
                    + " bytes at least, the file has " + number(m_size) + ")");
    }

    void read(void* data, std::size_t bytes)
    {
        if (bytes == 0)
            return;
        const qint64 got = m_file.read(static_cast<char*>(data), qint64(bytes));
        if (got != qint64(bytes)) {
            const std::string reason = got < 0 ? m_file.errorString().toStdString() : "the file ended early";
            throw std::runtime_error("Failed to read EOP file: " + m_path + " (" + reason + ")");
        }
        m_offset += bytes;
    }

    [[noreturn]] void invalid(const std::string& message) const { throw util::InvalidFileError(m_path, message); }

    /// "Invalid EOP file: <path> (<problem>)" when there is a problem.
    void check(const std::string& problem) const
    {
        if (!problem.empty())
            invalid("Invalid EOP file: " + m_path + " (" + problem + ")");
    }

private:
    QFile& m_file;
    const std::string& m_path;
    std::uint64_t m_size;
    std::uint64_t m_offset = 0;
};

std::string readText(FileReader& reader, const char* what)
{
    unsigned char field[4];
    reader.requireHeader(reader.offset() + 4);
    reader.read(field, 4);
    const unsigned char* in = field;
    const std::uint32_t bytes = get<std::uint32_t>(in);
    if (bytes > sMaxTextBytes)
        reader.check(std::string("the ") + what + " text is " + number(std::uint64_t(bytes))
                     + " bytes long, more than " + number(std::uint64_t(sMaxTextBytes)));
    // The text, the remaining length fields and the sample count must fit.
    reader.requireHeader(reader.offset() + bytes + 4);
    std::string text(bytes, '\0');
    reader.read(text.data(), bytes);
    reader.check(textProblem(text, what));
    return text;
}

/// Where `time` lies among the samples' times, found by bisection.
enum class Place { Outside, OnSample, Between };

/// `k` is the sample at or before `time`; with Between, times[k] < time <
/// times[k + 1], so the step between them is positive even when a caller has
/// stored samples out of order.
template <typename Samples>
Place placeOf(const Samples& samples, double time, std::size_t& k)
{
    if (samples.empty() || !(time >= samples.front().time && time <= samples.back().time))
        return Place::Outside;
    std::size_t low = 0;
    std::size_t high = samples.size() - 1;
    if (time == samples[high].time) {
        k = high;
        return Place::OnSample;
    }
    // times[low] <= time < times[high]
    while (high - low > 1) {
        const std::size_t middle = low + (high - low) / 2;
        if (samples[middle].time <= time)
            low = middle;
        else
            high = middle;
    }
    k = low;
    return samples[low].time == time ? Place::OnSample : Place::Between;
}

/// Where `time` lies between `before` and `after` (0 to 1). The times are
/// halved first so that the differences cannot overflow whatever the times;
/// halving a double is exact, so for the times of any trajectory the result
/// is the plain (time - before) / (after - before).
double fractionBetween(double before, double after, double time)
{
    return (0.5 * time - 0.5 * before) / (0.5 * after - 0.5 * before);
}

/// Spherical linear interpolation from `a` to `b` at `fraction`, the shorter
/// way round, normalised.
std::array<float, 4> slerp(const std::array<float, 4>& a, const std::array<float, 4>& b, double fraction)
{
    double from[4];
    double to[4];
    double dot = 0.0;
    for (int i = 0; i < 4; ++i) {
        from[i] = a[std::size_t(i)];
        to[i] = b[std::size_t(i)];
        dot += from[i] * to[i];
    }
    // q and -q are the same rotation: take the one nearer to `from`.
    if (dot < 0.0) {
        for (double& component : to)
            component = -component;
        dot = -dot;
    }
    double weightFrom = 1.0 - fraction;
    double weightTo = fraction;
    // Below about 1.8 degrees between them the sine ratios lose precision;
    // normalised linear interpolation is as good there.
    if (dot < 0.9995) {
        const double angle = std::acos(dot);
        const double sine = std::sin(angle);
        weightFrom = std::sin((1.0 - fraction) * angle) / sine;
        weightTo = std::sin(fraction * angle) / sine;
    }
    double result[4];
    double squares = 0.0;
    for (int i = 0; i < 4; ++i) {
        result[i] = weightFrom * from[i] + weightTo * to[i];
        squares += result[i] * result[i];
    }
    const double scale = 1.0 / std::sqrt(squares);
    return {float(result[0] * scale), float(result[1] * scale), float(result[2] * scale), float(result[3] * scale)};
}

} // namespace

EOPData::EOPData(const std::string& fileName, bool load, bool withStdDevs)
    : m_fileName(fileName)
    , m_hasStdDevs(withStdDevs)
{
    if (load && !fileName.empty())
        read(fileName);
}

int EOPData::size() const
{
    return int(m_samples.size());
}

void EOPData::append(const EOP& sample, const EOPStdDevs& stdDevs)
{
    m_samples.push_back(sample);
    if (m_hasStdDevs)
        m_stdDevs.push_back(stdDevs);
}

void EOPData::reserve(int samples)
{
    if (samples <= 0)
        return;
    m_samples.reserve(std::size_t(samples));
    if (m_hasStdDevs)
        m_stdDevs.reserve(std::size_t(samples));
}

int EOPData::atIndex(int index, EOP& sample) const
{
    if (index < 0 || index >= size())
        return 1;
    sample = m_samples[std::size_t(index)];
    return 0;
}

int EOPData::atGPS(util::Seconds gpsTime, EOP& sample) const
{
    const double time = gpsTime.value();
    std::size_t k = 0;
    switch (placeOf(m_samples, time, k)) {
    case Place::Outside:
        return 1;
    case Place::OnSample:
        sample = m_samples[k];
        return 0;
    case Place::Between:
        break;
    }
    const EOP& before = m_samples[k];
    const EOP& after = m_samples[k + 1];
    const double fraction = fractionBetween(before.time, after.time, time);
    EOP result;
    result.time = time;
    result.flags = before.flags;
    result.x = before.x + fraction * (after.x - before.x);
    result.y = before.y + fraction * (after.y - before.y);
    result.z = before.z + fraction * (after.z - before.z);
    result.q = slerp(before.q, after.q, fraction);
    sample = result;
    return 0;
}

bool EOPData::setRecord(int index, const EOP& sample)
{
    if (index < 0 || index >= size())
        return false;
    m_samples[std::size_t(index)] = sample;
    return true;
}

bool EOPData::hasStdDevs() const
{
    return m_hasStdDevs;
}

int EOPData::stdDevAtIndex(int index, EOPStdDevs& stdDevs) const
{
    if (!m_hasStdDevs || index < 0 || index >= size())
        return 1;
    stdDevs = m_stdDevs[std::size_t(index)];
    return 0;
}

int EOPData::stdDevAtGPS(util::Seconds gpsTime, EOPStdDevs& stdDevs) const
{
    if (!m_hasStdDevs)
        return 1;
    const double time = gpsTime.value();
    std::size_t k = 0;
    switch (placeOf(m_samples, time, k)) {
    case Place::Outside:
        return 1;
    case Place::OnSample:
        stdDevs = m_stdDevs[k];
        return 0;
    case Place::Between:
        break;
    }
    const double fraction = fractionBetween(m_samples[k].time, m_samples[k + 1].time, time);
    const EOPStdDevs& before = m_stdDevs[k];
    const EOPStdDevs& after = m_stdDevs[k + 1];
    for (std::size_t i = 0; i < stdDevs.size(); ++i)
        stdDevs[i] = before[i] + fraction * (after[i] - before[i]);
    return 0;
}

bool EOPData::setStdDevs(int index, const EOPStdDevs& stdDevs)
{
    if (index < 0 || index >= size())
        return false;
    if (!m_hasStdDevs) {
        // From now on every sample has standard deviations; those not set are 0.
        m_stdDevs.assign(m_samples.size(), EOPStdDevs{});
        m_hasStdDevs = true;
    }
    m_stdDevs[std::size_t(index)] = stdDevs;
    return true;
}

void EOPData::setDefaultStdDevs(const EOPStdDevs& stdDevs)
{
    m_stdDevs.assign(m_samples.size(), stdDevs);
    m_hasStdDevs = true;
}

const geo::XYZPoint& EOPData::anchorPoint() const
{
    return m_anchor;
}

void EOPData::setAnchorPoint(const geo::XYZPoint& anchor)
{
    m_anchor = anchor;
}

double EOPData::frequency() const
{
    return m_frequency;
}

void EOPData::setFrequency(double frequency)
{
    m_frequency = frequency;
}

std::uint32_t EOPData::absTime() const
{
    return m_absTime;
}

void EOPData::setAbsTime(std::uint32_t absTime)
{
    m_absTime = absTime;
}

const std::string& EOPData::posSource() const
{
    return m_posSource;
}

const std::string& EOPData::tmSource() const
{
    return m_tmSource;
}

const std::string& EOPData::appSource() const
{
    return m_appSource;
}

void EOPData::setPosSource(const std::string& source)
{
    m_posSource = source;
}

void EOPData::setTmSource(const std::string& source)
{
    m_tmSource = source;
}

void EOPData::setAppSource(const std::string& source)
{
    m_appSource = source;
}

const std::string& EOPData::fileName() const
{
    return m_fileName;
}

void EOPData::setFileName(const std::string& fileName)
{
    m_fileName = fileName;
}

void EOPData::write(const std::string& fileName, int format)
{
    auto refuse = [&](const std::string& problem) {
        throw std::runtime_error("Can't write EOP file: " + fileName + " (" + problem + ")");
    };
    if (fileName.empty())
        throw std::runtime_error("Can't write EOP file: no file name given");
    if (format != 0)
        refuse("format " + std::to_string(format) + " is unknown; 0 is the only format");

    // Refuse what the reader would refuse before the file is touched.
    for (const std::string& problem : {textProblem(m_posSource, "position source"),
                                       textProblem(m_tmSource, "time source"),
                                       textProblem(m_appSource, "application source"),
                                       headerProblem(m_anchor, m_frequency, m_absTime)})
        if (!problem.empty())
            refuse(problem);
    for (std::size_t i = 0; i < m_samples.size(); ++i) {
        if (std::string problem = sampleProblem(m_samples[i], i, i > 0 ? &m_samples[i - 1] : nullptr);
            !problem.empty())
            refuse(problem);
        if (m_hasStdDevs)
            if (std::string problem = stdDevProblem(m_stdDevs[i], i); !problem.empty())
                refuse(problem);
    }

    std::vector<unsigned char> buffer(
        std::max(sFixedHeaderBytes + 3 * (4 + std::size_t(sMaxTextBytes)) + 8, sBlockSamples * sSampleBytes));
    unsigned char* out = buffer.data();
    std::memcpy(out, sSignature, sizeof sSignature);
    out += sizeof sSignature;
    put(out, sVersion);
    put(out, m_absTime);
    put(out, m_anchor.x);
    put(out, m_anchor.y);
    put(out, m_anchor.z);
    put(out, m_frequency);
    put(out, std::uint32_t(m_hasStdDevs ? 1 : 0));
    for (const std::string* text : {&m_posSource, &m_tmSource, &m_appSource}) {
        put(out, std::uint32_t(text->size()));
        std::memcpy(out, text->data(), text->size());
        out += text->size();
    }
    put(out, std::uint64_t(m_samples.size()));

    util::AtomicFile file(fileName, "EOP file");
    file.open();
    file.write(buffer.data(), std::size_t(out - buffer.data()));
    for (std::size_t first = 0; first < m_samples.size(); first += sBlockSamples) {
        const std::size_t end = std::min(m_samples.size(), first + sBlockSamples);
        out = buffer.data();
        for (std::size_t i = first; i < end; ++i)
            encodeSample(out, m_samples[i]);
        file.write(buffer.data(), std::size_t(out - buffer.data()));
    }
    if (m_hasStdDevs) {
        for (std::size_t first = 0; first < m_stdDevs.size(); first += sBlockSamples) {
            const std::size_t end = std::min(m_stdDevs.size(), first + sBlockSamples);
            out = buffer.data();
            for (std::size_t i = first; i < end; ++i)
                for (double value : m_stdDevs[i])
                    put(out, value);
            file.write(buffer.data(), std::size_t(out - buffer.data()));
        }
    }
    file.commit();
    m_fileName = fileName;
}

void EOPData::read(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        throw std::runtime_error("Can't open EOP file: " + path + " (" + reason + ")");
    FileReader reader(file, path, std::uint64_t(file.size()));
    if (reader.size() == 0)
        reader.invalid("EOP file is empty: " + path);

    // Signature and version first, so that a file of another kind or of a
    // later version says so whatever its length.
    unsigned char fixed[sFixedHeaderBytes];
    const std::size_t head = std::size_t(std::min<std::uint64_t>(reader.size(), sizeof sSignature + 4));
    reader.read(fixed, head);
    if (std::memcmp(fixed, sSignature, std::min(head, sizeof sSignature)) != 0)
        reader.invalid("Not an EOP file (no EOPDATA signature): " + path);
    reader.requireHeader(sizeof sSignature + 4);
    const unsigned char* in = fixed + sizeof sSignature;
    const std::uint32_t version = get<std::uint32_t>(in);
    if (version != sVersion)
        reader.invalid("Unsupported EOP file: " + path + " (version " + number(std::uint64_t(version))
                       + ", this program reads version " + number(std::uint64_t(sVersion)) + ")");
    reader.requireHeader(sFixedHeaderBytes + 4);
    reader.read(fixed + head, sFixedHeaderBytes - head);

    const std::uint32_t absTime = get<std::uint32_t>(in);
    geo::XYZPoint anchor;
    anchor.x = get<double>(in);
    anchor.y = get<double>(in);
    anchor.z = get<double>(in);
    const double frequency = get<double>(in);
    const std::uint32_t stdDevFlag = get<std::uint32_t>(in);
    reader.check(headerProblem(anchor, frequency, absTime));
    if (stdDevFlag > 1)
        reader.check("the standard-deviation flag is " + number(std::uint64_t(stdDevFlag)) + ", not 0 or 1");
    const bool hasStdDevs = stdDevFlag == 1;

    std::string posSource = readText(reader, "position source");
    std::string tmSource = readText(reader, "time source");
    std::string appSource = readText(reader, "application source");
    unsigned char countField[8];
    reader.requireHeader(reader.offset() + 8);
    reader.read(countField, 8);
    in = countField;
    const std::uint64_t count = get<std::uint64_t>(in);

    // The count must account for the rest of the file exactly; compared
    // without overflow, as it may be anything in a broken file.
    const std::uint64_t headerBytes = reader.offset();
    const std::uint64_t recordBytes = sSampleBytes + (hasStdDevs ? sStdDevBytes : 0);
    const std::uint64_t available = reader.size() - headerBytes;
    if (count > available / recordBytes || available != count * recordBytes) {
        const std::string detail = " (" + number(count) + " samples" + (hasStdDevs ? " with standard deviations" : "")
            + " need " + number(headerBytes) + " + " + number(recordBytes) + " x " + number(count)
            + " bytes, the file has " + number(reader.size()) + ")";
        if (count > available / recordBytes)
            reader.invalid("EOP file is truncated: " + path + detail);
        reader.invalid("EOP file is longer than its samples: " + path + detail);
    }
    if (count > std::uint64_t(std::numeric_limits<int>::max()))
        reader.check(number(count) + " samples are more than a container holds ("
                     + number(std::uint64_t(std::numeric_limits<int>::max())) + ")");

    Samples samples(static_cast<std::size_t>(count));
    std::vector<unsigned char> buffer(std::size_t(std::min<std::uint64_t>(count, sBlockSamples)) * sSampleBytes);
    for (std::size_t first = 0; first < samples.size(); first += sBlockSamples) {
        const std::size_t end = std::min(samples.size(), first + sBlockSamples);
        reader.read(buffer.data(), (end - first) * sSampleBytes);
        in = buffer.data();
        for (std::size_t i = first; i < end; ++i) {
            samples[i] = decodeSample(in);
            const EOP* previous = i > 0 ? &samples[i - 1] : nullptr;
            if (!isValid(samples[i], previous))
                reader.check(sampleProblem(samples[i], i, previous));
        }
    }
    StdDevs stdDevs;
    if (hasStdDevs) {
        stdDevs.resize(samples.size());
        buffer.resize(std::size_t(std::min<std::uint64_t>(count, sBlockSamples)) * sStdDevBytes);
        for (std::size_t first = 0; first < stdDevs.size(); first += sBlockSamples) {
            const std::size_t end = std::min(stdDevs.size(), first + sBlockSamples);
            reader.read(buffer.data(), (end - first) * sStdDevBytes);
            in = buffer.data();
            for (std::size_t i = first; i < end; ++i) {
                for (double& value : stdDevs[i])
                    value = get<double>(in);
                if (!isValid(stdDevs[i]))
                    reader.check(stdDevProblem(stdDevs[i], i));
            }
        }
    }

    m_anchor = anchor;
    m_frequency = frequency;
    m_absTime = absTime;
    m_posSource = std::move(posSource);
    m_tmSource = std::move(tmSource);
    m_appSource = std::move(appSource);
    m_hasStdDevs = hasStdDevs;
    m_samples = std::move(samples);
    m_stdDevs = std::move(stdDevs);
    m_fileName = path;
}

} // namespace sensor
