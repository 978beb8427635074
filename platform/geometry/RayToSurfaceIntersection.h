#pragma once

#include <platform/dsm/ProjectedElevationSource.h>
#include <platform/geo/XYZPoint.h>
#include <platform/sensor/EOPData.h>
#include <platform/sensor/IdentitySensorModel.h>

namespace geometry {

/// Where a ray from the projection centre first meets the terrain: the
/// bilinear surface of a ProjectedElevationSource, in its mapping system.
///
/// The ray is followed cell by cell through the grid from where it comes
/// down to the terrain's highest node, skipping blocks of cells it passes
/// above, and the first point where it reaches the surface is solved in
/// closed form within its cell; so a grazing ray never passes through a
/// ridge or a step, however thin (docs/ray-intersection.md). Nothing is
/// allocated per ray.
///
/// Keeps a copy of the model (its selected band included) and a reference
/// to the grid, which must outlive it. Cheap to make: a parallel loop makes
/// one per thread.
class RayToSurfaceIntersection {
public:
    /// How an intersection ended.
    enum class Outcome {
        Hit,          ///< the terrain point was found
        NotDownward,  ///< the ray does not point downward
        BelowSurface, ///< the ray starts below the terrain
        Missed,       ///< the ray leaves the grid (or enters it below the surface) without meeting the terrain
        NoData,       ///< the ray passes a cell without heights before meeting the terrain
    };

    /// `accuracyM`: the clearance below which a ray that passes over the
    /// surface without crossing it counts as touching it (at its closest
    /// point). The crossing itself is exact to rounding (micrometres).
    /// Throws std::runtime_error when the accuracy is not a finite number
    /// above 0.
    RayToSurfaceIntersection(const sensor::IdentitySensorModel& model, const dsm::ProjectedElevationSource& surface,
                             double accuracyM);
    /// A grid that would be gone before the first ray is refused at compile time.
    RayToSurfaceIntersection(const sensor::IdentitySensorModel&, dsm::ProjectedElevationSource&&, double) = delete;

    /// The first terrain point on the ray from `origin` along `direction`
    /// (mapping coordinates; any length above 0) as `ground`, which is left
    /// as it was unless the outcome is Hit.
    Outcome intersect(const geo::XYZPoint& origin, const geo::XYZPoint& direction, geo::XYZPoint& ground) const;
    /// The same for the ray of pixel `pixel` of the model's selected band at
    /// the exterior orientation `eop`.
    Outcome intersect(const sensor::EOP& eop, double pixel, geo::XYZPoint& ground) const;

    /// A few words for an outcome, for messages ("the ray leaves the
    /// elevation grid without meeting the terrain", ...).
    static const char* describe(Outcome outcome);

    const sensor::IdentitySensorModel& model() const { return m_model; }
    const dsm::ProjectedElevationSource& surface() const { return m_surface; }
    double accuracy() const { return m_accuracyM; }

private:
    sensor::IdentitySensorModel m_model;
    const dsm::ProjectedElevationSource& m_surface;
    double m_accuracyM;
};

} // namespace geometry
