#include <datamodel/trajectory/ImuTrajectory.h>

#include <datamodel/log/VNLLog.h>
#include <datamodel/trajectory/PosFile.h>
#include <datamodel/trajectory/SbetFile.h>
#include <datamodel/trajectory/SolFile.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <platform/util/ErrorText.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <numbers>
#include <sstream>
#include <stdexcept>

namespace datamodel {

namespace {

VNLLog& log()
{
    static VNLLog logger("datamodel.ImuTrajectory");
    return logger;
}

/// Records read at a time by the angular-rate check.
constexpr int sAttitudeChunk = 1024;

} // namespace

ImuTrajectory::ImuTrajectory(const std::string& fileName)
{
    // The SOL reader's checks (sync bytes, time range) are what tells a SOL
    // file from an SBET file, so SOL is tried first.
    try {
        m_reader = std::make_unique<SolFile>(fileName);
    } catch (const std::exception& e) {
        VNL_LOG_DEBUG(log(), fileName << " is not a SOL file (" << e.what() << "); reading it as an SBET file");
        m_reader = std::make_unique<SbetFile>(fileName);
    }
}

ImuTrajectory::ImuTrajectory(std::unique_ptr<PosFile> reader)
    : m_reader(std::move(reader))
{
    if (!m_reader)
        throw std::invalid_argument("ImuTrajectory needs a reader");
}

std::unique_ptr<PosFile> ImuTrajectory::openReader(const std::string& fileName)
{
    std::string solReason;
    try {
        return std::make_unique<SolFile>(fileName);
    } catch (const std::exception& e) {
        solReason = util::fullMessage(e);
    }
    try {
        return std::make_unique<SbetFile>(fileName);
    } catch (const std::exception& e) {
        throw std::runtime_error(fileName + " is neither a SOL nor an SBET file (SOL reader: " + solReason
                                 + "; SBET reader: " + util::fullMessage(e) + ")");
    }
}

ImuTrajectory::ImuTrajectory(const ImuTrajectory& other)
    : Validatable(other)
    , Trajectory(other)
    , m_reader(std::move(other.m_reader))
{
}

ImuTrajectory& ImuTrajectory::operator=(const ImuTrajectory& other)
{
    if (m_reader.get() != other.m_reader.get()) {
        m_reader.reset();
        m_reader = std::move(other.m_reader);
    }
    return *this;
}

ImuTrajectory::~ImuTrajectory() = default;

PosFile& ImuTrajectory::requireReader() const
{
    if (!m_reader)
        throw std::runtime_error("Trajectory file is not open.");
    return *m_reader;
}

int ImuTrajectory::numSets() const
{
    return m_reader ? m_reader->numSets() : 0;
}

double ImuTrajectory::frequency() const
{
    return requireReader().frequency();
}

bool ImuTrajectory::hasStdDevs() const
{
    return m_reader ? m_reader->hasStdDevs() : false;
}

namespace {

// Standard deviations are handed out as x (east), y (north), z, omega, phi,
// kappa; the record holds north first.
void handOutStdDevs(const ImuRecord& record, float& x, float& y, float& z, float& omega, float& phi, float& kappa)
{
    const auto& sd = record.stdDev();
    x = sd[1];
    y = sd[0];
    z = sd[2];
    omega = sd[3];
    phi = sd[4];
    kappa = sd[5];
}

} // namespace

void ImuTrajectory::stdDevAtIndex(int index, float& x, float& y, float& z, float& omega, float& phi,
                                  float& kappa) const
{
    ImuRecord record;
    requireReader().getRecord(index, record);
    handOutStdDevs(record, x, y, z, omega, phi, kappa);
}

void ImuTrajectory::stdDevAtGPS(Seconds gpsTime, float& x, float& y, float& z, float& omega, float& phi,
                                float& kappa) const
{
    ImuRecord record;
    requireReader().getRecord(gpsTime, record);
    handOutStdDevs(record, x, y, z, omega, phi, kappa);
}

void ImuTrajectory::setStdDevs(int, float, float, float, float, float, float) {}

void ImuTrajectory::setDefaultStdDevs(float, float, float, float, float, float) {}

bool ImuTrajectory::containsGpsTime(Seconds gpsTime) const
{
    return requireReader().isTimeInsideFile(gpsTime);
}

bool ImuTrajectory::hasGpsRollover() const
{
    return requireReader().hasGpsRollover();
}

std::string ImuTrajectory::fileName() const
{
    return requireReader().fileName();
}

void ImuTrajectory::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

void ImuTrajectory::getPosRecord(int index, ImuRecord& record) const
{
    requireReader().getRecord(index, record);
}

void ImuTrajectory::getPosRecord(Seconds gpsTime, ImuRecord& record) const
{
    requireReader().getRecord(gpsTime, record);
}

void ImuTrajectory::checkAngularRates(Seconds start, Seconds end, double limitDegPerSecond) const
{
    PosFile& reader = requireReader();
    const double limitRadPerSec = limitDegPerSecond * std::numbers::pi / 180.0;
    const Seconds from = start.value() < 0.0 ? reader.startTime() : start;
    const Seconds to = end.value() < 0.0 ? reader.endTime() : end;
    const int first = reader.getNearestIndex(from, true);
    const int last = reader.getNearestIndex(to, false);

    // Streams time, roll and pitch only: an hour at 200 Hz is 720 000 records.
    long long count = 0;
    std::array<PosFile::Attitude, sAttitudeChunk> chunk;
    PosFile::Attitude previous;
    double previousTime = 0.0;
    for (int i = first; i <= last;) {
        const int n = std::min(sAttitudeChunk, last - i + 1);
        reader.readAttitudes(i, n, chunk.data());
        for (int k = 0; k < n; ++k) {
            const PosFile::Attitude& current = chunk[std::size_t(k)];
            const double time = reader.gpstime(seconds(current.time)).value();
            if (i + k > first) {
                const double dt = time - previousTime;
                if (std::abs((current.roll - previous.roll) / dt) >= limitRadPerSec
                    || std::abs((current.pitch - previous.pitch) / dt) >= limitRadPerSec)
                    ++count;
            }
            previous = current;
            previousTime = time;
        }
        i += n;
    }
    VNL_LOG_DEBUG(log(), reader.fileName() << ": records " << first << " to " << last << ", " << count
                                           << " angular rates at or above " << limitDegPerSecond << " deg/s");
    if (count >= 1) {
        std::ostringstream message;
        message << "There were " << count << " occurrences of the angular velocity exceeding the limit of "
                << std::fixed << std::setprecision(3) << limitDegPerSecond << " deg/s";
        throw std::runtime_error(message.str());
    }
}

void ImuTrajectory::close()
{
    requireReader().close();
}

bool ImuTrajectory::isMonotonicallyIncreasing() const
{
    return requireReader().isOrdered();
}

} // namespace datamodel
