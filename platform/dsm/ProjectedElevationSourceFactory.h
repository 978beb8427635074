#pragma once

#include <platform/dsm/ProjectedElevationSource.h>
#include <platform/geo/coordSys.h>
#include <platform/util/ProgressInterface.h>

#include <memory>
#include <string>

namespace dsm {

/// Hands out the terrain of a region in a mapping system: from the
/// configured elevation model (a raster file GDAL reads), or, when none is
/// configured, from a flat surface at a constant ellipsoidal height (0 m
/// unless set).
///
/// `instance` points at the process's factory, which the caller configures
/// before the work starts (the factory is not locked; configure it from one
/// thread). A caller may point it at a factory of its own.
class ProjectedElevationSourceFactory {
public:
    static ProjectedElevationSourceFactory* instance;

    /// The elevation model's path; empty for the flat surface.
    void setElevationModel(const std::string& path) { m_elevationModel = path; }
    const std::string& elevationModel() const { return m_elevationModel; }
    /// The flat surface's ellipsoidal height, m.
    void setFlatHeight(double heightM) { m_flatHeightM = heightM; }
    double flatHeight() const { return m_flatHeightM; }
    /// The grid's node spacing, m; 0 (the default) takes the elevation
    /// model's own.
    void setGridSpacing(double spacingM) { m_gridSpacingM = spacingM; }
    double gridSpacing() const { return m_gridSpacingM; }

    /// The terrain of the region [xMin, xMax] x [yMin, yMax] of `mapping` as
    /// a grid (ProjectedElevationSource::build). A region the elevation model
    /// covers in part is accepted: the grid holds no heights (and rays find
    /// no terrain) where the model has none; coveredFraction() tells how
    /// much it holds. Throws std::runtime_error: the model's open and read
    /// errors; "The elevation model " + path + " does not cover the region "
    /// + the region when it holds no height there.
    std::unique_ptr<ProjectedElevationSource> getAvailProjectedSource(
        const geo::coordSys& mapping, double xMin, double yMin, double xMax, double yMax,
        util::ProgressInterface* progress = nullptr) const;

    /// The elevation model in `folder`: its first file named *.tif or *.tiff
    /// (any case) in name order, or an empty string when there is none.
    static std::string findElevationModel(const std::string& folder);

private:
    std::string m_elevationModel;
    double m_flatHeightM = 0.0;
    double m_gridSpacingM = 0.0;
};

} // namespace dsm
