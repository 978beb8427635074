#include <datamodel/trajectory/EopTrajectory.h>

#include <datamodel/trajectory/ImuRecord.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/QualityMeasures_p.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <platform/geo/coordSys.h>
#include <platform/geo/coordSysFactory.h>
#include <platform/dsm/ProjectedElevationSourceFactory.h>
#include <platform/geometry/RayToSurfaceIntersection.h>
#include <platform/sensor/EOPData.h>
#include <platform/sensor/IdentitySensorModel.h>
#include <platform/util/ProgressInterface.h>

#include <QFileInfo>

#include <Eigen/Geometry>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <numbers>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace datamodel {

namespace {

constexpr double sPi = std::numbers::pi;
constexpr double sRadToDeg = 180.0 / sPi;

// The elementary rotations, counter-clockwise about their axis.
Eigen::Matrix3d rx(double angle)
{
    const double c = std::cos(angle), s = std::sin(angle);
    Eigen::Matrix3d r;
    r << 1.0, 0.0, 0.0, 0.0, c, -s, 0.0, s, c;
    return r;
}
Eigen::Matrix3d ry(double angle)
{
    const double c = std::cos(angle), s = std::sin(angle);
    Eigen::Matrix3d r;
    r << c, 0.0, s, 0.0, 1.0, 0.0, -s, 0.0, c;
    return r;
}
Eigen::Matrix3d rz(double angle)
{
    const double c = std::cos(angle), s = std::sin(angle);
    Eigen::Matrix3d r;
    r << c, -s, 0.0, s, c, 0.0, 0.0, 0.0, 1.0;
    return r;
}

/// The local level (east, north, up) at a latitude and longitude, as a
/// rotation from it into the Earth-centred frame: Rz(longitude + 90 deg)
/// Rx(90 deg - latitude), whose columns are east, north and up.
Eigen::Matrix3d ecefFromLocalLevel(double latitude, double longitude)
{
    const double sinLat = std::sin(latitude), cosLat = std::cos(latitude);
    const double sinLon = std::sin(longitude), cosLon = std::cos(longitude);
    Eigen::Matrix3d r;
    r << -sinLon, -sinLat * cosLon, cosLat * cosLon, //
        cosLon, -sinLat * sinLon, cosLat * sinLon, //
        0.0, cosLat, sinLat;
    return r;
}

/// The body attitude in the navigation frame: heading about the down axis,
/// pitch, roll.
Eigen::Matrix3d navigationFromBody(double roll, double pitch, double heading)
{
    return rz(-heading) * ry(-pitch) * rx(roll);
}

/// The fixed parts of the rotation chain: the anchor's local level and the
/// camera's misalignment.
struct RotationContext {
    Eigen::Matrix3d lsrFromEcef;
    Eigen::Matrix3d bodyFromCamera;
    Eigen::Matrix3d quarterTurn = rz(sPi / 2.0);

    RotationContext(const geo::XYZPoint& anchor, const geo::XYZPoint& misalignment)
        : lsrFromEcef(ecefFromLocalLevel(anchor.y, anchor.x).transpose())
        , bodyFromCamera(rx(misalignment.x) * ry(misalignment.y) * rz(misalignment.z))
    {
    }

