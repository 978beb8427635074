#pragma once

// Small readers of the files a simulated session holds, written from the
// format documents in docs/formats and independent of the simulator's
// writers, so that the tests judge the bytes on disk.

#include <QByteArray>
#include <QDomDocument>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace flightfiles {

static_assert(std::endian::native == std::endian::little, "the readers assume a little-endian host");

inline QByteArray readAll(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("test: cannot read " + path.toStdString());
    return file.readAll();
}

template <typename T>
T at(const QByteArray& bytes, qsizetype offset)
{
    if (offset < 0 || offset + qsizetype(sizeof(T)) > bytes.size())
        throw std::runtime_error("test: read past the end of a file");
    T value;
    std::memcpy(&value, bytes.constData() + offset, sizeof(T));
    return value;
}

inline double wrapPi(double angle)
{
    angle = std::remainder(angle, 2.0 * std::numbers::pi);
    return angle <= -std::numbers::pi ? angle + 2.0 * std::numbers::pi : angle;
}

struct SbetRecord {
    double time, lat, lon, height, vx, vy, vz, roll, pitch, platformHeading, wander, ax, ay, az, wx, wy, wz;
    double heading() const { return wrapPi(platformHeading - wander); }
    /// North and east velocity from the wander-frame components.
    double velocityNorth() const { return vx * std::cos(wander) + vy * std::sin(wander); }
    double velocityEast() const { return -vx * std::sin(wander) + vy * std::cos(wander); }
};
static_assert(sizeof(SbetRecord) == 136);

/// The complete 136-byte records; a trailing partial record is left out.
inline std::vector<SbetRecord> readSbet(const QString& path)
{
    const QByteArray bytes = readAll(path);
    std::vector<SbetRecord> records(std::size_t(bytes.size() / 136));
    std::memcpy(records.data(), bytes.constData(), records.size() * 136);
    return records;
}

struct AccuracyRecord {
    double time, north, east, down, vNorth, vEast, vDown, rollArcmin, pitchArcmin, headingArcmin;
};
static_assert(sizeof(AccuracyRecord) == 80);

inline std::vector<AccuracyRecord> readAccuracy(const QString& path)
{
    const QByteArray bytes = readAll(path);
    std::vector<AccuracyRecord> records(std::size_t(bytes.size() / 80));
    std::memcpy(records.data(), bytes.constData(), records.size() * 80);
    return records;
}

struct SolRecord {
    QByteArray header; // bytes 0 .. 17
    double time, lat, lon, height;
    float sdNorth, sdEast, sdDown;
    double roll, pitch, heading;
    float sdRollArcsec, sdPitchArcsec, sdHeadingArcsec;
    QByteArray unused; // bytes 114 .. 183
};

inline std::vector<SolRecord> readSol(const QString& path)
{
    const QByteArray bytes = readAll(path);
    std::vector<SolRecord> records;
    for (qsizetype o = 0; o + 184 <= bytes.size(); o += 184) {
        SolRecord r;
        r.header = bytes.mid(o, 18);
        r.time = at<double>(bytes, o + 18);
        r.lat = at<double>(bytes, o + 42);
        r.lon = at<double>(bytes, o + 50);
        r.height = at<double>(bytes, o + 58);
        r.sdNorth = at<float>(bytes, o + 66);
        r.sdEast = at<float>(bytes, o + 70);
        r.sdDown = at<float>(bytes, o + 74);
        r.roll = at<double>(bytes, o + 78);
        r.pitch = at<double>(bytes, o + 86);
        r.heading = at<double>(bytes, o + 94);
        r.sdRollArcsec = at<float>(bytes, o + 102);
        r.sdPitchArcsec = at<float>(bytes, o + 106);
        r.sdHeadingArcsec = at<float>(bytes, o + 110);
        r.unused = bytes.mid(o + 114, 70);
        records.push_back(r);
    }
    return records;
}

struct TimeMark {
    double gps, ct;
};

inline std::vector<TimeMark> readTimeMarks(const QString& path)
{
    const QByteArray bytes = readAll(path);
    std::vector<TimeMark> marks(std::size_t(bytes.size() / 16));
    std::memcpy(marks.data(), bytes.constData(), marks.size() * 16);
    return marks;
}

/// GPS seconds counted on past the end of the week, for a series that starts in the first week.
inline std::vector<double> unwrapWeek(const std::vector<double>& gps)
{
    std::vector<double> out;
    double shift = 0.0;
    for (std::size_t i = 0; i < gps.size(); ++i) {
        if (i > 0 && gps[i] + shift < out.back() - 302400.0)
            shift += 604800.0;
        out.push_back(gps[i] + shift);
    }
    return out;
}

