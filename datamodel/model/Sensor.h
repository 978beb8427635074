#pragma once

#include <platform/geo/XYZPoint.h>
#include <platform/sensor/IdentitySensorModel.h>

#include <optional>
#include <string>
#include <vector>

namespace datamodel {

/// The camera of a recording: its identity and, when a camera description
/// file is known, its calibration: focal length, CCD line geometry per band,
/// misalignment in the aircraft body and the nominal z offset of the mount.
class Sensor {
public:
    /// One CCD line of the camera.
    struct BandGeometry {
        std::string name;           ///< band code, e.g. PANF28A
        int analogChannel = 0;
        int tdiStages = 1;
        double xMm = 0.0;           ///< along-track position of the line in the focal plane
        double yMm = 0.0;           ///< across-track position of the centre of its first pixel
        double lookAngleDeg = 0.0;  ///< atan(x / focal length), forward positive
    };

    /// A sensor known only by identifier and type (no calibration).
    Sensor(std::string id, std::string type, int calibrationVersion = -1);

    /// Reads a camera description file. Throws std::runtime_error "Cannot
    /// open camera file: " + path when there is no file to read. A file that
    /// is there but cannot be taken throws util::InvalidFileError: path + ":
    /// XML nested deeper than 256 elements", "Cannot parse camera file: " +
    /// path + ": " + the parser's message, or "Invalid camera file " + path +
    /// ": " + what is missing or impossible (a serial that is not decimal, a
    /// calibration version below 0, a focal length or pixel size not above 0,
    /// no band, a band described twice, ...).
    static Sensor fromCameraFile(const std::string& path);

    const std::string& id() const { return m_id; }
    const std::string& type() const { return m_type; }
    /// The identifier as a number. Throws "The sensor ID for this camera is
    /// not numeric! (" + id + ")".
    unsigned idAsInt() const;
    /// -1 when unknown.
    int calibrationVersion() const { return m_calibrationVersion; }
    void setCalibrationVersion(int version) { m_calibrationVersion = version; }

    /// Whether the calibration below was read from a camera file.
    bool hasCalibration() const { return m_hasCalibration; }
    const std::string& cameraFile() const { return m_cameraFile; }
    double focalLengthMm() const { return m_focalLengthMm; }
    double pixelSizeMm() const { return m_pixelSizeMm; }
    unsigned pixelsPerLine() const { return m_pixelsPerLine; }
    /// Rotation of the camera in the aircraft body: omega, phi, kappa in radians.
    const geo::XYZPoint& misalignment() const { return m_misalignmentRad; }
    /// The mount offset subtracted from heights in exterior orientation, metres.
    double nominalZOffsetM() const { return m_nominalZOffsetM; }
    const std::vector<BandGeometry>& bands() const { return m_bands; }
    /// The geometry of a band, or null when the camera has no such band.
    const BandGeometry* band(const std::string& name) const;
    /// The camera as a push-broom projection, its first band selected. The
    /// misalignment is not part of it: the exterior orientation holds it.
    /// Throws std::runtime_error "No camera description for sensor " + id
    /// when the sensor has no calibration.
    sensor::IdentitySensorModel sensorModel() const;

private:
    std::string m_id;
    std::string m_type;
    int m_calibrationVersion;
    bool m_hasCalibration = false;
    std::string m_cameraFile;
    double m_focalLengthMm = 0.0;
    double m_pixelSizeMm = 0.0;
    unsigned m_pixelsPerLine = 0;
    geo::XYZPoint m_misalignmentRad;
    double m_nominalZOffsetM = 0.0;
    std::vector<BandGeometry> m_bands;
};

} // namespace datamodel
