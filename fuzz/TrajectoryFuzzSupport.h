#pragma once

// What the trajectory fuzz targets do with a reader that opened: every kind
// of lookup at the file's own times and at times taken from the input. Any
// exception other than std::runtime_error, any crash, sanitizer finding or
// broken invariant (std::abort) is a bug.

#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/PosFile.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace fuzzsupport {

inline void check(bool condition)
{
    if (!condition)
        std::abort();
}

/// Times to look up: the file's start and end, points between them, and
/// doubles read from the input.
inline std::vector<double> lookupTimes(const datamodel::PosFile& reader, const std::uint8_t* data, std::size_t size)
{
    const double start = reader.startTime().value();
    const double end = reader.gpstime(reader.endTime()).value();
    std::vector<double> times{start, end, 0.5 * (start + end), start + 0.25 * (end - start), end + 1.0, start - 1.0,
                              reader.endTime().value(), 0.0, 604799.999};
    for (std::size_t offset = 0; offset + 8 <= size && times.size() < 24; offset += 13) {
        double t;
        std::memcpy(&t, data + offset, 8);
        times.push_back(t);
    }
    return times;
}

inline void exercise(datamodel::PosFile& reader, const std::uint8_t* data, std::size_t size)
{
    const int n = reader.numSets();
    check(n >= 1);
    datamodel::ImuRecord record;
    reader.getRecord(0, record);
    reader.getRecord(n - 1, record);
    (void)reader.frequency();
    std::vector<datamodel::PosFile::Attitude> attitudes(std::size_t(n < 64 ? n : 64));
    reader.readAttitudes(0, int(attitudes.size()), attitudes.data());

    for (double t : lookupTimes(reader, data, size)) {
        try {
            reader.getRecord(datamodel::seconds(t), record);
            // Either a record within a microsecond or an interpolation at t.
            check(record.time == t || std::abs(reader.gpstime(datamodel::seconds(record.time)).value()
                                                   - reader.gpstime(datamodel::seconds(t)).value()) < 1e-6);
        } catch (const std::runtime_error&) {
        }
        for (bool before : {true, false}) {
            try {
                const int i = reader.getNearestIndex(datamodel::seconds(t), before);
                check(i >= 0 && i < n);
            } catch (const std::runtime_error&) {
            }
        }
        (void)reader.isTimeInsideFile(datamodel::seconds(t));
    }
}

/// The same file through ImuTrajectory: its own choice of reader, the
/// standard deviations and the angular-rate check.
inline void exerciseTrajectory(const std::string& path)
{
    try {
        const datamodel::ImuTrajectory trajectory(path);
        float x, y, z, omega, phi, kappa;
        trajectory.stdDevAtIndex(0, x, y, z, omega, phi, kappa);
        (void)trajectory.hasGpsRollover();
        (void)trajectory.isMonotonicallyIncreasing();
        try {
            trajectory.checkAngularRates(datamodel::seconds(-1.0), datamodel::seconds(-1.0), 2.0);
        } catch (const std::runtime_error&) {
        }
        datamodel::ImuRecord record;
        trajectory.getPosRecord(trajectory.numSets() - 1, record);
    } catch (const std::runtime_error&) {
    }
}

} // namespace fuzzsupport
