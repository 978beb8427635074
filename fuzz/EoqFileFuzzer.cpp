// Feeds arbitrary bytes to the EOQ file reader, as the EOQ file beside an
// EOP file of EopTrajectory. The statistics accessors never throw: a file
// that does not read gives the defaults, one that does gives what its
// header holds. A file whose records read must answer a lookup at every
// record's time with a record of that time, between two records with one of
// them, outside with the nearest end (or "EOQ times go backwards" when the
// times fall), and written back and read again must give the same records
// bit for bit and the same statistics to the six digits written. The
// expected error is std::runtime_error; any other exception, a crash, a
// hang or a sanitizer finding is a bug.

#include "FuzzSupport.h"

#include <datamodel/trajectory/EopTrajectory.h>
#include <datamodel/trajectory/EoqFile.h>

#include <QString>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

using datamodel::EopTrajectory;
using datamodel::EoqFile;
using datamodel::seconds;

/// Aborts, saying which check failed, when `condition` does not hold.
void checkAt(bool condition, int line)
{
    if (!condition) {
        std::fprintf(stderr, "check failed at line %d of %s\n", line, __FILE__);
        std::abort();
    }
}
#define check(condition) checkAt((condition), __LINE__)

std::array<float, 8> statistics(const EopTrajectory& trajectory)
{
    return {trajectory.minRpe(), trajectory.maxRpe(), trajectory.minNcs(), trajectory.maxNcs(),
            trajectory.maxPsr(), trajectory.rmsRpe(), trajectory.rmsNcs(), trajectory.rmsPsr()};
}

bool sameBits(const std::array<float, 8>& a, const std::array<float, 8>& b)
{
    return std::memcmp(a.data(), b.data(), sizeof a) == 0;
}

/// The text the file holds of each statistic.
QString written(const std::array<float, 8>& values)
{
    QString text;
    for (float value : values)
        text += QString::number(double(value), 'g', 6) + QLatin1Char(' ');
    return text;
}

/// The same records, bit for bit (NaN payloads too).
bool sameBits(const std::vector<EoqFile::Record>& a, const std::vector<EoqFile::Record>& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const float measuresA[] = {a[i].ncs, a[i].rpe, a[i].psr};
        const float measuresB[] = {b[i].ncs, b[i].rpe, b[i].psr};
        if (std::memcmp(&a[i].time, &b[i].time, sizeof(double)) != 0
            || std::memcmp(measuresA, measuresB, sizeof measuresA) != 0)
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("take.eoq", data, size);
    const std::string eopPath = fuzzsupport::scratchDirectory() + "/take.eop";
    EopTrajectory trajectory(eopPath, true);

    // The statistics: never a throw; the header's values or the defaults.
    EoqFile::Header header;
    bool headerRead = true;
    try {
        header = EoqFile::readHeader(path);
    } catch (const std::runtime_error&) {
        headerRead = false;
        header = EoqFile::Header();
    }
    const std::array<float, 8> stats = statistics(trajectory);
    const EoqFile::Statistics& expected = header.statistics;
    check(sameBits(stats, {expected.minRpe, expected.maxRpe, expected.minNcs, expected.maxNcs, expected.maxPsr,
                           expected.rmsRpe, expected.rmsNcs, expected.rmsPsr}));
    check(trajectory.hasQualityMeasures() == (headerRead && header.numSets > 0));
    check(trajectory.numQualitySets() == header.numSets);

    std::vector<EoqFile::Record> records;
    try {
        records = EoqFile::read(path, header);
        trajectory.readQualities(true);
    } catch (const std::runtime_error&) {
        return 0;
    }
    const int n = trajectory.numQualitySets();
    check(headerRead && n == header.numSets && std::size_t(n) == records.size());

    bool ordered = true;
    for (int i = 0; i + 1 < n; ++i)
        ordered = ordered && records[std::size_t(i) + 1].time >= records[std::size_t(i)].time;
    const auto lookUp = [&](double time) -> int {
        try {
            const int index = trajectory.qualityIndexAtGps(seconds(time));
            check(index >= 0 && index < n);
            return index;
        } catch (const std::runtime_error&) {
            // Only for times that fall (the walk may not meet them), no
            // records, or a time that is not a number.
            check(!ordered || n == 0 || std::isnan(time));
            return -1;
        }
    };
    for (int i = 0; i < n; ++i) {
        const double time = records[std::size_t(i)].time;
        const int index = lookUp(time);
        if (ordered && !std::isnan(time))
            check(records[std::size_t(index)].time == time);
        check(trajectory.ncsAtQualityIndex(i) == records[std::size_t(i)].ncs
              || std::isnan(records[std::size_t(i)].ncs));
        if (i + 1 < n) {
            const double next = records[std::size_t(i) + 1].time;
            const double middle = 0.5 * time + 0.5 * next;
            const int between = lookUp(middle);
            if (ordered && std::isfinite(middle))
                check(records[std::size_t(between)].time >= time && records[std::size_t(between)].time <= next);
        }
    }
    if (n > 0 && ordered) {
        const double infinity = std::numeric_limits<double>::infinity();
        if (!std::isnan(records.front().time))
            check(lookUp(std::nextafter(records.front().time, -infinity)) == 0 || records.front().time == -infinity);
        if (!std::isnan(records.back().time))
            check(lookUp(std::nextafter(records.back().time, infinity)) == n - 1 || records.back().time == infinity);
    }

    // Written back and read again: the same records, the same statistics
    // to the digits written.
    trajectory.writeQualities();
    trajectory.writeQualitiesToASCII();
    EopTrajectory again(eopPath, true);
    again.readQualities(true);
    check(again.numQualitySets() == n);
    EoqFile::Header reread;
    const std::vector<EoqFile::Record> copies = EoqFile::read(path, reread);
    check(sameBits(copies, records));
    check(written(statistics(again)) == written(stats));
    return 0;
}
