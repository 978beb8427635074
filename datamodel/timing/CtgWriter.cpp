#include <datamodel/timing/CtgWriter.h>

#include <datamodel/timing/CameraTime.h>

#include <QSaveFile>

#include <bit>
#include <stdexcept>

namespace datamodel {

static_assert(sizeof(Seconds) == sizeof(double), "a time is a double underneath");
static_assert(std::endian::native == std::endian::little, "CTG files are written straight from memory");

CtgWriter::CtgWriter(const CameraTime& times)
    : m_times(&times)
{
}

CtgWriter::~CtgWriter() = default;

void CtgWriter::write(const std::string& path)
{
    // The file is written beside the target and renamed into place on
    // commit: a failure at any point leaves an existing file untouched.
    QSaveFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("Can't open for write: " + path);
    const std::vector<Seconds>& times = m_times->values();

    // One block of little-endian doubles, in line order.
    const auto bytes = qint64(sizeof(double) * times.size());
    if (file.write(reinterpret_cast<const char*>(times.data()), bytes) != bytes || !file.commit())
        throw std::runtime_error("Can't open for write: " + path);
}

} // namespace datamodel
