#include "FileKind.h"

#include <datamodel/trajectory/PosFile.h>

#include <platform/raster/CtFile.h>
#include <platform/util/RegularFile.h>

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

#include <cmath>
#include <cstring>

namespace dataprep {

namespace {

// SOL records: 184 bytes, each starting with the sync bytes 0xBB 0x55.
constexpr qint64 sSolRecordBytes = 184;
// Bytes of XML read to find the root element and a ccd_id element.
constexpr qint64 sXmlSniffBytes = 1 << 20;
// Time-mark records: GPS time and CT, two doubles.
constexpr qint64 sTimeMarkRecordBytes = 16;
// CTG files hold one double per scan line.
constexpr qint64 sCtgLineBytes = 8;

double doubleAt(const QByteArray& bytes, qsizetype offset)
{
    double value = 0.0;
    std::memcpy(&value, bytes.constData() + offset, sizeof value); // the files are little-endian, as is the host
    return value;
}

std::string numberText(double value)
{
    return QString::number(value, 'g', 10).toStdString();
}

// A GPS time below `limitSec`: a normal number (small integers and other
// binary data read as a double are subnormal) or zero.
bool isGpsTime(double valueSec, double limitSec)
{
    const int kind = std::fpclassify(valueSec);
    return (kind == FP_NORMAL || kind == FP_ZERO) && valueSec >= 0.0 && valueSec < limitSec;
}

FileKind::Kind xmlKind(QFile& file)
{
    QXmlStreamReader reader(file.read(sXmlSniffBytes));
    bool root = true;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (root && reader.name() == QLatin1String("Strip"))
            return FileKind::Strip;
        root = false;
        if (reader.name() == QLatin1String("ccd_id"))
            return FileKind::BandInfo;
    }
    return root ? FileKind::Unknown : FileKind::Xml;
}

} // namespace

FileKind::Kind FileKind::fromName(const QString& path)
{
    const QFileInfo file(path);
    const QString name = file.fileName().toLower();
    const QString suffix = file.suffix().toLower();
    if (suffix == QLatin1String("info"))
        return BandInfo;
    if (suffix == QLatin1String("stp"))
        return Strip;
    if (suffix == QLatin1String("it"))
        return IntegrationTime;
    if (suffix == QLatin1String("tdi"))
        return Tdi;
    if (suffix == QLatin1String("ct"))
        return Ct;
    if (suffix == QLatin1String("ctg"))
        return Ctg;
    if (suffix == QLatin1String("eop") || name.endsWith(QLatin1String(".eop.adj")))
        return Eop;
    if (suffix == QLatin1String("eoq"))
        return Eoq;
    if (suffix == QLatin1String("tm") || (suffix == QLatin1String("dat") && name.startsWith(QLatin1String("tm"))))
        return TimeMarks;
    if (name.contains(QLatin1String("smrmsg")))
        return Smrmsg;
    if (suffix == QLatin1String("sol"))
        return Sol;
    if (suffix == QLatin1String("sbet") || (suffix == QLatin1String("out") && name.contains(QLatin1String("sbet"))))
        return Sbet;
    return Unknown;
}

FileKind::Kind FileKind::fromContent(const QString& path)
{
    // A pipe or a folder is never opened: reading it could wait forever.
    QFile file(path);
    if (!util::openRegularFile(file))
        return Unknown;
    const QByteArray head = file.peek(sSolRecordBytes + 2);
    if (head.startsWith(raster::CtFile::sSignature))
        return Ct;
    if (head.startsWith(QByteArray("EOPDATA\0", 8)))
        return Eop;
    if (head.startsWith("EOQ_"))
        return Eoq;
    if (head.startsWith("\xBB\x55")
        && (file.size() < 2 * sSolRecordBytes || head.mid(sSolRecordBytes, 2) == QByteArray("\xBB\x55")))
        return Sol;
    const QByteArray start = head.startsWith("\xEF\xBB\xBF") ? head.mid(3).trimmed() : head.trimmed();
    if (start.startsWith('<'))
        return xmlKind(file);
    return Unknown;
}

std::string FileKind::implausibility(const QString& path, Kind named)
{
    if (named != TimeMarks && named != Ctg)
        return {};
    QFile file(path);
    if (!util::openRegularFile(file))
        return {}; // the reader says why it cannot open the file
    const std::string name = path.toStdString();
    const QByteArray head = file.peek(sTimeMarkRecordBytes);
    if (named == TimeMarks) {
        if (head.size() < sTimeMarkRecordBytes)
            return {};
        const double gpsSec = doubleAt(head, 0);
        const double ctSec = doubleAt(head, 8);
        if (!isGpsTime(gpsSec, datamodel::PosFile::sSecondsPerWeek) || !std::isfinite(ctSec))
            return name + " is not a time-mark file: its first record holds no GPS time of the week (GPS "
                + numberText(gpsSec) + " s, CT " + numberText(ctSec) + " s)";
        return {};
    }
    if (file.size() % sCtgLineBytes != 0)
        return name + " is not a CTG file: its size (" + std::to_string(file.size())
            + " bytes) is not a whole number of 8-byte scan lines";
    if (head.size() >= sCtgLineBytes) {
        // Times of a flight across a week boundary count on past one week.
        const double gpsSec = doubleAt(head, 0);
        if (!isGpsTime(gpsSec, 2.0 * datamodel::PosFile::sSecondsPerWeek))
            return name + " is not a CTG file: its first scan line holds no GPS time (" + numberText(gpsSec)
                + " s)";
    }
    return {};
}

const char* FileKind::description(Kind kind)
{
    switch (kind) {
    case BandInfo:
        return "a band info file";
    case Strip:
        return "a strip file";
    case IntegrationTime:
        return "an integration-time file";
    case Tdi:
        return "a TDI file";
    case TimeMarks:
        return "a time-mark file";
    case Ct:
        return "a CT file";
    case Ctg:
        return "a CTG file";
    case Sbet:
        return "an SBET file";
    case Smrmsg:
        return "an smrmsg accuracy file";
    case Sol:
        return "a SOL file";
    case Eop:
        return "an EOP file";
    case Eoq:
        return "an EOQ file";
    case Xml:
        return "an XML file";
    case Unknown:
        break;
    }
    return "a file of unknown kind";
}

bool FileKind::isTrajectory(Kind kind)
{
    return kind == Sbet || kind == Smrmsg || kind == Sol;
}

} // namespace dataprep
