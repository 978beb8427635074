#include "Mutation.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace robustness {

namespace {

using Kind = Mutation::Kind;

/// Nesting of the deep XML mutation and size of the huge text.
constexpr int sDeepLevels = 100000;
constexpr qsizetype sHugeTextBytes = 4 << 20;
/// Size of the sparse file: past 2 GiB, where 32-bit sizes and offsets end.
constexpr qint64 sSparseBytes = 3LL << 30;

[[noreturn]] void fail(const QString& path, const QString& what)
{
    throw std::runtime_error((what + QStringLiteral(": ") + path).toStdString());
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(path, QStringLiteral("cannot read"));
    return file.readAll();
}

/// Replaces the file (a new file, never a write into the old one, which
/// may be shared with the flight the case was copied from).
void replace(const QString& path, const QByteArray& bytes)
{
    QFile::remove(path);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        fail(path, QStringLiteral("cannot write"));
}

QByteArray randomBytes(qsizetype size, std::mt19937_64& random)
{
    QByteArray bytes(size, '\0');
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = char(random() & 0xFF);
    return bytes;
}

template <typename T>
void put(QByteArray& bytes, qsizetype offset, T value)
{
    if (offset >= 0 && offset + qsizetype(sizeof value) <= bytes.size())
        std::memcpy(bytes.data() + offset, &value, sizeof value);
}

template <typename T>
T get(const QByteArray& bytes, qsizetype offset)
{
    T value{};
    if (offset >= 0 && offset + qsizetype(sizeof value) <= bytes.size())
        std::memcpy(&value, bytes.constData() + offset, sizeof value);
    return value;
}

/// Replaces every number that is the whole text of an element.
bool replaceNumbers(QByteArray& bytes, const QString& replacement, bool negate)
{
    static const QRegularExpression number(QStringLiteral(">(\\s*)(-?[0-9]+(\\.[0-9]+)?([eE][-+]?[0-9]+)?)(\\s*)<"));
    QString text = QString::fromUtf8(bytes);
    QString out;
    qsizetype last = 0;
    bool changed = false;
    for (auto it = number.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        QString value = replacement;
        if (negate) {
            value = m.captured(2);
            value = value.startsWith(QLatin1Char('-')) ? value.mid(1) : QStringLiteral("-") + value;
            if (value == QLatin1String("-0"))
                value = QStringLiteral("-1");
        }
        out += QStringView(text).mid(last, m.capturedStart(2) - last);
        out += value;
        last = m.capturedEnd(2);
        changed = true;
    }
    out += QStringView(text).mid(last);
    bytes = out.toUtf8();
    return changed;
}

/// The position just after the root element's start tag; -1 when there is none.
qsizetype afterRootStartTag(const QByteArray& bytes)
{
    qsizetype at = 0;
    while ((at = bytes.indexOf('<', at)) >= 0) {
        if (at + 1 < bytes.size() && bytes[at + 1] != '?' && bytes[at + 1] != '!') {
            const qsizetype end = bytes.indexOf('>', at);
            return end < 0 ? -1 : end + 1;
        }
        ++at;
    }
    return -1;
}

Mutation::Verdict must(const char* why)
{
    return {true, QString::fromLatin1(why)};
}

Mutation::Verdict may(const char* why)
{
    return {false, QString::fromLatin1(why)};
}

} // namespace

const std::vector<Mutation>& Mutation::all()
{
    static const std::vector<Mutation> list = [] {
        std::vector<Mutation> mutations;
        for (int k = int(Kind::Empty); k <= int(Kind::Unreadable); ++k)
            mutations.push_back(Mutation(Kind(k)));
        return mutations;
    }();
    return list;
}

QString Mutation::name() const
{
    switch (m_kind) {
    case Kind::Empty: return QStringLiteral("empty");
    case Kind::CutMidRecord: return QStringLiteral("cut-in-half");
    case Kind::OneByteShort: return QStringLiteral("one-byte-short");
    case Kind::FlipRandomBit: return QStringLiteral("flip-random-bit");
    case Kind::FlipFirstNumber: return QStringLiteral("flip-first-number");
    case Kind::Garbage: return QStringLiteral("garbage");
    case Kind::NotANumber: return QStringLiteral("nan");
    case Kind::Negative: return QStringLiteral("negative");
    case Kind::Huge: return QStringLiteral("huge");
    case Kind::TextForBinary: return QStringLiteral("text");
    case Kind::BinaryForText: return QStringLiteral("binary");
    case Kind::NumbersNotANumber: return QStringLiteral("numbers-nan");
    case Kind::NumbersHuge: return QStringLiteral("numbers-huge");
    case Kind::NumbersNegative: return QStringLiteral("numbers-negative");
    case Kind::DeepNesting: return QStringLiteral("deep-nesting");
    case Kind::HugeText: return QStringLiteral("huge-text");
    case Kind::Fifo: return QStringLiteral("fifo");
    case Kind::DanglingLink: return QStringLiteral("dangling-link");
    case Kind::Folder: return QStringLiteral("folder");
    case Kind::Sparse: return QStringLiteral("sparse-3gib");
    case Kind::Unreadable: return QStringLiteral("unreadable");
    }
    return QStringLiteral("unknown");
}

