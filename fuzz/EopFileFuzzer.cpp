// Feeds arbitrary bytes to the EOP file reader. A file that reads must hold
// what the reader promises (times that rise, unit quaternions, finite
// values), must be written back to the same bytes, and must answer by time
// at, between and outside its samples. The expected error is
// std::runtime_error; any other exception, a crash, a hang or a sanitizer
// finding is a bug.

#include "FuzzSupport.h"

#include <platform/sensor/EOPData.h>

#include <QFile>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace {

QByteArray bytesOf(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

double length(const sensor::EOP& sample)
{
    double squares = 0.0;
    for (float component : sample.q)
        squares += double(component) * double(component);
    return std::sqrt(squares);
}

void check(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("take.eop", data, size);
    try {
        sensor::EOPData eop(path, true, false);
        const int n = eop.size();
        sensor::EOP sample;
        sensor::EOP next;
        sensor::EOPStdDevs stdDevs{};
        for (int i = 0; i < n; ++i) {
            check(eop.atIndex(i, sample) == 0);
            check(std::abs(length(sample) - 1.0) <= 1e-3);
            check(eop.stdDevAtIndex(i, stdDevs) == (eop.hasStdDevs() ? 0 : 1));
            // On a sample: the sample itself.
            sensor::EOP atTime;
            check(eop.atGPS(util::seconds(sample.time), atTime) == 0);
            check(atTime.time == sample.time && atTime.q == sample.q && atTime.x == sample.x);
            if (i + 1 < n) {
                check(eop.atIndex(i + 1, next) == 0 && next.time > sample.time);
                // Between two neighbouring doubles the middle is one of them.
                const double middle = 0.5 * sample.time + 0.5 * next.time;
                check(eop.atGPS(util::seconds(middle), atTime) == 0);
                if (middle > sample.time && middle < next.time)
                    check(std::abs(length(atTime) - 1.0) <= 1e-5);
                check(eop.stdDevAtGPS(util::seconds(middle), stdDevs) == (eop.hasStdDevs() ? 0 : 1));
            }
        }
        if (n > 0) {
            const double infinity = std::numeric_limits<double>::infinity();
            check(eop.atIndex(0, sample) == 0);
            check(eop.atGPS(util::seconds(std::nextafter(sample.time, -infinity)), next) != 0);
            check(eop.atIndex(n - 1, sample) == 0);
            check(eop.atGPS(util::seconds(std::nextafter(sample.time, infinity)), next) != 0);
        }
        check(eop.atIndex(n, sample) != 0);

        // What was read is written back byte for byte.
        const std::string copy = fuzzsupport::scratchDirectory() + "/copy.eop";
        eop.write(copy);
        check(bytesOf(copy) == bytesOf(path));
    } catch (const std::runtime_error&) {
    }
    return 0;
}