    /// The rotation from the camera frame into the anchored LSR frame for a
    /// record: the record's local level into the anchor's, the quarter turn
    /// from the navigation frame's axes (north, west, up after the heading)
    /// to east, north, up, the body attitude (heading about the down axis,
    /// pitch, roll), then the misalignment.
    Eigen::Matrix3d lsrFromCamera(const ImuRecord& record) const
    {
        const Eigen::Matrix3d lsrFromNavigation
            = lsrFromEcef * (ecefFromLocalLevel(record.latitude, record.longitude) * quarterTurn);
        return lsrFromNavigation * (navigationFromBody(record.roll, record.pitch, record.heading) * bodyFromCamera);
    }
};

/// Omega, phi and kappa of the rotation, extracted as the photogrammetric
/// convention reads them (R = Rx(omega) Ry(phi) Rz(kappa)), with the
/// corrections of phi for a negative cosine kept as they have always been.
void omegaPhiKappa(const Eigen::Matrix3d& lsrFromCamera, double& omega, double& phi, double& kappa)
{
    // M is read by columns: M[i][j] = R(j, i).
    const Eigen::Matrix3d m = lsrFromCamera.transpose();
    phi = std::asin(m(2, 0));
    const double c = std::cos(phi);
    if (phi > 0.0 && c < 0.0)
        phi = sPi - phi;
    if (phi < 0.0 && c < 0.0)
        phi = -sPi - phi;
    omega = std::atan2(-m(2, 1) / c, m(2, 2) / c);
    kappa = std::atan2(-m(1, 0) / c, m(0, 0) / c);
}

std::array<float, 4> quaternion(double omega, double phi, double kappa)
{
    const double a = -omega / 2.0;
    const double b = -phi / 2.0;
    const double g = -kappa / 2.0;
    const double ca = std::cos(a), sa = std::sin(a);
    const double cb = std::cos(b), sb = std::sin(b);
    const double cg = std::cos(g), sg = std::sin(g);
    return {float(ca * cb * cg + sa * sb * sg), float(sa * cb * cg - ca * sb * sg), float(sa * cb * sg + ca * sb * cg),
            float(ca * cb * sg - sa * sb * cg)};
}

void toFloats(const sensor::EOPStdDevs& sd, float& x, float& y, float& z, float& omega, float& phi, float& kappa)
{
    x = float(sd[0]), y = float(sd[1]), z = float(sd[2]);
    omega = float(sd[3]), phi = float(sd[4]), kappa = float(sd[5]);
}

} // namespace

EopTrajectory::EopTrajectory(const std::string& fileName, bool loadFlag)
    : m_fileName(fileName)
    , m_loadFlag(loadFlag)
{
}

EopTrajectory::EopTrajectory(const ImuTrajectory& imu, Seconds startTime, Seconds endTime,
                             const geo::XYZPoint& anchor, const geo::XYZPoint& misalignment, double zOffset,
                             const QDate& flightDate, util::ProgressInterface* progress)
{
    const double start = startTime.value();
    const double end = endTime.value();
    util::ProgressTask task(progress, "EOP Generation", 0, (long long)std::llround(std::max(0.0, end - start)));
    const double step = imu.frequency();
    if (!(step > 0.0))
        throw std::runtime_error("The trajectory " + imu.fileName() + " has no record interval to sample it at.");

    const auto lsr = geo::coordSysFactory::getInstance().createLSR84(
        geo::XYZPoint(anchor.x * sRadToDeg, anchor.y * sRadToDeg, anchor.z));
    const auto wgs84 = geo::coordSysFactory::getInstance().createGEO84();
    const RotationContext context(anchor, misalignment);

    auto data = std::make_unique<sensor::EOPData>(std::string(), false, true);
    data->setAnchorPoint(anchor);
    data->setFrequency(step);

    // Records are taken a block at a time: attitudes and standard deviations
    // record by record, then the block's positions in one transform, then
    // the block is appended. Only the container grows with the take.
    const double span = end - start;
    const std::size_t expected = span >= 0.0 ? std::size_t(span / step) + 2 : 0;
    data->reserve(int(std::min<std::size_t>(expected, std::size_t(INT_MAX))));
    constexpr std::size_t sBlock = 512;
    std::array<sensor::EOP, sBlock> samples;
    std::array<sensor::EOPStdDevs, sBlock> stdDevs;
    std::array<geo::XYZPoint, sBlock> positions;
    std::size_t filled = 0;
    std::size_t done = 0;
    const auto flush = [&](double t) {
        wgs84->transform(*lsr, std::span<geo::XYZPoint>(positions.data(), filled));
        for (std::size_t i = 0; i < filled; ++i) {
            samples[i].x = positions[i].x;
            samples[i].y = positions[i].y;
            samples[i].z = positions[i].z - zOffset;
            data->append(samples[i], stdDevs[i]);
        }
        done += filled;
        filled = 0;
        if (done % (8 * sBlock) == 0)
            task.report((long long)(t - start));
    };
    ImuRecord record;
    for (double t = start; t <= end; t += step) {
        imu.getPosRecord(seconds(t), record);
        double omega = 0.0, phi = 0.0, kappa = 0.0;
        omegaPhiKappa(context.lsrFromCamera(record), omega, phi, kappa);
        sensor::EOP& sample = samples[filled];
        sample.time = t;
        sample.flags = 0;
        sample.q = quaternion(omega, phi, kappa);
        const auto& sd = record.stdDev();
        // x east, y north, z; then roll, pitch and heading as omega, phi, kappa.
        stdDevs[filled] = {sd[1], sd[0], sd[2], sd[3], sd[4], sd[5]};
        positions[filled] = geo::XYZPoint(record.longitude * sRadToDeg, record.latitude * sRadToDeg, record.height);
        if (++filled == sBlock)
            flush(t);
    }
    if (filled > 0)
        flush(end);
    task.report((long long)std::llround(std::max(0.0, span)));

    data->setPosSource(imu.fileName());
    data->setTmSource("Times from CTG files");
    data->setAppSource("EopTrajectory");
    data->setAbsTime(absoluteTime(flightDate));
    m_data = std::move(data);
}