/// CT to GPS by linear interpolation between the neighbouring time marks
/// (GPS unwrapped across a week boundary).
inline double gpsAtCt(const std::vector<TimeMark>& marks, const std::vector<double>& unwrappedGps, double ct)
{
    std::size_t i = 0;
    while (i + 2 < marks.size() && marks[i + 1].ct < ct)
        ++i;
    const double w = (ct - marks[i].ct) / (marks[i + 1].ct - marks[i].ct);
    return unwrappedGps[i] + w * (unwrappedGps[i + 1] - unwrappedGps[i]);
}

struct CtFile {
    QByteArray magic;
    std::uint32_t headerBytes = 0;
    std::uint64_t count = 0;
    qsizetype sizeBytes = 0;
    std::vector<double> values;
};

inline CtFile readCt(const QString& path)
{
    const QByteArray bytes = readAll(path);
    CtFile ct;
    ct.sizeBytes = bytes.size();
    ct.magic = bytes.left(4);
    ct.headerBytes = at<std::uint32_t>(bytes, 4);
    ct.count = at<std::uint64_t>(bytes, 8);
    for (qsizetype o = ct.headerBytes; o + 8 <= bytes.size(); o += 8)
        ct.values.push_back(at<double>(bytes, o));
    return ct;
}

struct ScanLineRun {
    std::uint32_t line;
    std::int32_t value;
};

inline std::vector<ScanLineRun> readRuns(const QString& path)
{
    const QByteArray bytes = readAll(path);
    std::vector<ScanLineRun> runs;
    for (qsizetype o = 0; o + 8 <= bytes.size(); o += 8)
        runs.push_back({at<std::uint32_t>(bytes, o), at<std::int32_t>(bytes, o + 4)});
    return runs;
}

struct PixelFile {
    QByteArray magic;
    std::uint32_t headerBytes = 0, samples = 0, bitsPerSample = 0, firstPixel = 0, pixelStep = 0;
    std::uint64_t lines = 0;
    qsizetype sizeBytes = 0;
    std::vector<std::uint16_t> values;
};

inline PixelFile readPixels(const QString& path)
{
    const QByteArray bytes = readAll(path);
    PixelFile p;
    p.sizeBytes = bytes.size();
    p.magic = bytes.left(4);
    p.headerBytes = at<std::uint32_t>(bytes, 4);
    p.samples = at<std::uint32_t>(bytes, 8);
    p.bitsPerSample = at<std::uint32_t>(bytes, 12);
    p.lines = at<std::uint64_t>(bytes, 16);
    p.firstPixel = at<std::uint32_t>(bytes, 24);
    p.pixelStep = at<std::uint32_t>(bytes, 28);
    for (qsizetype o = p.headerBytes; o + 2 <= bytes.size(); o += 2)
        p.values.push_back(at<std::uint16_t>(bytes, o));
    return p;
}

inline QJsonObject readJson(const QString& path)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(readAll(path), &error);
    if (error.error != QJsonParseError::NoError)
        throw std::runtime_error("test: bad JSON in " + path.toStdString() + ": " + error.errorString().toStdString());
    return document.object();
}

inline QDomDocument readXml(const QString& path)
{
    QDomDocument document;
    if (!document.setContent(readAll(path)))
        throw std::runtime_error("test: bad XML in " + path.toStdString());
    return document;
}

/// WGS84 geodetic to ECEF, metres.
struct Ecef {
    double x, y, z;
};
inline Ecef toEcef(double latRad, double lonRad, double heightM)
{
    constexpr double a = 6378137.0;
    constexpr double f = 1.0 / 298.257223563;
    constexpr double e2 = f * (2.0 - f);
    const double n = a / std::sqrt(1.0 - e2 * std::sin(latRad) * std::sin(latRad));
    return {(n + heightM) * std::cos(latRad) * std::cos(lonRad), (n + heightM) * std::cos(latRad) * std::sin(lonRad),
            (n * (1.0 - e2) + heightM) * std::sin(latRad)};
}

/// East, north and up components of the ECEF step from a to b at a.
inline void enuStep(double latRad, double lonRad, const Ecef& a, const Ecef& b, double& e, double& n, double& u)
{
    const double dx = b.x - a.x, dy = b.y - a.y, dz = b.z - a.z;
    e = -std::sin(lonRad) * dx + std::cos(lonRad) * dy;
    n = -std::sin(latRad) * std::cos(lonRad) * dx - std::sin(latRad) * std::sin(lonRad) * dy + std::cos(latRad) * dz;
    u = std::cos(latRad) * std::cos(lonRad) * dx + std::cos(latRad) * std::sin(lonRad) * dy + std::sin(latRad) * dz;
}

} // namespace flightfiles
