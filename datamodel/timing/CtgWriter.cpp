#include <datamodel/timing/CtgWriter.h>

#include <datamodel/timing/CameraTime.h>

#include <platform/sensor/CameraTime.h>
#include <platform/util/AtomicFile.h>

#include <exception>
#include <stdexcept>

namespace datamodel {

CtgWriter::CtgWriter(const CameraTime& times)
    : m_times(&times)
{
}

CtgWriter::~CtgWriter() = default;

void CtgWriter::write(const std::string& path)
{
    // The file is written beside the target and renamed into place on
    // commit: a failure at any point leaves an existing file untouched.
    util::AtomicFile file(path, "CTG file");
    try {
        file.open();
    } catch (const util::FileWriteError&) {
        std::throw_with_nested(std::runtime_error("Can't open for write: " + path));
    }
    sensor::CameraTime::writeCtg(file, m_times->values());
    file.commit();
}

} // namespace datamodel