EopTrajectory::EopTrajectory(const EopTrajectory& other)
    : Validatable(other)
    , Trajectory(other)
    , m_fileName(other.m_fileName)
    , m_loadFlag(other.m_loadFlag)
    , m_qualities(other.m_qualities)
    , m_statistics(other.m_statistics)
    , m_hasQualityMeasures(other.m_hasQualityMeasures)
    , m_eoqStatsRead(other.m_eoqStatsRead)
    , m_qualitiesRead(other.m_qualitiesRead)
    , m_eoqNumSets(other.m_eoqNumSets)
    , m_eoqReserved(other.m_eoqReserved)
{
}

EopTrajectory& EopTrajectory::operator=(EopTrajectory& other)
{
    if (this == &other)
        return *this;
    m_fileName = other.m_fileName;
    m_loadFlag = other.m_loadFlag;
    m_data = std::move(other.m_data);
    m_qualities = other.m_qualities;
    m_statistics = other.m_statistics;
    m_hasQualityMeasures = other.m_hasQualityMeasures;
    m_eoqStatsRead = other.m_eoqStatsRead;
    m_qualitiesRead = other.m_qualitiesRead;
    m_eoqNumSets = other.m_eoqNumSets;
    m_eoqReserved = other.m_eoqReserved;
    return *this;
}

EopTrajectory::~EopTrajectory() = default;

std::uint32_t EopTrajectory::absoluteTime(const QDate& flightDate)
{
    const qint64 days = QDate(1999, 8, 22).daysTo(flightDate);
    const qint64 weeks = days / 7; // toward zero
    return std::uint32_t(weeks * 604800);
}

sensor::EOPData& EopTrajectory::data() const
{
    if (!m_data)
        m_data = std::make_unique<sensor::EOPData>(m_fileName, true, m_loadFlag);
    return *m_data;
}

int EopTrajectory::numSets() const
{
    return data().size();
}

double EopTrajectory::frequency() const
{
    return data().frequency();
}

bool EopTrajectory::hasStdDevs() const
{
    return data().hasStdDevs();
}

void EopTrajectory::stdDevAtIndex(int index, float& x, float& y, float& z, float& omega, float& phi,
                                  float& kappa) const
{
    sensor::EOPStdDevs sd{};
    if (data().stdDevAtIndex(index, sd) != 0)
        throw std::runtime_error("Error reading from EOP.");
    toFloats(sd, x, y, z, omega, phi, kappa);
}

void EopTrajectory::stdDevAtGPS(Seconds gpsTime, float& x, float& y, float& z, float& omega, float& phi,
                                float& kappa) const
{
    sensor::EOPStdDevs sd{};
    if (data().stdDevAtGPS(gpsTime, sd) != 0)
        throw std::runtime_error("Error reading from EOP.");
    toFloats(sd, x, y, z, omega, phi, kappa);
}

void EopTrajectory::setStdDevs(int index, float x, float y, float z, float omega, float phi, float kappa)
{
    // Said as a read, as it always has been, though it is a write.
    if (!data().setStdDevs(index, {x, y, z, omega, phi, kappa}))
        throw std::runtime_error("Error reading from EOP.");
}

void EopTrajectory::setDefaultStdDevs(float x, float y, float z, float omega, float phi, float kappa)
{
    data().setDefaultStdDevs({x, y, z, omega, phi, kappa});
}

void EopTrajectory::getRecord(int index, sensor::EOP& sample) const
{
    if (data().atIndex(index, sample) != 0)
        throw std::runtime_error("Failed to get record.");
}

