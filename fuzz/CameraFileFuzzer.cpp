// Feeds arbitrary bytes to the camera description reader (as mm/Camera.xml,
// the way a session holds it). Any exception other than std::runtime_error,
// any crash or sanitizer finding is a bug. A camera that reads must hold what
// the reader promises: a decimal serial, a calibration version of 0 or more,
// a positive focal length and pixel size, and bands of distinct names whose
// look angles lie within +-90 degrees.

#include "FuzzSupport.h"

#include <datamodel/model/Sensor.h>

#include <cmath>
#include <cstdlib>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("Camera.xml", data, size);
    try {
        const datamodel::Sensor sensor = datamodel::Sensor::fromCameraFile(path);
        if (sensor.id().empty() || sensor.calibrationVersion() < 0 || !(sensor.focalLengthMm() > 0.0)
            || !(sensor.pixelSizeMm() > 0.0) || sensor.pixelsPerLine() == 0 || sensor.bands().empty())
            std::abort();
        for (const datamodel::Sensor::BandGeometry& band : sensor.bands()) {
            if (sensor.band(band.name) != &band || !(std::abs(band.lookAngleDeg) < 90.0) || band.tdiStages < 1
                || band.analogChannel < 0)
                std::abort();
        }
        try {
            (void)sensor.idAsInt();
        } catch (const std::runtime_error&) {
        }
    } catch (const std::runtime_error&) {
    }
    return 0;
}
