#include <datamodel/trajectory/EoqFile.h>

#include <platform/util/AtomicFile.h>
#include <platform/util/ErrorText.h>
#include <platform/util/InvalidFileError.h>
#include <platform/util/RegularFile.h>

#include <QFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <exception>
#include <limits>
#include <stdexcept>

namespace datamodel {

namespace {

// The file is little-endian whatever the host; each field is encoded on its
// own, so the layout does not depend on struct packing.
constexpr char sSignature[4] = {'E', 'O', 'Q', '_'};
/// Records decoded or encoded per block: 96 KiB of buffer.
constexpr std::size_t sBlockRecords = 4096;
/// Longest text of a number: fixed notation of the largest double.
constexpr std::size_t sMaxNumberChars = 330;

template <typename T>
using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;

template <typename T>
void put(char*& out, T value)
{
    static_assert(sizeof(T) == 4 || sizeof(T) == 8);
    const auto bits = std::bit_cast<BitsOf<T>>(value);
    for (std::size_t i = 0; i < sizeof(T); ++i)
        out[i] = char((bits >> (8 * i)) & 0xFFu);
    out += sizeof(T);
}

template <typename T>
T get(const char*& in)
{
    static_assert(sizeof(T) == 4 || sizeof(T) == 8);
    BitsOf<T> bits = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bits |= BitsOf<T>(static_cast<unsigned char>(in[i])) << (8 * i);
    in += sizeof(T);
    return std::bit_cast<T>(bits);
}

QString number(double value)
{
    return QString::number(value, 'g', 6);
}

[[noreturn]] void invalid(const std::string& path, const std::string& message)
{
    throw util::InvalidFileError(path, message);
}

[[noreturn]] void invalidContent(const std::string& path, const std::string& problem)
{
    invalid(path, "Invalid EOQ file: " + path + " (" + problem + ")");
}

/// An attribute as a float: `defaultValue` when absent; NaN and infinities
/// as written; finite values beyond the float range as infinite.
float floatAttribute(const QXmlStreamAttributes& attributes, const char* element, const char* name,
                     float defaultValue, const std::string& path)
{
    const QString key = QString::fromLatin1(name);
    if (!attributes.hasAttribute(key))
        return defaultValue;
    const QString text = attributes.value(key).toString();
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok)
        invalidContent(path, std::string("the ") + name + " of " + element + " is \"" + util::excerpt(text)
                                 + "\", not a number");
    if (std::isfinite(value) && std::abs(value) > double(std::numeric_limits<float>::max()))
        return std::signbit(value) ? -std::numeric_limits<float>::infinity() : std::numeric_limits<float>::infinity();
    return float(value);
}

/// The parameter block's content, read in one pass over the XML.
struct Parameters {
    double version = 0.0;
    std::int32_t numSets = 0;
    EoqFile::Statistics statistics;
};

Parameters parseParameterBlock(const QByteArray& block, const std::string& path)
{
    // The text ends at the first zero byte: the block's terminator.
    const qsizetype end = block.indexOf('\0');
    QXmlStreamReader xml(end < 0 ? block : block.left(end));
    Parameters parameters;
    const auto parseError = [&xml, &path](const QString& message) {
        invalid(path, "Error reading EOQ parameter block: " + message.toStdString() + " (line "
                          + std::to_string(xml.lineNumber()) + ", column " + std::to_string(xml.columnNumber())
                          + ")");
    };
    if (!xml.readNextStartElement())
        parseError(xml.hasError() ? xml.errorString() : QStringLiteral("no root element"));
    if (xml.name() != QLatin1String("EOQ"))
        parseError(QStringLiteral("the root element is <%1>, not <EOQ>")
                       .arg(QString::fromStdString(util::excerpt(xml.name().toString()))));
    const QXmlStreamAttributes root = xml.attributes();
    // A missing version reads as "0.0", one that is no number as NaN:
    // either is a mismatch.
    if (root.hasAttribute(QStringLiteral("version"))) {
        bool ok = false;
        const double version = root.value(QStringLiteral("version")).toString().toDouble(&ok);
        parameters.version = ok ? version : std::numeric_limits<double>::quiet_NaN();
    }
    if (root.hasAttribute(QStringLiteral("numSets"))) {
        const QString text = root.value(QStringLiteral("numSets")).toString();
        bool ok = false;
        const double count = text.toDouble(&ok);
        if (!ok || !(count >= 0.0) || count > double(std::numeric_limits<std::int32_t>::max())
            || count != std::floor(count))
            invalidContent(path, "numSets is \"" + util::excerpt(text) + "\", not a count of records");
        parameters.numSets = std::int32_t(count);
    }
    EoqFile::Statistics& statistics = parameters.statistics;
    while (xml.readNextStartElement()) {
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.name() == QLatin1String("NCS")) {
            statistics.minNcs = floatAttribute(attributes, "NCS", "min", 1.0f, path);
            statistics.maxNcs = floatAttribute(attributes, "NCS", "max", 1.0f, path);
            statistics.rmsNcs = floatAttribute(attributes, "NCS", "rms", 0.0f, path);
        } else if (xml.name() == QLatin1String("RPE")) {
            statistics.minRpe = floatAttribute(attributes, "RPE", "min", 0.0f, path);
            statistics.maxRpe = floatAttribute(attributes, "RPE", "max", 0.0f, path);
            statistics.rmsRpe = floatAttribute(attributes, "RPE", "rms", 0.0f, path);
        } else if (xml.name() == QLatin1String("PSR")) {
            statistics.maxPsr = floatAttribute(attributes, "PSR", "max", 0.0f, path);
            statistics.rmsPsr = floatAttribute(attributes, "PSR", "rms", 0.0f, path);
        }
        // "Source" and unknown elements: nothing to take, their content skipped.
        xml.skipCurrentElement();
    }
    // The rest must be well-formed too.
    while (!xml.atEnd() && !xml.hasError())
        xml.readNext();
    if (xml.hasError())
        parseError(xml.errorString());
    if (parameters.version != double(EoqFile::sVersion))
        throw util::InvalidFileError(path, "EOQ version mismatch!");
    return parameters;
}

