#pragma once

#include <platform/geo/XYZPoint.h>

#include <span>
#include <string>

namespace dsm {

/// Terrain heights by geographic position: ellipsoidal heights (WGS84) in
/// metres at longitude and latitude. A source is asked in batches; it is not
/// shared between threads (ProjectedElevationSource is what threads share).
class ElevationSource {
public:
    virtual ~ElevationSource() = default;

    /// What the heights come from, for messages: a file's path, or the flat
    /// surface's height.
    virtual std::string description() const = 0;
    /// The spacing of the source's own heights near `nearDeg` (longitude and
    /// latitude in degrees), metres; 0 for a source without a grid of its own.
    virtual double spacingM(const geo::XYZPoint& nearDeg) const = 0;
    /// Makes the heights of the area that the outline `outlineDeg` (points
    /// along its border: longitude, latitude in degrees) encloses ready to be
    /// asked for; a raster source reads that part of its file into memory,
    /// once. False when the source holds nothing within the area. Throws
    /// std::runtime_error naming the source when it cannot be read.
    virtual bool load(std::span<const geo::XYZPoint> outlineDeg) = 0;
    /// Sets the z of every point (x longitude, y latitude in degrees) to the
    /// terrain's ellipsoidal height there in metres, or to NaN where the
    /// source has no height (outside the area loaded, no-data).
    virtual void heights(std::span<geo::XYZPoint> pointsDeg) const = 0;
};

} // namespace dsm
