#pragma once

#include <flightsim/AccuracyModel.h>
#include <flightsim/GpsTime.h>
#include <flightsim/SessionLayout.h>
#include <flightsim/SimulatedTrajectory.h>

#include <QJsonObject>

#include <cstddef>
#include <cstdint>

namespace util {
class ProgressInterface;
}

namespace flightsim {

/// Writes the post-processed trajectory three ways, all at the IMU rate
/// except the accuracy file: the SBET file (136-byte records of 17
/// little-endian doubles), its smrmsg accuracy file (80-byte records at the
/// accuracy rate, attitude deviations in arc minutes) and the same trajectory
/// as a SOL file (184-byte packed records, deviations in arc seconds).
/// GPS times are seconds of the week; after a week rollover they start again
/// from 0. The SBET carries the platform heading of a wander-azimuth
/// navigator: true heading + wander angle, the wander angle drifting as the
/// navigator's frame does (d wander = -d longitude * sin latitude).
class TrajectoryWriter {
public:
    struct Result {
        std::size_t records = 0;            ///< complete SBET and SOL records
        std::size_t accuracyRecords = 0;
        std::uint64_t sbetBytes = 0;
        QJsonObject firstSbet, lastSbet;    ///< the first and last complete SBET records
        QJsonObject firstAccuracy, lastAccuracy;
        QJsonObject truncation;             ///< empty unless the SBET was cut short
    };

    TrajectoryWriter(const SimulatedTrajectory& trajectory, const AccuracyModel& accuracy, const GpsTime& start,
                     std::uint64_t seed);

    /// Writes records 0 .. recordCount - 1. With `truncateSbet` the SBET file
    /// ends after the first half of its last record.
    Result write(const SessionLayout& layout, std::size_t recordCount, bool truncateSbet,
                 util::ProgressInterface* progress) const;

    static constexpr std::size_t sSbetRecordBytes = 136;
    static constexpr std::size_t sAccuracyRecordBytes = 80;
    static constexpr std::size_t sSolRecordBytes = 184;
    /// Bytes 0 to 15 of every SOL record: sync bytes BB 55, the record length
    /// 184 (B8 00), 01 00, the source identifiers 23 and FF, four zero bytes,
    /// C5 09 and two zero bytes; bytes 16 and 17 are zero.
    static const unsigned char sSolHeader[16];

private:
    const SimulatedTrajectory& m_trajectory;
    const AccuracyModel& m_accuracy;
    GpsTime m_start;
    double m_startWanderRad;
};

} // namespace flightsim