/// Reads `bytes` or throws `shortRead`.
void readExactly(QFile& file, char* data, qint64 bytes, const std::string& shortRead, const std::string& path)
{
    if (bytes > 0 && file.read(data, bytes) != bytes)
        invalid(path, shortRead);
}

EoqFile::Header readHeaderFrom(QFile& file, const std::string& path)
{
    const std::uint64_t size = std::uint64_t(file.size());
    const auto truncated = [&](std::uint64_t needed) {
        return "Invalid EOQ file: " + path + " (the header takes " + std::to_string(needed)
            + " bytes at least, the file has " + std::to_string(size) + ")";
    };
    // Sizes are compared before anything is read or allocated.
    char fixed[EoqFile::sFixedHeaderBytes];
    if (size < sizeof sSignature || file.read(fixed, sizeof sSignature) != qint64(sizeof sSignature)
        || std::memcmp(fixed, sSignature, sizeof sSignature) != 0)
        invalid(path, "No EOQ file!");
    // The version first, so that another version says so whatever follows.
    if (size < 8)
        invalid(path, truncated(8));
    readExactly(file, fixed + 4, 4, truncated(8), path);
    const char* in = fixed + 4;
    const std::int32_t version = get<std::int32_t>(in);
    if (version == 1 || version == 2)
        invalid(path, "EOQ versions 1 and 2 are unsupported.");
    if (version != EoqFile::sVersion)
        invalid(path, "Unknown EOQ file version.");
    if (size < EoqFile::sFixedHeaderBytes)
        invalid(path, truncated(EoqFile::sFixedHeaderBytes));
    readExactly(file, fixed + 8, 8, truncated(EoqFile::sFixedHeaderBytes), path);
    EoqFile::Header header;
    header.reserved = get<std::int32_t>(in);
    const std::uint32_t blockBytes = get<std::uint32_t>(in);
    if (blockBytes > size - EoqFile::sFixedHeaderBytes)
        invalidContent(path, "the parameter block of " + std::to_string(blockBytes) + " bytes does not fit into the "
                                 + std::to_string(size) + " bytes of the file");
    if (blockBytes > EoqFile::sMaxParameterBlockBytes)
        invalidContent(path, "the parameter block is " + std::to_string(blockBytes) + " bytes long, more than "
                                 + std::to_string(EoqFile::sMaxParameterBlockBytes));
    QByteArray block(qsizetype(blockBytes), '\0');
    readExactly(file, block.data(), qint64(blockBytes), truncated(EoqFile::sFixedHeaderBytes + blockBytes), path);
    const Parameters parameters = parseParameterBlock(block, path);
    header.numSets = parameters.numSets;
    header.statistics = parameters.statistics;
    return header;
}