void EopTrajectory::setRecord(int index, sensor::EOP& sample)
{
    if (!data().setRecord(index, sample))
        throw std::runtime_error("Failed to set EOP record.");
}

void EopTrajectory::atGPS(Seconds gpsTime, sensor::EOP& sample) const
{
    if (data().atGPS(gpsTime, sample) != 0)
        throw std::runtime_error("EOPData::atGPS() failed.");
}

std::uint32_t EopTrajectory::absTime() const
{
    return data().absTime();
}

geo::XYZPoint EopTrajectory::anchorPoint() const
{
    return data().anchorPoint();
}

std::string EopTrajectory::appSource() const
{
    return data().appSource();
}

std::string EopTrajectory::posSource() const
{
    return data().posSource();
}

std::string EopTrajectory::tmSource() const
{
    return data().tmSource();
}

std::string EopTrajectory::filename() const
{
    if (m_data && !m_data->fileName().empty())
        return m_data->fileName();
    if (!m_fileName.empty())
        return m_fileName;
    throw std::runtime_error("EOPData not loaded.");
}

void EopTrajectory::setFileName(const std::string& fileName)
{
    m_fileName = fileName;
    if (m_data)
        m_data->setFileName(fileName);
}

void EopTrajectory::write(const std::string& fileName)
{
    data().write(fileName, 0);
    m_fileName = fileName;
}

void EopTrajectory::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

std::string EopTrajectory::eoqFileName() const
{
    const std::string name = filename();
    const std::size_t folderEnd = name.rfind('/');
    const std::size_t at = name.find(".eop", folderEnd == std::string::npos ? 0 : folderEnd + 1);
    if (at == std::string::npos)
        throw std::runtime_error("Invalid EOQ file name: " + name + ". EOQ file name cannot be derived!");
    return name.substr(0, at) + ".eoq";
}

void EopTrajectory::assignEoqStatsDefaults()
{
    assignEoqDefaults();
}

void EopTrajectory::assignEoqDefaults() const
{
    m_statistics = EoqFile::Statistics();
    m_hasQualityMeasures = false;
    m_eoqNumSets = 0;
    m_eoqReserved = 0;
}

void EopTrajectory::assignEoq(const EoqFile::Header& header) const
{
    m_statistics = header.statistics;
    m_eoqNumSets = header.numSets;
    m_eoqReserved = header.reserved;
    m_hasQualityMeasures = header.numSets > 0;
}

void EopTrajectory::readEoqHeader() const
{
    if (m_eoqStatsRead)
        return;
    assignEoq(EoqFile::readHeader(eoqFileName()));
    m_eoqStatsRead = true;
}

void EopTrajectory::readEoqStats() const
{
    if (m_eoqStatsRead)
        return;
    try {
        readEoqHeader();
    } catch (const std::runtime_error&) {
        // No (readable) EOQ file: no quality measures.
        assignEoqDefaults();
    }
    m_eoqStatsRead = true;
}

void EopTrajectory::readQualities(bool wantRecords) const
{
    if (m_eoqStatsRead && (!wantRecords || m_qualitiesRead))
        return;
    EoqFile::Header header;
    std::vector<QualityRecord> records = EoqFile::read(eoqFileName(), header);
    assignEoq(header);
    m_qualities = std::move(records);
    m_eoqStatsRead = true;
    m_qualitiesRead = true;
}

void EopTrajectory::setQualities(std::vector<QualityRecord> records)
{
    m_statistics = EoqFile::Statistics::of(records);
    m_qualities = std::move(records);
    m_hasQualityMeasures = !m_qualities.empty();
    m_eoqNumSets = std::int32_t(std::min<std::size_t>(m_qualities.size(), INT_MAX));
    m_eoqReserved = 0;
    m_eoqStatsRead = true;
    m_qualitiesRead = true;
}

void EopTrajectory::readQualitiesToWrite(const std::string& eoqName) const
{
    if (!m_qualitiesRead && QFileInfo::exists(QString::fromStdString(eoqName)))
        readQualities(true);
}

void EopTrajectory::writeQualities() const
{
    const std::string name = eoqFileName();
    readQualitiesToWrite(name);
    EoqFile::write(name, m_statistics, m_qualities);
}

