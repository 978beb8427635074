// Feeds arbitrary bytes to the SBET reader with its smrmsg accuracy file.
// The first two bytes (little-endian) give the length of the SBET part; the
// rest of the input is the accuracy file, which is left out when empty.

#include "FuzzSupport.h"
#include "TrajectoryFuzzSupport.h"

#include <datamodel/trajectory/SbetFile.h>

#include <cstdio>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    std::size_t sbetSize = std::size_t(data[0]) | std::size_t(data[1]) << 8;
    data += 2;
    size -= 2;
    if (sbetSize > size)
        sbetSize = size;
    const std::string path = fuzzsupport::writeInput("sbet_fuzz.out", data, sbetSize);
    const std::string accuracy = fuzzsupport::scratchDirectory() + "/smrmsg_fuzz.out";
    if (size > sbetSize)
        fuzzsupport::writeInput("smrmsg_fuzz.out", data + sbetSize, size - sbetSize);
    else
        std::remove(accuracy.c_str());
    try {
        datamodel::SbetFile sbet(path);
        fuzzsupport::check(sbet.hasStdDevs() == (sbet.accuracyFile() != nullptr));
        fuzzsupport::exercise(sbet, data, size);
    } catch (const std::runtime_error&) {
    }
    fuzzsupport::exerciseTrajectory(path);
    return 0;
}
