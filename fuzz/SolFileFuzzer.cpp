// Feeds arbitrary bytes to the SOL reader, and to ImuTrajectory, which must
// either take them as SOL or refuse them as SBET.

#include "FuzzSupport.h"
#include "TrajectoryFuzzSupport.h"

#include <datamodel/trajectory/SolFile.h>

#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("fuzz.sol", data, size);
    try {
        datamodel::SolFile sol(path);
        fuzzsupport::check(sol.hasStdDevs());
        fuzzsupport::check(datamodel::PosFile::isValidGpsTime(sol.startTime())
                           && datamodel::PosFile::isValidGpsTime(sol.endTime()));
        fuzzsupport::exercise(sol, data, size);
    } catch (const std::runtime_error&) {
    }
    fuzzsupport::exerciseTrajectory(path);
    return 0;
}
