#include <flightsim/CameraModel.h>

#include <cmath>
#include <numbers>

namespace flightsim {

CameraModel::CameraModel(const SimulationConfig& config)
    : m_focalLengthMm(config.focalLengthMm)
    , m_pixelSizeMm(config.pixelSizeMm)
    , m_ccdPixels(config.ccdPixels)
{
    for (int i = 0; i < config.bands.size(); ++i) {
        const QString& code = config.bands[i];
        BandSpec band;
        band.name = code;
        band.channel = code.left(3);
        band.direction = code.at(3);
        band.line = code.at(6);
        band.analogChannel = i;
        band.tdiStages = band.channel == QLatin1String("PAN") ? 1 : 2;
        const double degrees = code.mid(4, 2).toInt() * (band.direction == QLatin1Char('B') ? -1.0 : 1.0);
        band.ccdXMm = m_focalLengthMm * std::tan(degrees * std::numbers::pi / 180.0);
        band.ccdYMm = -0.5 * (m_ccdPixels - 1) * m_pixelSizeMm;
        if (band.line == QLatin1Char('B')) {
            band.ccdXMm += 2.0 * m_pixelSizeMm;
            band.ccdYMm += 0.5 * m_pixelSizeMm;
        }
        band.lookAngleRad = std::atan(band.ccdXMm / m_focalLengthMm);
        m_bands.push_back(band);
    }
}

double CameraModel::acrossAngleRad(const BandSpec& band, double pixel) const
{
    return std::atan((band.ccdYMm + pixel * m_pixelSizeMm) / m_focalLengthMm);
}

} // namespace flightsim
