// Feeds arbitrary bytes to the scan-line data reader (integration-time and
// TDI files). Data that read are looked up and written back; writing what
// was read must give a file that reads back to the same runs.

#include "FuzzSupport.h"

#include <datamodel/timing/ScanLineData.h>

#include <cstdlib>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("band.tdi", data, size);
    try {
        datamodel::ScanLineData lines = datamodel::ScanLineData::read(path, 1.0);
        if (!lines.empty()) {
            (void)lines.minValue();
            (void)lines.maxValue();
            (void)lines.nominalValue();
            (void)lines.value(0.0);
            (void)lines.value(1e12);
            (void)lines.value(-3.5);
        }
        const std::string copy = fuzzsupport::scratchDirectory() + "/copy.tdi";
        lines.write(copy);
        const datamodel::ScanLineData again = datamodel::ScanLineData::read(copy, 1.0);
        datamodel::ScanLineData twice = again;
        twice.write(copy);
        if (datamodel::ScanLineData::read(copy, 1.0).values() != again.values())
            std::abort(); // writing is not stable
        (void)datamodel::ScanLineData::read(path, 1e-6);
    } catch (const std::runtime_error&) {
    }
    return 0;
}