void EopTrajectory::writeQualitiesToASCII() const
{
    const std::string name = eoqFileName();
    readQualitiesToWrite(name);
    // eoqFileName() ends in ".eoq".
    EoqFile::writeAscii(name.substr(0, name.size() - 4) + ".asc", m_qualities);
}

int EopTrajectory::numQualitySets() const
{
    if (m_qualitiesRead)
        return int(m_qualities.size());
    readEoqStats();
    return m_eoqNumSets;
}

bool EopTrajectory::hasQualityMeasures() const
{
    readEoqStats();
    return m_hasQualityMeasures;
}

const EopTrajectory::QualityRecord& EopTrajectory::qualityRecord(int index) const
{
    readQualities(true);
    if (index < 0 || std::size_t(index) >= m_qualities.size())
        throw std::runtime_error("Quality record " + std::to_string(index) + " does not exist: there are "
                                 + std::to_string(m_qualities.size()) + ".");
    return m_qualities[std::size_t(index)];
}

float EopTrajectory::ncsAtQualityIndex(int index) const
{
    return qualityRecord(index).ncs;
}

float EopTrajectory::rpeAtQualityIndex(int index) const
{
    return qualityRecord(index).rpe;
}

float EopTrajectory::psrAtQualityIndex(int index) const
{
    return qualityRecord(index).psr;
}

float EopTrajectory::ncsAtGps(Seconds gpsTime) const
{
    return qualityRecord(qualityIndexAtGps(gpsTime)).ncs;
}

float EopTrajectory::rpeAtGps(Seconds gpsTime) const
{
    return qualityRecord(qualityIndexAtGps(gpsTime)).rpe;
}

float EopTrajectory::psrAtGps(Seconds gpsTime) const
{
    return qualityRecord(qualityIndexAtGps(gpsTime)).psr;
}

int EopTrajectory::qualityIndexAtGps(Seconds gpsTime) const
{
    readQualities(true);
    const double t = gpsTime.value();
    const std::vector<QualityRecord>& records = m_qualities;
    if (records.empty())
        throw std::runtime_error("No quality records to look up a GPS time in.");
    if (std::isnan(t))
        throw std::runtime_error("A GPS time that is not a number cannot be looked up in the quality records.");
    const int last = int(std::min<std::size_t>(records.size() - 1, INT_MAX - 1));
    const double t0 = records.front().time;
    const double tLast = records[std::size_t(last)].time;
    // The proportional guess, truncated toward zero, kept to the pairs of
    // records: a time outside them, times all equal, or a guess rounded up
    // to the last record gives no pair by itself; the walk then goes out
    // from the nearest one.
    const double guess = (t - t0) / (tLast - t0) * double(last);
    int i = std::isnan(guess) ? 0 : int(std::clamp(std::trunc(guess), 0.0, double(std::max(last - 1, 0))));
    while (i >= 0 && i < last) {
        const double before = records[std::size_t(i)].time;
        const double after = records[std::size_t(i) + 1].time;
        // Negated, so that a time that is not a number counts as backwards
        // too and the walk always ends.
        if (!(after >= before))
            throw std::runtime_error("EOQ times go backwards");
        if (before <= t && t <= after)
            return t - before < after - t ? i : i + 1;
        if (t < before)
            --i;
        else
            ++i;
    }
    // Before the first record or after the last one.
    return std::clamp(i, 0, last);
}

const EoqFile::Statistics& EopTrajectory::statistics() const
{
    readEoqStats();
    return m_statistics;
}

float EopTrajectory::minNcs() const
{
    return statistics().minNcs;
}

float EopTrajectory::maxNcs() const
{
    return statistics().maxNcs;
}

float EopTrajectory::minRpe() const
{
    return statistics().minRpe;
}

float EopTrajectory::maxRpe() const
{
    return statistics().maxRpe;
}

float EopTrajectory::maxPsr() const
{
    return statistics().maxPsr;
}

float EopTrajectory::rmsNcs() const
{
    return statistics().rmsNcs;
}

float EopTrajectory::rmsRpe() const
{
    return statistics().rmsRpe;
}

float EopTrajectory::rmsPsr() const
{
    return statistics().rmsPsr;
}