bool Mutation::appliesTo(const FileType& type) const
{
    const bool binary = type.format == FileType::Format::Binary;
    switch (m_kind) {
    case Kind::FlipFirstNumber:
    case Kind::Negative:
    case Kind::Huge:
    case Kind::TextForBinary:
        return binary;
    case Kind::NotANumber:
        return binary && type.number == FileType::Number::Double;
    case Kind::BinaryForText:
    case Kind::NumbersNotANumber:
    case Kind::NumbersHuge:
    case Kind::NumbersNegative:
    case Kind::DeepNesting:
    case Kind::HugeText:
        return !binary;
    default:
        return true;
    }
}

bool Mutation::possible(QString* reason) const
{
    if (m_kind == Kind::Unreadable && ::geteuid() == 0) {
        if (reason)
            *reason = QStringLiteral("running as root, who reads any file whatever its permissions");
        return false;
    }
    return true;
}

bool Mutation::apply(const QString& path, const FileType& type, std::mt19937_64& random) const
{
    const bool binary = type.format == FileType::Format::Binary;
    switch (m_kind) {
    case Kind::Empty:
        replace(path, {});
        return true;
    case Kind::CutMidRecord: {
        QByteArray bytes = readAll(path);
        qsizetype size = bytes.size() / 2;
        if (binary) {
            // Half way, then half a record on from a record's start.
            const qsizetype records = (bytes.size() - type.headerBytes) / type.recordBytes / 2;
            size = type.headerBytes + records * type.recordBytes + type.recordBytes / 2;
        }
        replace(path, bytes.left(size));
        return true;
    }
    case Kind::OneByteShort: {
        QByteArray bytes = readAll(path);
        if (!binary)
            bytes = bytes.trimmed(); // the last byte that counts: the root's closing '>'
        bytes.chop(1);
        replace(path, bytes);
        return true;
    }
    case Kind::FlipRandomBit: {
        QByteArray bytes = readAll(path);
        if (bytes.isEmpty())
            return false;
        const qsizetype at = qsizetype(random() % std::uint64_t(bytes.size()));
        bytes[at] = char(bytes[at] ^ (1 << (random() % 8)));
        replace(path, bytes);
        return true;
    }
    case Kind::FlipFirstNumber: {
        QByteArray bytes = readAll(path);
        const int at = type.numberOffsets.front();
        // The top exponent bit of a double (2^1024 times larger or smaller),
        // the sign bit of an integer.
        const int byte = type.number == FileType::Number::Double ? at + 7 : at + 3;
        if (byte >= bytes.size())
            return false;
        bytes[byte] = char(bytes[byte] ^ (type.number == FileType::Number::Double ? 0x40 : 0x80));
        replace(path, bytes);
        return true;
    }
    case Kind::Garbage:
        replace(path, randomBytes(QFileInfo(path).size(), random));
        return true;
    case Kind::NotANumber:
    case Kind::Negative:
    case Kind::Huge: {
        QByteArray bytes = readAll(path);
        for (const int at : type.numberOffsets) {
            if (type.number == FileType::Number::Double) {
                const double value = get<double>(bytes, at);
                if (m_kind == Kind::NotANumber)
                    put(bytes, at, std::numeric_limits<double>::quiet_NaN());
                else if (m_kind == Kind::Huge)
                    put(bytes, at, 1.0e300);
                else
                    put(bytes, at, value == 0.0 ? -1.0 : -value);
            } else {
                const std::int32_t value = get<std::int32_t>(bytes, at);
                put(bytes, at, m_kind == Kind::Huge ? std::int32_t(INT32_MAX) : std::int32_t(value == 0 ? -1 : -value));
            }
            if (m_kind == Kind::Negative)
                break; // the first number only: a time, a camera time, an integration time
        }
        replace(path, bytes);
        return true;
    }
    case Kind::TextForBinary: {
        // Numbers as text: read as doubles, digits make tiny positive values
        // that pass range checks one by one.
        const qint64 size = QFileInfo(path).size();
        QByteArray text;
        for (int line = 0; text.size() < size; ++line)
            text += QByteArray::number(376337.125 + 0.005 * line, 'f', 3) + " 0.8392115 0.2007001 2000.25 -0.0123 0.0345\n";
        replace(path, text.left(size));
        return true;
    }
    case Kind::BinaryForText: {
        // Binary records of another kind: GPS times and camera times.
        const qint64 size = QFileInfo(path).size();
        QByteArray bytes(size, '\0');
        for (qsizetype at = 0; at + 16 <= bytes.size(); at += 16) {
            put(bytes, at, 376337.0 + double(at / 16));
            put(bytes, at + 8, 3600.0 + double(at / 16) * 1.0000125);
        }
        replace(path, bytes);
        return true;
    }
    case Kind::NumbersNotANumber:
    case Kind::NumbersHuge:
    case Kind::NumbersNegative: {
        QByteArray bytes = readAll(path);
        const QString value = m_kind == Kind::NumbersNotANumber ? QStringLiteral("nan") : QStringLiteral("1e308");
        if (!replaceNumbers(bytes, value, m_kind == Kind::NumbersNegative))
            return false;
        replace(path, bytes);
        return true;
    }
    case Kind::DeepNesting: {
        // Inside the root element, before what the file holds.
        QByteArray bytes = readAll(path);
        const qsizetype at = afterRootStartTag(bytes);
        if (at < 0)
            return false;
        bytes.insert(at, QByteArray("</d>").repeated(sDeepLevels));
        bytes.insert(at, QByteArray("<d>").repeated(sDeepLevels));
        replace(path, bytes);
        return true;
    }
    case Kind::HugeText: {
        // The text of the first element that has one.
        QByteArray bytes = readAll(path);
        static const QRegularExpression text(QStringLiteral(">([^<\\s][^<]*)<"));
        const QString content = QString::fromUtf8(bytes);
        const QRegularExpressionMatch m = text.match(content);
        if (!m.hasMatch())
            return false;
        const QString out = content.left(m.capturedStart(1)) + QString(sHugeTextBytes, QLatin1Char('x'))
            + content.mid(m.capturedEnd(1));
        replace(path, out.toUtf8());
        return true;
    }
    case Kind::Fifo:
        QFile::remove(path);
        if (::mkfifo(QFile::encodeName(path).constData(), 0644) != 0)
            fail(path, QStringLiteral("cannot make a FIFO"));
        return true;
    case Kind::DanglingLink:
        QFile::remove(path);
        if (!QFile::link(path + QStringLiteral(".gone"), path))
            fail(path, QStringLiteral("cannot make a symbolic link"));
        return true;
    case Kind::Folder:
        QFile::remove(path);
        if (!QDir().mkpath(path) || !QDir(path).mkpath(QStringLiteral("inside")))
            fail(path, QStringLiteral("cannot make a folder"));
        return true;
    case Kind::Sparse: {
        // Extended with a hole: no disk is used. The file is new (copied),
        // so the flight it came from keeps its size.
        const QByteArray bytes = readAll(path);
        replace(path, bytes);
        QFile file(path);
        if (!file.resize(sSparseBytes))
            fail(path, QStringLiteral("cannot extend"));
        return true;
    }
    case Kind::Unreadable:
        if (::chmod(QFile::encodeName(path).constData(), 0) != 0)
            fail(path, QStringLiteral("cannot change the permissions of"));
        return true;
    }
    return false;
}