void openForReading(QFile& file, const std::string& path)
{
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Failed to open EOQ file: " + path, reason);
}

/// Six decimals in fixed notation, whatever the locale.
char* putFixed(char* out, double value)
{
    const auto result = std::to_chars(out, out + sMaxNumberChars, value, std::chars_format::fixed, 6);
    return result.ptr;
}

/// Writes through `file`, turning a failure into `message` with the
/// system's reason nested.
template <typename F>
void writeStep(F&& step, const std::string& message)
{
    try {
        step();
    } catch (const util::FileWriteError&) {
        std::throw_with_nested(std::runtime_error(message));
    }
}

} // namespace

EoqFile::Statistics EoqFile::Statistics::of(const std::vector<Record>& records)
{
    Statistics statistics;
    if (records.empty())
        return statistics;
    const Record& first = records.front();
    statistics.minNcs = statistics.maxNcs = first.ncs;
    statistics.minRpe = statistics.maxRpe = first.rpe;
    statistics.maxPsr = first.psr;
    float sumNcs = 0.0f, sumRpe = 0.0f, sumPsr = 0.0f;
    for (const Record& record : records) {
        statistics.minNcs = record.ncs < statistics.minNcs ? record.ncs : statistics.minNcs;
        statistics.maxNcs = record.ncs > statistics.maxNcs ? record.ncs : statistics.maxNcs;
        statistics.minRpe = record.rpe < statistics.minRpe ? record.rpe : statistics.minRpe;
        statistics.maxRpe = record.rpe > statistics.maxRpe ? record.rpe : statistics.maxRpe;
        statistics.maxPsr = record.psr > statistics.maxPsr ? record.psr : statistics.maxPsr;
        const float ncsOff = record.ncs - 1.0f;
        sumNcs += ncsOff * ncsOff;
        sumRpe += record.rpe * record.rpe;
        sumPsr += record.psr * record.psr;
    }
    const float n = float(records.size());
    statistics.rmsNcs = std::sqrt(sumNcs / n);
    statistics.rmsRpe = std::sqrt(sumRpe / n);
    statistics.rmsPsr = std::sqrt(sumPsr / n);
    return statistics;
}

EoqFile::Header EoqFile::readHeader(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    openForReading(file, path);
    return readHeaderFrom(file, path);
}

std::vector<EoqFile::Record> EoqFile::read(const std::string& path, Header& header)
{
    QFile file(QString::fromStdString(path));
    openForReading(file, path);
    const Header read = readHeaderFrom(file, path);
    const std::string mismatch = "Header/data mismatch in EOQ file: " + path;
    // Checked before anything is allocated: the count may be anything.
    const std::uint64_t available = std::uint64_t(file.size()) - std::uint64_t(file.pos());
    const std::size_t count = std::size_t(read.numSets);
    if (count > available / sRecordBytes)
        invalid(path, mismatch);
    std::vector<Record> records(count);
    std::vector<char> buffer(std::min(count, sBlockRecords) * sRecordBytes);
    for (std::size_t first = 0; first < count; first += sBlockRecords) {
        const std::size_t end = std::min(count, first + sBlockRecords);
        readExactly(file, buffer.data(), qint64((end - first) * sRecordBytes), mismatch, path);
        const char* in = buffer.data();
        for (std::size_t i = first; i < end; ++i) {
            records[i].time = get<double>(in);
            records[i].ncs = get<float>(in);
            records[i].rpe = get<float>(in);
            records[i].psr = get<float>(in);
            in += 4; // padding
        }
    }
    header = read;
    return records;
}

