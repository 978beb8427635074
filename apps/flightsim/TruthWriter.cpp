#include <flightsim/TruthWriter.h>

#include <flightsim/AtomicFile.h>
#include <flightsim/Wgs84.h>

#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace flightsim {

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;
constexpr double sRadToDeg = 180.0 / std::numbers::pi;

Matrix multiply(const Matrix& a, const Matrix& b)
{
    Matrix c{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                c[i][j] += a[i][k] * b[k][j];
    return c;
}

Matrix rx(double a)
{
    const double c = std::cos(a), s = std::sin(a);
    return Matrix{{{1, 0, 0}, {0, c, -s}, {0, s, c}}};
}

Matrix ry(double a)
{
    const double c = std::cos(a), s = std::sin(a);
    return Matrix{{{c, 0, s}, {0, 1, 0}, {-s, 0, c}}};
}

Matrix rz(double a)
{
    const double c = std::cos(a), s = std::sin(a);
    return Matrix{{{c, -s, 0}, {s, c, 0}, {0, 0, 1}}};
}

// Columns: the east, north and up axes at (lat, lon) in ECEF.
Matrix ecefFromEnu(double latRad, double lonRad)
{
    const Vec3 e = Wgs84::east(lonRad), n = Wgs84::north(latRad, lonRad), u = Wgs84::up(latRad, lonRad);
    return Matrix{{{e.x, n.x, u.x}, {e.y, n.y, u.y}, {e.z, n.z, u.z}}};
}

Matrix transposed(const Matrix& m)
{
    Matrix t{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            t[i][j] = m[j][i];
    return t;
}

} // namespace

Matrix TruthWriter::lsrFromCamera(double anchorLatRad, double anchorLonRad, double latRad, double lonRad,
                                  double rollRad, double pitchRad, double headingRad,
                                  const std::array<double, 3>& misalignmentRad)
{
    Matrix m = transposed(ecefFromEnu(anchorLatRad, anchorLonRad));
    m = multiply(m, ecefFromEnu(latRad, lonRad));
    m = multiply(m, rz(0.5 * std::numbers::pi));
    m = multiply(m, rz(-headingRad));
    m = multiply(m, ry(-pitchRad));
    m = multiply(m, rx(rollRad));
    m = multiply(m, rx(misalignmentRad[0]));
    m = multiply(m, ry(misalignmentRad[1]));
    return multiply(m, rz(misalignmentRad[2]));
}

std::array<double, 3> TruthWriter::omegaPhiKappa(const Matrix& r)
{
    const double phi = std::asin(std::clamp(r[0][2], -1.0, 1.0));
    return {std::atan2(-r[1][2], r[2][2]), phi, std::atan2(-r[0][1], r[0][0])};
}

TruthWriter::Orientation TruthWriter::orientation(const SimulationConfig& config,
                                                  const SimulatedTrajectory& trajectory, const GpsTime& start,
                                                  std::size_t k, double anchorLatRad, double anchorLonRad)
{
    Orientation o;
    o.flightSec = trajectory.timeSec(k);
    o.gpsSec = GpsTime::wrap(start.secondsOfWeek + o.flightSec);
    const double lat = trajectory.latRad()[k];
    const double lon = trajectory.lonRad()[k];
    o.latDeg = lat * sRadToDeg;
    o.lonDeg = lon * sRadToDeg;
    o.heightM = trajectory.heightM()[k];
    o.rollRad = trajectory.rollRad()[k];
    o.pitchRad = trajectory.pitchRad()[k];
    o.headingRad = trajectory.headingRad()[k];

    const Vec3 offset = Wgs84::toEcef(lat, lon, o.heightM) - Wgs84::toEcef(anchorLatRad, anchorLonRad, 0.0);
    o.xM = offset.dot(Wgs84::east(anchorLonRad));
    o.yM = offset.dot(Wgs84::north(anchorLatRad, anchorLonRad));
    o.zM = offset.dot(Wgs84::up(anchorLatRad, anchorLonRad)) - config.nominalZOffsetM;

    std::array<double, 3> misalignment{};
    for (std::size_t i = 0; i < 3; ++i)
        misalignment[i] = config.misalignmentDeg[i] / sRadToDeg;
    const auto angles = omegaPhiKappa(
        lsrFromCamera(anchorLatRad, anchorLonRad, lat, lon, o.rollRad, o.pitchRad, o.headingRad, misalignment));
    o.omegaRad = angles[0];
    o.phiRad = angles[1];
    o.kappaRad = angles[2];
    return o;
}

QJsonObject TruthWriter::exteriorOrientation(const SimulationConfig& config, const FlightPlan& plan,
                                             const LocalPlane& plane, const SimulatedTrajectory& trajectory,
                                             const GpsTime& start, const TakeWindow& take, std::size_t recordsWritten)
{
    const PlaneState first = plan.at(take.startSec);
    double anchorLat = 0.0, anchorLon = 0.0;
    plane.toGeodetic(first.xM, first.yM, anchorLat, anchorLon);

    const double rate = trajectory.rateHz();
    const auto firstRecord = (long long)std::ceil(take.startSec * rate - 1e-9);
    const auto lastRecord = std::max(firstRecord, (long long)std::floor(take.lastLineSec() * rate + 1e-9));
    QJsonArray samples;
    for (int i = 0; i < 5; ++i) {
        const auto k = std::size_t(firstRecord + (lastRecord - firstRecord) * i / 4);
        const Orientation o = orientation(config, trajectory, start, k, anchorLat, anchorLon);
        samples.append(QJsonObject{
            {QStringLiteral("record"), qint64(k)},
            {QStringLiteral("inTrajectoryFiles"), k < recordsWritten},
            {QStringLiteral("gpsSec"), o.gpsSec},
            {QStringLiteral("flightSec"), o.flightSec},
            {QStringLiteral("lonDeg"), o.lonDeg},
            {QStringLiteral("latDeg"), o.latDeg},
            {QStringLiteral("heightM"), o.heightM},
            {QStringLiteral("rollRad"), o.rollRad},
            {QStringLiteral("pitchRad"), o.pitchRad},
            {QStringLiteral("headingRad"), o.headingRad},
            {QStringLiteral("xM"), o.xM},
            {QStringLiteral("yM"), o.yM},
            {QStringLiteral("zM"), o.zM},
            {QStringLiteral("omegaRad"), o.omegaRad},
            {QStringLiteral("phiRad"), o.phiRad},
            {QStringLiteral("kappaRad"), o.kappaRad},
        });
    }
    return QJsonObject{
        {QStringLiteral("anchor"), QJsonObject{{QStringLiteral("lonDeg"), anchorLon * sRadToDeg},
                                               {QStringLiteral("latDeg"), anchorLat * sRadToDeg},
                                               {QStringLiteral("heightM"), 0.0}}},
        {QStringLiteral("samples"), samples},
    };
}

void TruthWriter::write(const QString& path, const QJsonObject& truth)
{
    AtomicFile::writeWhole(path, QJsonDocument(truth).toJson(QJsonDocument::Indented));
}

} // namespace flightsim
