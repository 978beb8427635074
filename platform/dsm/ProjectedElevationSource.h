#pragma once

#include <platform/dsm/ElevationSource.h>
#include <platform/geo/coordSys.h>
#include <platform/util/ProgressInterface.h>

#include <memory>
#include <string>
#include <vector>

namespace dsm {

/// The terrain in a mapping system, on a regular grid in memory: node (i, k)
/// lies at x = x0 + i * spacing, y = y0 + k * spacing of the mapping system
/// and holds the mapping z of the terrain point whose mapping x and y are
/// exactly the node's. Between nodes the surface is bilinear. Nodes without
/// a height (no-data in the source, outside it) hold NaN; the cells around
/// them are not covered.
///
/// In a local space-rectangular (LSR) system the z of a terrain point is not
/// its ellipsoidal height, and its x and y move with its height (the Earth's
/// curvature: 0.4 m at 5 km from the anchor and 500 m up). build() finds
/// each node's terrain point by iteration, so the grid is right in any
/// mapping system (docs/elevation-models.md).
///
/// Immutable once made: any number of threads may read it at once.
class ProjectedElevationSource {
public:
    /// A grid given node by node: `heights` holds columns x rows values, row
    /// by row from y0 upward, NaN for no height. `description` says where the
    /// heights came from. Throws std::runtime_error when the grid has fewer
    /// than 2 x 2 nodes, the spacing is not above 0 or the values do not
    /// match the size.
    ProjectedElevationSource(double x0, double y0, double spacingM, int columns, int rows,
                             std::vector<float> heights, std::string description);

    /// Builds the grid over the region [xMin, xMax] x [yMin, yMax] of
    /// `mapping` (a projected or LSR system, metres), one node spacing more
    /// on every side, from `source`. `spacingM` 0 takes the source's own
    /// spacing near the region's centre (100 m for a source without one, such
    /// as a flat surface: the curvature between nodes stays below half a
    /// millimetre); a grid of more than 16 million nodes is made coarser to
    /// fit. Throws std::runtime_error: the region or system is unfit; "The
    /// elevation model " + source + " does not cover the region " + region
    /// when the source holds no height in it; the source's read errors.
    static std::unique_ptr<ProjectedElevationSource> build(ElevationSource& source, const geo::coordSys& mapping,
                                                           double xMin, double yMin, double xMax, double yMax,
                                                           double spacingM = 0.0,
                                                           util::ProgressInterface* progress = nullptr);

    /// The mapping z of the terrain at mapping (x, y), m; NaN where the grid
    /// does not cover the point.
    double height(double x, double y) const;
    /// Whether height(x, y) is a number.
    bool covers(double x, double y) const;

    double x0() const { return m_x0; }
    double y0() const { return m_y0; }
    double xMax() const { return m_x0 + (m_columns - 1) * m_spacingM; }
    double yMax() const { return m_y0 + (m_rows - 1) * m_spacingM; }
    double spacingM() const { return m_spacingM; }
    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    /// The lowest and highest node heights (NaN when no node has one).
    double minHeight() const { return m_minHeight; }
    double maxHeight() const { return m_maxHeight; }
    /// The share of nodes that hold a height, 0 to 1.
    double coveredFraction() const { return m_coveredFraction; }
    /// Where the heights came from: the source's description.
    const std::string& description() const { return m_description; }

    /// The node heights, row by row (index k * columns() + i).
    const std::vector<float>& nodeHeights() const { return m_heights; }
    /// Nodes per side of a block (blocks of cells that share a maximum).
    static constexpr int sBlockCells = 8;
    /// The highest node of every block of sBlockCells x sBlockCells cells,
    /// the nodes on its border included; +infinity for a block with a node
    /// without height. Row by row, blockColumns() per row.
    const std::vector<float>& blockMaxima() const { return m_blockMaxima; }
    int blockColumns() const { return m_blockColumns; }

private:
    double m_x0;
    double m_y0;
    double m_spacingM;
    int m_columns;
    int m_rows;
    std::vector<float> m_heights;
    std::string m_description;
    double m_minHeight = 0.0;
    double m_maxHeight = 0.0;
    double m_coveredFraction = 0.0;
    std::vector<float> m_blockMaxima;
    int m_blockColumns = 0;
};

} // namespace dsm
