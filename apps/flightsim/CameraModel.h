#pragma once

#include <flightsim/SimulationConfig.h>

#include <QString>

#include <vector>

namespace flightsim {

/// One band (CCD line) of the camera.
struct BandSpec {
    QString name;            ///< band code, e.g. PANF28A
    QString channel;         ///< RED, BLU, GRN, PAN or NIR
    QChar direction;         ///< F forward, B backward, N nadir
    QChar line;              ///< A or B (staggered lines)
    int analogChannel = 0;   ///< position in the band list
    int tdiStages = 1;
    double lookAngleRad = 0.0; ///< along track, positive forward: atan(ccdXMm / focal length)
    double ccdXMm = 0.0;     ///< along-track position of the CCD line in the focal plane
    double ccdYMm = 0.0;     ///< across-track position of the first pixel's centre
};

/// The camera of a simulation: focal length, CCD geometry and the bands.
/// A band code's two digits are its look angle in degrees, forward for F
/// and N, backward for B; a B line sits two pixels further forward and half
/// a pixel across from its A line.
class CameraModel {
public:
    explicit CameraModel(const SimulationConfig& config);

    const std::vector<BandSpec>& bands() const { return m_bands; }
    double focalLengthMm() const { return m_focalLengthMm; }
    double pixelSizeMm() const { return m_pixelSizeMm; }
    int ccdPixels() const { return m_ccdPixels; }
    /// Across-track angle of CCD pixel `pixel` (radians, positive to the left).
    double acrossAngleRad(const BandSpec& band, double pixel) const;

private:
    double m_focalLengthMm;
    double m_pixelSizeMm;
    int m_ccdPixels;
    std::vector<BandSpec> m_bands;
};

} // namespace flightsim
