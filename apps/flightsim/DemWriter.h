#pragma once

#include <flightsim/FlightPlan.h>
#include <flightsim/LocalPlane.h>
#include <flightsim/SimulationConfig.h>
#include <flightsim/Terrain.h>

#include <QJsonObject>
#include <QString>

namespace flightsim {

/// Writes the terrain under the block as a GeoTIFF (GDAL): one Float32 band
/// of ellipsoidal heights in metres, in a transverse Mercator projection on
/// WGS84 centred on the block (scale 1, no false easting or northing), which
/// stays metric and continuous across the antimeridian. The grid covers
/// every take's footprint with a 500 m margin; cell values are the terrain
/// at the cell centres.
class DemWriter {
public:
    /// Writes `path` whole or not at all; returns the DEM's description for
    /// the truth file. Throws std::runtime_error when GDAL fails.
    static QJsonObject write(const QString& path, const SimulationConfig& config, const FlightPlan& plan,
                             const LocalPlane& plane, const Terrain& terrain);
};

} // namespace flightsim
