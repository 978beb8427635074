#pragma once

#include <flightsim/CameraModel.h>
#include <flightsim/FlightPlan.h>
#include <flightsim/GpsTime.h>
#include <flightsim/SessionLayout.h>
#include <flightsim/SimulationConfig.h>

namespace flightsim {

/// Writes the recorder's side of the session: the flight-data XML and the
/// camera description in mm/, and, when asked for, raw/sessionData.xml.
/// All three are written with the Qt DOM, UTF-8, indented by 4.
class FlightDataWriter {
public:
    FlightDataWriter(const SimulationConfig& config, const FlightPlan& plan, const CameraModel& camera,
                     const GpsTime& start, const QString& sessionId, const SessionLayout& layout);

    /// mm/FlightData.xml: session, sensor, flight start, first take time,
    /// and per line its takes (image and dark) with their bands.
    void writeFlightData() const;
    /// mm/Camera.xml: serial, type, calibration version, focal length, CCD
    /// geometry per band, misalignment and nominal z offset.
    void writeCamera() const;
    /// raw/sessionData.xml with the file naming pattern of the band files,
    /// $LINENAME$$BAND$.
    void writeSessionData() const;

    /// The flight-data time form yyyyMMddHHmmss (UTC).
    static QString flightDataTime(const QDateTime& utc);

private:
    const SimulationConfig& m_config;
    const FlightPlan& m_plan;
    const CameraModel& m_camera;
    GpsTime m_start;
    QString m_sessionId;
    const SessionLayout& m_layout;
};

} // namespace flightsim
