#pragma once

#include <flightsim/FlightPlan.h>
#include <flightsim/GpsTime.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SimulatedTrajectory.h>
#include <flightsim/SimulationConfig.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <array>

namespace flightsim {

/// The truth file: everything a test needs to judge what the library makes
/// of the simulated session, as JSON. This class also computes the true
/// exterior orientation of the camera at a few trajectory records per take.
class TruthWriter {
public:
    /// The camera's exterior orientation at one trajectory record.
    struct Orientation {
        double gpsSec = 0.0;
        double flightSec = 0.0;
        double latDeg = 0.0, lonDeg = 0.0, heightM = 0.0;
        double rollRad = 0.0, pitchRad = 0.0, headingRad = 0.0;
        double xM = 0.0, yM = 0.0, zM = 0.0;          ///< LSR at the anchor, z less the nominal z offset
        double omegaRad = 0.0, phiRad = 0.0, kappaRad = 0.0;
    };

    /// The rotation from the camera frame to the LSR frame (east, north, up)
    /// at the anchor (latitude, longitude in radians) for a record at
    /// (latRad, lonRad) with the body attitude roll, pitch, heading and the
    /// camera misalignment (omega, phi, kappa about the body's forward, left
    /// and up axes):
    ///   lsrFromEcef(anchor) * ecefFromEnu(record) * Rz(pi/2)
    ///   * Rz(-heading) * Ry(-pitch) * Rx(roll) * Rx(m0) * Ry(m1) * Rz(m2).
    /// Rz(pi/2) turns north/west/up into east/north/up; the body frame is
    /// forward/left/up, the camera frame x along flight, y left, z up (the
    /// camera looks along -z).
    static std::array<std::array<double, 3>, 3> lsrFromCamera(double anchorLatRad, double anchorLonRad,
                                                              double latRad, double lonRad, double rollRad,
                                                              double pitchRad, double headingRad,
                                                              const std::array<double, 3>& misalignmentRad);
    /// Omega, phi, kappa of R = Rx(omega) * Ry(phi) * Rz(kappa).
    static std::array<double, 3> omegaPhiKappa(const std::array<std::array<double, 3>, 3>& r);

    /// The exterior orientation at trajectory record `k` for a take anchored
    /// at (anchorLatRad, anchorLonRad, height 0).
    static Orientation orientation(const SimulationConfig& config, const SimulatedTrajectory& trajectory,
                                   const GpsTime& start, std::size_t k, double anchorLatRad, double anchorLonRad);

    /// Five records per take from its first line to its last (the first
    /// record at or after the first line, the last at or before the last
    /// line, three evenly between), with the take's anchor: the position at
    /// its first scan line, height 0.
    static QJsonObject exteriorOrientation(const SimulationConfig& config, const FlightPlan& plan,
                                           const LocalPlane& plane, const SimulatedTrajectory& trajectory,
                                           const GpsTime& start, const TakeWindow& take, std::size_t recordsWritten);

    static void write(const QString& path, const QJsonObject& truth);
};

} // namespace flightsim
