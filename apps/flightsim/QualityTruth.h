#pragma once

#include <flightsim/CameraModel.h>
#include <flightsim/FlightPlan.h>
#include <flightsim/GpsTime.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SimulatedTrajectory.h>
#include <flightsim/SimulationConfig.h>
#include <flightsim/Terrain.h>

#include <QJsonObject>

namespace flightsim {

/// The true trajectory quality of a take (docs/quality-measures.md): NCS,
/// RPE and PSR of every scan line of the take's band nearest nadir, from
/// the simulated attitude (interpolated linearly between trajectory
/// records) and the terrain's own height function (not the DEM), reduced
/// to the EOP samples (the first scan line's time, then every trajectory
/// interval) and summarised. Independent of the library: its own rays,
/// ground intersections and polygons.
class QualityTruth {
public:
    QualityTruth(const SimulationConfig& config, const FlightPlan& plan, const LocalPlane& plane,
                 const SimulatedTrajectory& trajectory, const Terrain& terrain, const CameraModel& camera,
                 const GpsTime& start);

    /// `band`, the per-sample values (`samples`: `gpsSec`, `ncs`, `rpe`,
    /// `psr`) and the statistics of `take`.
    QJsonObject take(const TakeWindow& take) const;

private:
    const SimulationConfig& m_config;
    const FlightPlan& m_plan;
    const LocalPlane& m_plane;
    const SimulatedTrajectory& m_trajectory;
    const Terrain& m_terrain;
    const CameraModel& m_camera;
    GpsTime m_start;
};

} // namespace flightsim
