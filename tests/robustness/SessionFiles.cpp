#include "SessionFiles.h"

#include <QRegularExpression>

#include <cstring>

namespace robustness {

namespace {

std::vector<int> doubles(int first, int count)
{
    std::vector<int> offsets;
    for (int i = 0; i < count; ++i)
        offsets.push_back(first + 8 * i);
    return offsets;
}

FileType binary(const char* key, const char* pattern, int headerBytes, int recordBytes, std::vector<int> numbers)
{
    FileType type;
    type.key = QString::fromLatin1(key);
    type.pattern = QString::fromLatin1(pattern);
    type.headerBytes = headerBytes;
    type.recordBytes = recordBytes;
    type.numberOffsets = std::move(numbers);
    type.inspectable = true;
    return type;
}

FileType xml(const char* key, const char* pattern)
{
    FileType type;
    type.key = QString::fromLatin1(key);
    type.pattern = QString::fromLatin1(pattern);
    type.format = FileType::Format::Xml;
    return type;
}

std::vector<FileType> makeTypes()
{
    std::vector<FileType> types;
    FileType tm = binary("tm", "gps-imu/*/extract/tm*.dat", 0, 16, doubles(0, 2));
    tm.needsUnpreparedFlight = true;
    types.push_back(tm);
    FileType ct = binary("ct", "raw/L*PANN00A.ct", 16, 8, doubles(16, 1));
    ct.lengthIsDeclared = true;
    ct.needsUnpreparedFlight = true;
    types.push_back(ct);
    FileType ctg = binary("ctg", "raw/L*PANN00A.ctg", 0, 8, doubles(0, 1));
    ctg.lengthIsDeclared = true; // as many lines as the CT file
    types.push_back(ctg);
    for (const char* key : {"it", "tdi"}) {
        FileType runs = binary(key, std::strcmp(key, "it") == 0 ? "raw/L*PANN00A.it" : "raw/L*PANN00A.tdi", 0, 8, {4});
        runs.number = FileType::Number::Int32;
        runs.lengthIsDeclared = true; // whole 8-byte records
        runs.readByPrepare = false;
        runs.notReadReason = QStringLiteral("prepare does not read the per-scan-line files");
        types.push_back(runs);
    }
    FileType info = xml("info", "raw/L*PANN00A.info");
    info.inspectable = true;
    types.push_back(info);
    types.push_back(binary("sbet", "gps-imu/*/proc/sbet*.out", 0, 136, doubles(0, 17)));
    FileType smrmsg = binary("smrmsg", "gps-imu/*/proc/smrmsg*.out", 0, 80, doubles(0, 10));
    types.push_back(smrmsg);
    types.push_back(binary("sol", "gps-imu/*/proc/*.sol", 0, 184, {18, 42, 50, 58, 78, 86, 94}));
    types.push_back(xml("flightdata", "mm/FlightData.xml"));
    types.push_back(xml("camera", "mm/Camera.xml"));
    FileType sessionData = xml("sessiondata", "raw/sessionData.xml");
    sessionData.optional = true;
    types.push_back(sessionData);
    return types;
}

} // namespace

const std::vector<FileType>& SessionFiles::types()
{
    static const std::vector<FileType> all = makeTypes();
    return all;
}

QString SessionFiles::find(const QDir& session, const FileType& type)
{
    // Each part of the pattern may hold wildcards; the first match by name
    // is followed.
    QString relative;
    const QStringList parts = type.pattern.split(QLatin1Char('/'));
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const bool last = i + 1 == parts.size();
        const QDir folder(session.filePath(relative));
        const QStringList names = folder.entryList({parts[i]}, (last ? QDir::Files : QDir::Dirs) | QDir::NoDotAndDotDot,
                                                   QDir::Name);
        if (names.isEmpty())
            return {};
        relative += (relative.isEmpty() ? QString() : QStringLiteral("/")) + names.first();
    }
    return relative;
}

QString SessionFiles::bandOf(const QString& fileName)
{
    static const QRegularExpression band(QStringLiteral("(RED|BLU|GRN|PAN|NIR)(F|B|N)([0-9]{2})(A|B)"));
    const QRegularExpressionMatch match = band.match(fileName);
    return match.hasMatch() ? match.captured(0) : QString();
}

} // namespace robustness
