#include <platform/sensor/IdentitySensorModel.h>

#include <Eigen/Geometry>

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace sensor {

namespace {

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

} // namespace

IdentitySensorModel::IdentitySensorModel(double focalLengthMm, double pixelSizeMm, int pixelsPerLine,
                                         std::vector<Band> bands)
    : m_focalLengthMm(focalLengthMm)
    , m_pixelSizeMm(pixelSizeMm)
    , m_pixelsPerLine(pixelsPerLine)
    , m_bands(std::move(bands))
{
    const std::string what = "Invalid sensor model: ";
    if (!std::isfinite(focalLengthMm) || focalLengthMm <= 0.0)
        throw std::runtime_error(what + "focal length " + number(focalLengthMm) + " mm is not above 0");
    if (!std::isfinite(pixelSizeMm) || pixelSizeMm <= 0.0)
        throw std::runtime_error(what + "pixel size " + number(pixelSizeMm) + " mm is not above 0");
    if (pixelsPerLine < 1)
        throw std::runtime_error(what + std::to_string(pixelsPerLine) + " pixels per line");
    if (m_bands.empty())
        throw std::runtime_error(what + "no band");
    for (std::size_t i = 0; i < m_bands.size(); ++i) {
        const Band& band = m_bands[i];
        if (!std::isfinite(band.xMm) || !std::isfinite(band.yMm))
            throw std::runtime_error(what + "band " + band.name + " has no finite position");
        for (std::size_t k = 0; k < i; ++k)
            if (m_bands[k].name == band.name)
                throw std::runtime_error(what + "band " + band.name + " is described twice");
    }
}

void IdentitySensorModel::selectBand(const std::string& name)
{
    for (std::size_t i = 0; i < m_bands.size(); ++i) {
        if (m_bands[i].name == name) {
            m_selected = i;
            return;
        }
    }
    throw std::runtime_error("The camera has no band " + name);
}

double IdentitySensorModel::lookAngle() const
{
    return std::atan(band().xMm / m_focalLengthMm);
}

double IdentitySensorModel::acrossAngle(double pixel) const
{
    return std::atan((band().yMm + pixel * m_pixelSizeMm) / m_focalLengthMm);
}

geo::XYZPoint IdentitySensorModel::imageRay(double pixel) const
{
    const double x = band().xMm;
    const double y = band().yMm + pixel * m_pixelSizeMm;
    const double z = -m_focalLengthMm;
    const double inverseLength = 1.0 / std::sqrt(x * x + y * y + z * z);
    return {x * inverseLength, y * inverseLength, z * inverseLength};
}

void IdentitySensorModel::rayAt(const EOP& eop, double pixel, geo::XYZPoint& origin, geo::XYZPoint& direction) const
{
    // The stored quaternion is single precision: normalised again in double
    // so that the direction stays a unit vector to 1e-16.
    const Eigen::Quaterniond cameraFromLsr =
        Eigen::Quaterniond(eop.q[0], eop.q[1], eop.q[2], eop.q[3]).normalized();
    const geo::XYZPoint ray = imageRay(pixel);
    const Eigen::Vector3d lsr = cameraFromLsr.conjugate() * Eigen::Vector3d(ray.x, ray.y, ray.z);
    origin = {eop.x, eop.y, eop.z};
    direction = {lsr.x(), lsr.y(), lsr.z()};
}

double IdentitySensorModel::pixelFootprintM(double pixel, double rangeM) const
{
    // The pixel's extent across the track, less its part along the ray, seen
    // from the projection centre: pixel size * sqrt(1 - (y / L)^2) / L rad
    // for the image point (x, y, -f) at the distance L.
    const double x = band().xMm;
    const double y = band().yMm + pixel * m_pixelSizeMm;
    const double lengthSquared = x * x + y * y + m_focalLengthMm * m_focalLengthMm;
    return rangeM * m_pixelSizeMm * std::sqrt(1.0 - y * y / lengthSquared) / std::sqrt(lengthSquared);
}

} // namespace sensor
