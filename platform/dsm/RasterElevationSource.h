#pragma once

#include <platform/dsm/ElevationSource.h>

#include <memory>
#include <string>

namespace dsm {

/// An elevation model in a raster file that GDAL reads (GeoTIFF and the
/// rest), in any projected or geographic coordinate system that PROJ knows.
///
/// Band 1 holds the heights: ellipsoidal heights in metres (no geoid is
/// applied: an elevation model of heights above sea level must be turned
/// into ellipsoidal heights first), with the band's scale and offset
/// applied. Cells equal to the band's no-data value, NaN cells and cells
/// that the raster's mask excludes have no height. A cell's value is the
/// height at its centre; between centres heights are interpolated
/// bilinearly, and a point needs all four cells around it. Within half a
/// cell of the raster's edge the edge cells' values hold.
///
/// load() reads the part of the raster that the area needs, with a margin
/// of two cells, into memory once; heights() then works in memory only. A
/// part larger than 32 million cells is read at a coarser spacing, each
/// value the average of the cells it stands for.
class RasterElevationSource : public ElevationSource {
public:
    /// Opens the file and reads its georeferencing. Throws std::runtime_error
    /// "Cannot open elevation model " + path + ": " + GDAL's reason, or
    /// "Invalid elevation model " + path + ": " + what is wrong (no
    /// coordinate system, no georeferencing, a system PROJ cannot use, ...).
    explicit RasterElevationSource(const std::string& path);
    ~RasterElevationSource() override;
    RasterElevationSource(const RasterElevationSource&) = delete;
    RasterElevationSource& operator=(const RasterElevationSource&) = delete;

    const std::string& path() const;
    /// The raster's size in cells.
    int columns() const;
    int rows() const;
    /// The name of the raster's coordinate system.
    std::string coordSysName() const;

    /// The file's path.
    std::string description() const override;
    /// The smaller of the cell's two sides, metres (near `nearDeg` for a
    /// geographic raster).
    double spacingM(const geo::XYZPoint& nearDeg) const override;
    /// Reads the cells of the area (and two more around it). False when the
    /// area lies wholly outside the raster. Throws std::runtime_error
    /// "Cannot read elevation model " + path + ": " + GDAL's reason.
    bool load(std::span<const geo::XYZPoint> outlineDeg) override;
    void heights(std::span<geo::XYZPoint> pointsDeg) const override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace dsm
