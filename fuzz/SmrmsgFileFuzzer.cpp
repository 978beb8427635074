// Feeds arbitrary bytes to the smrmsg accuracy-file reader and asks it for
// the accuracy at the SBET-side times the SBET reader would ask for.

#include "FuzzSupport.h"
#include "TrajectoryFuzzSupport.h"

#include <datamodel/trajectory/SbetFile.h>

#include <array>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("smrmsg_fuzz.out", data, size);
    try {
        datamodel::SbetFile::SmrmsFile accuracy(path);
        fuzzsupport::check(accuracy.hasStdDevs());
        fuzzsupport::exercise(accuracy, data, size);
        std::array<float, 6> stdDev{};
        for (double t : fuzzsupport::lookupTimes(accuracy, data, size)) {
            try {
                accuracy.accuracyAt(datamodel::seconds(t), stdDev);
            } catch (const std::runtime_error&) {
            }
        }
    } catch (const std::runtime_error&) {
    }
    return 0;
}
