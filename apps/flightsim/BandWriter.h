#pragma once

#include <flightsim/CameraClock.h>
#include <flightsim/CameraModel.h>
#include <flightsim/FlightPlan.h>
#include <flightsim/GpsTime.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SessionLayout.h>
#include <flightsim/SimulationConfig.h>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <vector>

namespace flightsim {

/// Writes the files of every band of a take: the .info file and the CT,
/// integration-time and TDI files in raw/, the pixel file in images/. All
/// bands of a take share the camera's line timing: scan line i is exposed at
/// GPS time take start + i / line rate, and its CT value is the camera
/// clock's reading then. The per-band faults (ct-backwards, saw-tooth,
/// missing-sensor-id, integration-time) change one band of the fault take.
class BandWriter {
public:
    BandWriter(const SimulationConfig& config, const FlightPlan& plan, const LocalPlane& plane,
               const CameraModel& camera, const CameraClock& clock, const GpsTime& start,
               const SessionLayout& layout);

    /// Writes every band of `take`; returns the take's truth (times, positions,
    /// bands) and appends the details of injected faults to `faults`. The
    /// positions are the aircraft's at the first and last scan line; the
    /// altitude written is the nominal flying height (the recorder's own
    /// estimate, which nothing reads).
    QJsonObject writeTake(const TakeWindow& take, QJsonArray& faults) const;

    /// The .info angle form degrees:minutes:seconds with four decimals,
    /// e.g. -12:30:15.5000 (a minus sign on the degrees, also for -0).
    static QString sexagesimal(double degrees);
    /// The .info date form "d MMMM yyyy, HH:mm:ss" in English, UTC.
    static QString infoDate(const QDateTime& utc);
    /// The integration time recorded for the band at `analogChannel` of
    /// `take`, in whole microseconds (25 ms for the integration-time fault).
    static int integrationTimeUs(const SimulationConfig& config, const TakeWindow& take, int analogChannel,
                                 int bandCount);

    static constexpr double sSawToothStepFactor = 0.98;
    static constexpr int sBackwardLines = 4;
    static constexpr int sBadIntegrationTimeUs = 25000;
    static constexpr int sCtHeaderBytes = 16;
    static constexpr int sPixelHeaderBytes = 32;

private:
    void writeInfo(const TakeWindow& take, const BandSpec& band, const QString& base, bool withSensorId,
                   int integrationTimeUs) const;
    void writeCt(const QString& path, const std::vector<double>& ct) const;
    void writeRun(const QString& path, std::int32_t value) const;
    void writePixels(const QString& path, const TakeWindow& take, const BandSpec& band) const;

    const SimulationConfig& m_config;
    const FlightPlan& m_plan;
    const LocalPlane& m_plane;
    const CameraModel& m_camera;
    CameraClock m_clock;
    GpsTime m_start;
    QDateTime m_startUtc;
    const SessionLayout& m_layout;
};

} // namespace flightsim
