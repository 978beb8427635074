#pragma once

// Small writers of SBET, smrmsg and SOL files for the trajectory tests,
// written from the byte tables in docs/formats and independent of the
// library's record structures.

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

namespace trajectorytest {

static_assert(std::endian::native == std::endian::little, "the writers put the host's bytes");

constexpr double sDeg = std::numbers::pi / 180.0;

template <typename T>
void put(QByteArray& bytes, qsizetype offset, T value)
{
    if (bytes.size() < offset + qsizetype(sizeof(T)))
        bytes.resize(offset + qsizetype(sizeof(T)), '\0');
    std::memcpy(bytes.data() + offset, &value, sizeof(T));
}

/// One SBET record; the fields the readers do not use get distinct values
/// so that a reader taking the wrong offset shows.
struct SbetRow {
    double time = 0.0;
    double latRad = 0.0;
    double lonRad = 0.0;
    double heightM = 0.0;
    double rollRad = 0.0;
    double pitchRad = 0.0;
    double platformHeadingRad = 0.0;
    double wanderRad = 0.0;
};

inline QByteArray sbetBytes(const std::vector<SbetRow>& rows)
{
    QByteArray bytes;
    for (std::size_t k = 0; k < rows.size(); ++k) {
        const qsizetype o = qsizetype(k) * 136;
        const SbetRow& r = rows[k];
        const double fields[17] = {r.time, r.latRad, r.lonRad, r.heightM, 71.0, -72.0, 73.0, r.rollRad, r.pitchRad,
                                   r.platformHeadingRad, r.wanderRad, 0.5, -0.6, 0.7, 0.01, -0.02, 0.03};
        for (int i = 0; i < 17; ++i)
            put(bytes, o + 8 * i, fields[i]);
    }
    return bytes;
}

struct AccuracyRow {
    double time = 0.0;
    double northM = 0.0, eastM = 0.0, downM = 0.0;
    double rollArcmin = 0.0, pitchArcmin = 0.0, headingArcmin = 0.0;
};

inline QByteArray accuracyBytes(const std::vector<AccuracyRow>& rows)
{
    QByteArray bytes;
    for (std::size_t k = 0; k < rows.size(); ++k) {
        const qsizetype o = qsizetype(k) * 80;
        const AccuracyRow& r = rows[k];
        const double fields[10] = {r.time, r.northM, r.eastM, r.downM, 0.11, 0.12, 0.13,
                                   r.rollArcmin, r.pitchArcmin, r.headingArcmin};
        for (int i = 0; i < 10; ++i)
            put(bytes, o + 8 * i, fields[i]);
    }
    return bytes;
}

struct SolRow {
    double time = 0.0;
    double latRad = 0.0, lonRad = 0.0, heightM = 0.0;
    float sdNorthM = 0.0f, sdEastM = 0.0f, sdDownM = 0.0f;
    double rollRad = 0.0, pitchRad = 0.0, headingRad = 0.0;
    float sdRollArcsec = 0.0f, sdPitchArcsec = 0.0f, sdHeadingArcsec = 0.0f;
};

/// The first 18 bytes of every SOL record.
inline QByteArray solHeader()
{
    return QByteArray::fromHex("BB55B800010023FF00000000C5090000") + QByteArray(2, '\0');
}

inline QByteArray solBytes(const std::vector<SolRow>& rows)
{
    QByteArray bytes;
    for (std::size_t k = 0; k < rows.size(); ++k) {
        const qsizetype o = qsizetype(k) * 184;
        const SolRow& r = rows[k];
        bytes.resize(o + 184, '\0');
        std::memcpy(bytes.data() + o, solHeader().constData(), 18);
        put(bytes, o + 18, r.time);
        put(bytes, o + 42, r.latRad);
        put(bytes, o + 50, r.lonRad);
        put(bytes, o + 58, r.heightM);
        put(bytes, o + 66, r.sdNorthM);
        put(bytes, o + 70, r.sdEastM);
        put(bytes, o + 74, r.sdDownM);
        put(bytes, o + 78, r.rollRad);
        put(bytes, o + 86, r.pitchRad);
        put(bytes, o + 94, r.headingRad);
        put(bytes, o + 102, r.sdRollArcsec);
        put(bytes, o + 106, r.sdPitchArcsec);
        put(bytes, o + 110, r.sdHeadingArcsec);
    }
    return bytes;
}

/// `count` SBET records every `intervalSec` from `startSec` (wrapped into
/// the GPS week), with latitude, height, roll and pitch rising linearly with
/// the record number and a heading turning at 0.1 degree per record.
inline std::vector<SbetRow> regularSbet(int count, double startSec, double intervalSec)
{
    std::vector<SbetRow> rows(static_cast<std::size_t>(count));
    for (int k = 0; k < count; ++k) {
        SbetRow& r = rows[std::size_t(k)];
        r.time = std::fmod(startSec + k * intervalSec, 604800.0);
        r.latRad = 0.8 + 1e-7 * k;
        r.lonRad = 0.2 + 2e-7 * k;
        r.heightM = 1500.0 + 0.01 * k;
        r.rollRad = 0.001 * (k % 100);
        r.pitchRad = 0.04 + 0.0001 * (k % 50);
        r.wanderRad = 0.3;
        r.platformHeadingRad = 1.0 + 0.1 * sDeg * k + r.wanderRad;
    }
    return rows;
}

/// Writes `bytes` to `name` in `dir` and returns the path.
inline std::string write(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        throw std::runtime_error("test setup: cannot write " + path.toStdString());
    return path.toStdString();
}

} // namespace trajectorytest