QByteArray EoqFile::parameterBlock(const Statistics& statistics, std::int32_t numSets)
{
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(1);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("EOQ"));
    xml.writeAttribute(QStringLiteral("version"), QString::number(sVersion));
    xml.writeAttribute(QStringLiteral("numSets"), QString::number(numSets));
    xml.writeEmptyElement(QStringLiteral("Source"));
    xml.writeAttribute(QStringLiteral("name"), QStringLiteral("EopTrajectory"));
    xml.writeEmptyElement(QStringLiteral("NCS"));
    xml.writeAttribute(QStringLiteral("min"), number(statistics.minNcs));
    xml.writeAttribute(QStringLiteral("max"), number(statistics.maxNcs));
    xml.writeAttribute(QStringLiteral("rms"), number(statistics.rmsNcs));
    xml.writeEmptyElement(QStringLiteral("RPE"));
    xml.writeAttribute(QStringLiteral("min"), number(statistics.minRpe));
    xml.writeAttribute(QStringLiteral("max"), number(statistics.maxRpe));
    xml.writeAttribute(QStringLiteral("rms"), number(statistics.rmsRpe));
    xml.writeEmptyElement(QStringLiteral("PSR"));
    xml.writeAttribute(QStringLiteral("max"), number(statistics.maxPsr));
    xml.writeAttribute(QStringLiteral("rms"), number(statistics.rmsPsr));
    xml.writeEndElement();
    xml.writeEndDocument();
    if (xml.hasError())
        throw std::runtime_error("Error writing EOQ header");
    return text;
}

void EoqFile::write(const std::string& path, const Statistics& statistics, const std::vector<Record>& records)
{
    const std::string failure = "Failed to write EOQ file: " + path;
    if (records.size() > std::size_t(std::numeric_limits<std::int32_t>::max()))
        throw std::runtime_error(failure + " (" + std::to_string(records.size())
                                 + " records are more than the file can announce)");
    QByteArray header(qsizetype(sFixedHeaderBytes), '\0');
    header.append(parameterBlock(statistics, std::int32_t(records.size())));
    header.append('\0');
    char* out = header.data();
    std::memcpy(out, sSignature, sizeof sSignature);
    out += sizeof sSignature;
    put(out, sVersion);
    put(out, std::int32_t(0));
    put(out, std::uint32_t(std::size_t(header.size()) - sFixedHeaderBytes));

    util::AtomicFile file(path, "EOQ file");
    writeStep([&] { file.open(); }, failure);
    writeStep([&] { file.write(header.constData(), std::size_t(header.size())); }, "Error writing EOQ header");
    writeStep(
        [&] {
            std::vector<char> buffer(std::min(records.size(), sBlockRecords) * sRecordBytes);
            for (std::size_t first = 0; first < records.size(); first += sBlockRecords) {
                const std::size_t end = std::min(records.size(), first + sBlockRecords);
                char* next = buffer.data();
                for (std::size_t i = first; i < end; ++i) {
                    put(next, records[i].time);
                    put(next, records[i].ncs);
                    put(next, records[i].rpe);
                    put(next, records[i].psr);
                    put(next, std::int32_t(0));
                }
                file.write(buffer.data(), std::size_t(next - buffer.data()));
            }
            file.commit();
        },
        failure);
}

void EoqFile::writeAscii(const std::string& path, const std::vector<Record>& records)
{
    const std::string failure = "Failed to write EOQ ASCII file: " + path;
    util::AtomicFile file(path, "EOQ ASCII file");
    writeStep(
        [&] {
            file.open();
            constexpr std::size_t sLineChars = 4 * (sMaxNumberChars + 1);
            std::vector<char> buffer(std::min(records.size(), sBlockRecords) * sLineChars);
            for (std::size_t first = 0; first < records.size(); first += sBlockRecords) {
                const std::size_t end = std::min(records.size(), first + sBlockRecords);
                char* out = buffer.data();
                for (std::size_t i = first; i < end; ++i) {
                    out = putFixed(out, records[i].time);
                    *out++ = ' ';
                    out = putFixed(out, records[i].ncs);
                    *out++ = ' ';
                    out = putFixed(out, records[i].rpe);
                    *out++ = ' ';
                    out = putFixed(out, records[i].psr);
                    *out++ = '\n';
                }
                file.write(buffer.data(), std::size_t(out - buffer.data()));
            }
            file.commit();
        },
        failure);
}

} // namespace datamodel
