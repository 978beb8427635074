#pragma once

#include <platform/geo/XYZPoint.h>
#include <platform/sensor/EOPData.h>

#include <string>
#include <vector>

namespace sensor {

/// The push-broom camera as a projection: the image ray of every pixel of a
/// CCD line, in the camera frame and, through an exterior orientation, in the
/// mapping (LSR) frame.
///
/// Camera frame: x along the flight, y to the left, z up; the camera looks
/// along -z. The focal plane is taken as a virtual image plane in front of
/// the projection centre: pixel j of a band lies at (x, y + j * pixel size)
/// and its image ray is the direction (x, y + j * pixel size, -focal length),
/// so a band with positive x looks forward and a pixel with positive y looks
/// to the left (docs/formats/camera-file.md).
///
/// The model holds plain values, so that it can be made from any camera
/// description. One band is selected at a time (the first one at
/// construction); the queries answer for it. A model is a value: copy it to
/// give each thread its own selection.
class IdentitySensorModel {
public:
    /// One CCD line of the camera.
    struct Band {
        std::string name; ///< band code, e.g. PANN00A
        double xMm = 0.0; ///< along-track position of the line in the focal plane, mm
        double yMm = 0.0; ///< across-track position of the centre of its first pixel, mm
    };

    /// Throws std::runtime_error naming the value when the focal length or
    /// the pixel size is not a finite number above 0, there is no pixel or
    /// no band, a band position is not finite, or two bands share a name.
    IdentitySensorModel(double focalLengthMm, double pixelSizeMm, int pixelsPerLine, std::vector<Band> bands);

    double focalLengthMm() const { return m_focalLengthMm; }
    double pixelSizeMm() const { return m_pixelSizeMm; }
    /// Pixels of a CCD line; pixel j runs from 0 to pixelsPerLine() - 1, the
    /// centre of the first one being at 0.
    int pixelsPerLine() const { return m_pixelsPerLine; }
    const std::vector<Band>& bands() const { return m_bands; }

    /// Selects the band the queries below answer for. Throws
    /// std::runtime_error "The camera has no band " + name when there is none.
    void selectBand(const std::string& name);
    const Band& band() const { return m_bands[m_selected]; }

    /// The selected band's look angle along the flight, radians, forward
    /// positive: atan(x / focal length).
    double lookAngle() const;
    /// The across-track angle of pixel `pixel` of the selected band, radians,
    /// to the left positive: atan((y + pixel * pixel size) / focal length).
    double acrossAngle(double pixel) const;
    /// The unit image ray of pixel `pixel` (fractional pixels allowed) of the
    /// selected band in the camera frame.
    geo::XYZPoint imageRay(double pixel) const;
    /// The image ray of pixel `pixel` at the exterior orientation `eop`: the
    /// projection centre (eop's x, y, z) as `origin` and the unit direction in
    /// the mapping frame as `direction`. The EOP's quaternion turns mapping
    /// directions into the camera frame (docs/exterior-orientation.md); its
    /// conjugate turns the image ray into the mapping frame.
    void rayAt(const EOP& eop, double pixel, geo::XYZPoint& origin, geo::XYZPoint& direction) const;
    /// The across-track size of pixel `pixel` at `rangeM` metres from the
    /// projection centre along its ray, on a plane normal to the ray, m: the
    /// pixel's footprint on level ground seen at right angles. At nadir it is
    /// range * pixel size / focal length.
    double pixelFootprintM(double pixel, double rangeM) const;

private:
    double m_focalLengthMm;
    double m_pixelSizeMm;
    int m_pixelsPerLine;
    std::vector<Band> m_bands;
    std::size_t m_selected = 0;
};

} // namespace sensor