std::unique_ptr<geo::coordSys> EopTrajectory::mappingSystem() const
{
    const geo::XYZPoint anchor = anchorPoint();
    return geo::coordSysFactory::getInstance().createLSR84(
        geo::XYZPoint(anchor.x * sRadToDeg, anchor.y * sRadToDeg, anchor.z));
}

void EopTrajectory::computeQualities(L0Image& band, sensor::IdentitySensorModel& model, float accuracy,
                                     util::ProgressInterface* progress)
{
    std::unique_ptr<geo::coordSys> mapping;
    try {
        mapping = mappingSystem();
    } catch (const std::runtime_error&) {
        // An anchor no LSR system can be made at.
    }
    if (!mapping || mapping->name() != "LSR System")
        throw std::runtime_error("Mapping system is not set to LSR (trajectory quality assumes LSR)!");
    model.selectBand(band.bandName());
    if (std::abs(model.lookAngle()) > 0.08726646259971647)
        throw std::runtime_error("Band is not close to nadir and derived trajectory quality would not be meaningful!");

    std::vector<double> lineTimes;
    {
        const std::vector<Seconds>& times = band.cameraTime().values();
        lineTimes.reserve(times.size());
        for (const Seconds& t : times)
            lineTimes.push_back(t.value());
    }

    // The terrain of the region the band can see: the projection centres,
    // widened by their height over the tangent plane times the tangent of
    // the widest ray plus 20 degrees of attitude.
    const sensor::EOPData& eops = data();
    const int count = eops.size();
    double xMin = INFINITY, yMin = INFINITY, xMax = -INFINITY, yMax = -INFINITY, zMax = -INFINITY;
    sensor::EOP sample;
    double previous = -INFINITY;
    for (int i = 0; i < count; ++i) {
        if (eops.atIndex(i, sample) != 0)
            throw std::runtime_error("Failed to get record.");
        if (sample.time < previous)
            throw std::runtime_error("GPS time goes backwards in EOP.");
        previous = sample.time;
        xMin = std::min(xMin, sample.x), xMax = std::max(xMax, sample.x);
        yMin = std::min(yMin, sample.y), yMax = std::max(yMax, sample.y);
        zMax = std::max(zMax, sample.z);
    }
    if (count == 0) {
        setQualities({});
        return;
    }
    const double widest = std::max(std::abs(model.acrossAngle(0.0)),
                                   std::abs(model.acrossAngle(double(model.pixelsPerLine() - 1))))
        + std::abs(model.lookAngle()) + 20.0 * sPi / 180.0;
    const double margin = std::max(0.0, zMax + 500.0) * std::tan(std::min(widest, 80.0 * sPi / 180.0)) + 100.0;
    const std::unique_ptr<dsm::ProjectedElevationSource> terrain
        = dsm::ProjectedElevationSourceFactory::instance->getAvailProjectedSource(
            *mapping, xMin - margin, yMin - margin, xMax + margin, yMax + margin, progress);

    const QualityMeasures::Camera camera{model.pixelsPerLine(), model.pixelSizeMm(), model.focalLengthMm()};
    const QualityMeasures measures(eops, lineTimes, camera);
    const auto makeGround = [&]() -> QualityMeasures::Ground {
        auto intersection = std::make_shared<geometry::RayToSurfaceIntersection>(model, *terrain, double(accuracy));
        return [intersection](const sensor::EOP& eop, double pixel) {
            geo::XYZPoint ground;
            const auto outcome = intersection->intersect(eop, pixel, ground);
            if (outcome != geometry::RayToSurfaceIntersection::Outcome::Hit)
                throw std::runtime_error(std::string("the ray of pixel ") + std::to_string(int(pixel)) + " finds no terrain: "
                                         + geometry::RayToSurfaceIntersection::describe(outcome));
            return Eigen::Vector3d(ground.x, ground.y, ground.z);
        };
    };
    const std::vector<QualityMeasures::Sample> samples = measures.compute(makeGround, progress);
    std::vector<QualityRecord> records;
    records.reserve(samples.size());
    for (const QualityMeasures::Sample& s : samples) {
        QualityRecord r;
        r.time = s.time;
        r.ncs = s.ncs;
        r.rpe = s.rpe;
        r.psr = s.psr;
        records.push_back(r);
    }
    setQualities(std::move(records));
}

} // namespace datamodel
