// Feeds arbitrary bytes to the CT file reader, directly and through the
// camera-time adaptor. A file that reads is written back and must read back
// to the same values, bit for bit. Any exception other than
// std::runtime_error, a crash or a sanitizer finding is a bug.

#include "FuzzSupport.h"

#include <datamodel/timing/TimeAdaptor_p.h>

#include <platform/raster/CtFile.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("band.ct", data, size);
    try {
        const raster::CtFile ct(path);
        const std::string copy = fuzzsupport::scratchDirectory() + "/copy.ct";
        raster::CtFile::write(copy, ct.values());
        const raster::CtFile again(copy);
        if (again.size() != ct.size()
            || (ct.size() && std::memcmp(again.values().data(), ct.values().data(), 8 * ct.size()) != 0))
            std::abort(); // writing what was read changed the values
    } catch (const std::runtime_error&) {
    }
    try {
        const datamodel::CameraTime::TimeAdaptor adaptor(path);
        if (adaptor.size() > 0)
            (void)adaptor.value(adaptor.size() - 1);
        (void)adaptor.value(adaptor.size());
    } catch (const std::runtime_error& e) {
        try {
            std::rethrow_if_nested(e);
        } catch (const std::runtime_error&) {
        }
    }
    return 0;
}