Mutation::Verdict Mutation::verdict(const FileType& type, bool prepare) const
{
    if (prepare && !type.readByPrepare)
        return {false, type.notReadReason};
    const bool binary = type.format == FileType::Format::Binary;
    switch (m_kind) {
    case Kind::Empty:
        return must("an empty file holds nothing");
    case Kind::CutMidRecord:
    case Kind::OneByteShort:
        if (!binary)
            return must("XML without its end is not well-formed");
        if (type.lengthIsDeclared)
            return must("the file's length is declared (header, line count or whole records)");
        return may("a recording cut short is a shorter recording; a trailing partial record is ignored by design");
    case Kind::FlipRandomBit:
        return may("one bit anywhere: mostly a low mantissa bit, a character of a text, or a field no reader uses");
    case Kind::FlipFirstNumber:
        return must("the first number of the first record becomes 2^1024 times larger or smaller, or changes sign");
    case Kind::Garbage:
        return must("random bytes hold no record and no XML");
    case Kind::NotANumber:
        return must("every number of the first record is not a number");
    case Kind::Negative:
        return must("the first record's time (or value) is negative");
    case Kind::Huge:
        return must("every number of the first record is 1e300 (integers: 2^31 - 1)");
    case Kind::TextForBinary:
        return must("text read as binary records");
    case Kind::BinaryForText:
        return must("binary numbers are not XML");
    case Kind::NumbersNotANumber:
    case Kind::NumbersHuge:
        if (type.key == QLatin1String("info"))
            return may("the band info format takes a number that does not convert as absent (0)");
        return must("every number of the file is nan or 1e308");
    case Kind::NumbersNegative:
        return may("negative values are legitimate in many fields (longitudes, offsets, angles)");
    case Kind::DeepNesting:
        return must("no file of ours nests deeper than a dozen levels; 100 000 levels are an attack or garbage");
    case Kind::HugeText:
        return may("a long text is well-formed XML; the messages must still stay short");
    case Kind::Fifo:
        return must("a FIFO is not a file: reading it waits for a writer that never comes");
    case Kind::DanglingLink:
        if (type.optional)
            return may("an optional file whose link leads nowhere reads as absent");
        return must("a link to nothing: the file is missing");
    case Kind::Folder:
        return must("a folder is not a file");
    case Kind::Sparse:
        return must("3 GiB of zero bytes after the content");
    case Kind::Unreadable:
        return must("the file cannot be read");
    }
    return may("unknown mutation");
}

} // namespace robustness
