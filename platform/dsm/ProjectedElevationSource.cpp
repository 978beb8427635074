#include <platform/dsm/ProjectedElevationSource.h>

#include <platform/geo/coordSysFactory.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <stdexcept>

namespace dsm {

namespace {

/// The node spacing for a source without a grid of its own (a flat
/// surface): the tangent plane's curvature within a cell, at most s^2 / 4R
/// at its centre, stays below half a millimetre.
constexpr double sPlainSpacingM = 100.0;
/// Nodes of a grid at most (64 MB of heights).
constexpr double sMaxNodes = 16.0 * 1024 * 1024;
/// Nodes transformed and asked for their heights at a time.
constexpr std::size_t sBatchNodes = 65536;
/// A node's terrain point is found when a step moves it by less than this.
constexpr double sConvergedM = 1e-3;
/// Steps at most; each shrinks the error by the terrain's slope times the
/// angle between the mapping z and the ellipsoid's normal (1e-3 at 6 km
/// from an LSR anchor), so two or three do.
constexpr int sMaxSteps = 8;
/// The heights between which terrain points are sought when the part of the
/// source to read is chosen, m.
constexpr double sLowestTerrainM = -500.0;
constexpr double sHighestTerrainM = 9000.0;
/// Points per side of the outline that chooses the part to read.
constexpr int sOutlinePointsPerSide = 64;

std::string metres(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

std::string regionText(const geo::coordSys& mapping, double xMin, double yMin, double xMax, double yMax)
{
    return "x " + metres(xMin) + " to " + metres(xMax) + " m, y " + metres(yMin) + " to " + metres(yMax)
        + " m of the " + mapping.name();
}

/// The mapping z of the terrain point at every node's mapping x and y, NaN
/// where the source has no height. A node's point starts at z 0 and moves
/// along the mapping z by what it lies above or below the terrain (its
/// ellipsoidal height against the source's height at its longitude and
/// latitude) until a step is shorter than sConvergedM.
std::vector<float> terrainAtNodes(const ElevationSource& source, const geo::coordSys& mapping,
                                  const geo::coordSys& wgs84, double x0, double y0, double spacing, int columns,
                                  int rows, util::ProgressInterface* progress)
{
    std::vector<float> heights(std::size_t(columns) * std::size_t(rows));
    util::ProgressTask task(progress, "Elevation grid", 0, (long long)heights.size());
    std::vector<geo::XYZPoint> points(sBatchNodes);
    std::vector<std::size_t> open(sBatchNodes);
    std::vector<double> z(sBatchNodes), ellipsoidal(sBatchNodes);
    for (std::size_t start = 0; start < heights.size(); start += sBatchNodes) {
        const std::size_t count = std::min(sBatchNodes, heights.size() - start);
        for (std::size_t n = 0; n < count; ++n) {
            open[n] = start + n;
            z[n] = 0.0;
        }
        std::size_t left = count;
        for (int step = 0; step < sMaxSteps && left > 0; ++step) {
            for (std::size_t n = 0; n < left; ++n) {
                const std::size_t index = open[n];
                points[n] = {x0 + double(index % std::size_t(columns)) * spacing,
                             y0 + double(index / std::size_t(columns)) * spacing, z[n]};
            }
            const std::span<geo::XYZPoint> batch(points.data(), left);
            mapping.transform(wgs84, batch);
            for (std::size_t n = 0; n < left; ++n)
                ellipsoidal[n] = points[n].z;
            source.heights(batch);
            std::size_t kept = 0;
            for (std::size_t n = 0; n < left; ++n) {
                const double terrain = points[n].z;
                if (std::isnan(terrain)) {
                    heights[open[n]] = std::numeric_limits<float>::quiet_NaN();
                    continue;
                }
                const double move = terrain - ellipsoidal[n];
                if (std::abs(move) < sConvergedM || step + 1 == sMaxSteps) {
                    heights[open[n]] = float(z[n] + move);
                    continue;
                }
                open[kept] = open[n];
                z[kept] = z[n] + move;
                ++kept;
            }
            left = kept;
        }
        task.report((long long)(start + count));
    }
    return heights;
}

} // namespace

ProjectedElevationSource::ProjectedElevationSource(double x0, double y0, double spacingM, int columns, int rows,
                                                   std::vector<float> heights, std::string description)
    : m_x0(x0)
    , m_y0(y0)
    , m_spacingM(spacingM)
    , m_columns(columns)
    , m_rows(rows)
    , m_heights(std::move(heights))
    , m_description(std::move(description))
{
    auto invalid = [&](const std::string& what) {
        return std::runtime_error("Invalid elevation grid from " + m_description + ": " + what);
    };
    const std::string size = std::to_string(columns) + " x " + std::to_string(rows) + " nodes";
    if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(spacingM) || spacingM <= 0.0)
        throw invalid("origin and spacing must be finite, the spacing above 0");
    if (columns < 2 || rows < 2)
        throw invalid(size + ", at least 2 x 2 needed");
    if (m_heights.size() != std::size_t(columns) * std::size_t(rows))
        throw invalid(std::to_string(m_heights.size()) + " heights for " + size);

    double low = std::numeric_limits<double>::infinity(), high = -low;
    std::size_t covered = 0;
    for (const float h : m_heights) {
        if (std::isnan(h))
            continue;
        if (std::isinf(h))
            throw invalid("an infinite height");
        low = std::min(low, double(h));
        high = std::max(high, double(h));
        ++covered;
    }
    m_minHeight = covered ? low : std::nan("");
    m_maxHeight = covered ? high : std::nan("");
    m_coveredFraction = double(covered) / double(m_heights.size());

    // The blocks' maxima let a ray skip a block it passes above at once.
    m_blockColumns = (columns - 1 + sBlockCells - 1) / sBlockCells;
    const int blockRows = (rows - 1 + sBlockCells - 1) / sBlockCells;
    m_blockMaxima.assign(std::size_t(m_blockColumns) * std::size_t(blockRows), -std::numeric_limits<float>::infinity());
    for (int k = 0; k < rows; ++k) {
        // A node on a block's border belongs to the blocks on both sides.
        const int bkLow = std::max(0, (k - 1) / sBlockCells);
        const int bkHigh = std::min(blockRows - 1, k / sBlockCells);
        for (int i = 0; i < columns; ++i) {
            float h = m_heights[std::size_t(k) * std::size_t(columns) + std::size_t(i)];
            if (std::isnan(h))
                h = std::numeric_limits<float>::infinity();
            const int biLow = std::max(0, (i - 1) / sBlockCells);
            const int biHigh = std::min(m_blockColumns - 1, i / sBlockCells);
            for (int bk = bkLow; bk <= bkHigh; ++bk)
                for (int bi = biLow; bi <= biHigh; ++bi) {
                    float& top = m_blockMaxima[std::size_t(bk) * std::size_t(m_blockColumns) + std::size_t(bi)];
                    top = std::max(top, h);
                }
        }
    }
}

double ProjectedElevationSource::height(double x, double y) const
{
    const double u = (x - m_x0) / m_spacingM;
    const double v = (y - m_y0) / m_spacingM;
    if (!(u >= 0.0 && u <= m_columns - 1 && v >= 0.0 && v <= m_rows - 1))
        return std::nan("");
    const int i = std::min(int(u), m_columns - 2);
    const int k = std::min(int(v), m_rows - 2);
    const double fu = u - i, fv = v - k;
    const float* row = m_heights.data() + std::size_t(k) * std::size_t(m_columns) + std::size_t(i);
    const float* next = row + m_columns;
    return (1.0 - fv) * ((1.0 - fu) * row[0] + fu * row[1]) + fv * ((1.0 - fu) * next[0] + fu * next[1]);
}

bool ProjectedElevationSource::covers(double x, double y) const
{
    return !std::isnan(height(x, y));
}

std::unique_ptr<ProjectedElevationSource> ProjectedElevationSource::build(ElevationSource& source,
                                                                          const geo::coordSys& mapping, double xMin,
                                                                          double yMin, double xMax, double yMax,
                                                                          double spacingM,
                                                                          util::ProgressInterface* progress)
{
    const std::string sourceName = source.description();
    const std::string region = regionText(mapping, xMin, yMin, xMax, yMax);
    if (!std::isfinite(xMin) || !std::isfinite(yMin) || !std::isfinite(xMax) || !std::isfinite(yMax) || xMin > xMax
        || yMin > yMax)
        throw std::runtime_error("Cannot make an elevation grid for the region " + region + ": not a region");
    if (mapping.isGeographic())
        throw std::runtime_error("Cannot make an elevation grid in the geographic system " + mapping.name()
                                 + ": a mapping system in metres is needed");
    if (!(spacingM >= 0.0) || !std::isfinite(spacingM))
        throw std::runtime_error("Cannot make an elevation grid with a node spacing of " + metres(spacingM) + " m");

    const geo::coordSysFactory& factory = geo::coordSysFactory::getInstance();
    const std::unique_ptr<geo::coordSys> wgs84 = factory.createGEO84();
    geo::XYZPoint centre(0.5 * (xMin + xMax), 0.5 * (yMin + yMax), 0.0);
    mapping.transform(*wgs84, centre);
    double spacing = spacingM > 0.0 ? spacingM : source.spacingM(centre);
    if (!(spacing > 0.0) || !std::isfinite(spacing))
        spacing = sPlainSpacingM;
    auto nodes = [&](double extent) { return int(std::ceil(extent / spacing - 1e-9)) + 3; };
    while (double(nodes(xMax - xMin)) * nodes(yMax - yMin) > sMaxNodes)
        spacing *= 1.05 * std::sqrt(double(nodes(xMax - xMin)) * nodes(yMax - yMin) / sMaxNodes);
    const int columns = nodes(xMax - xMin), rows = nodes(yMax - yMin);
    const double x0 = xMin - spacing, y0 = yMin - spacing;
    const double x1 = x0 + (columns - 1) * spacing, y1 = y0 + (rows - 1) * spacing;

    std::unique_ptr<ProjectedElevationSource> grid;
    try {
        // The part of the source to read: the grid's border, at the lowest
        // and the highest terrain (in an LSR system a point's geographic
        // position moves with its height).
        std::vector<geo::XYZPoint> outline;
        for (const double z : {sLowestTerrainM, sHighestTerrainM}) {
            for (int n = 0; n < sOutlinePointsPerSide; ++n) {
                const double f = double(n) / sOutlinePointsPerSide;
                outline.emplace_back(x0 + f * (x1 - x0), y0, z);
                outline.emplace_back(x1, y0 + f * (y1 - y0), z);
                outline.emplace_back(x1 - f * (x1 - x0), y1, z);
                outline.emplace_back(x0, y1 - f * (y1 - y0), z);
            }
        }
        mapping.transform(*wgs84, outline);
        if (source.load(outline)) {
            std::vector<float> heights = terrainAtNodes(source, mapping, *wgs84, x0, y0, spacing, columns, rows,
                                                        progress);
            grid = std::make_unique<ProjectedElevationSource>(x0, y0, spacing, columns, rows, std::move(heights),
                                                              sourceName);
        }
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("Cannot make the elevation grid of " + sourceName + " for the region " + region
                                 + ": " + error.what());
    }
    if (!grid || grid->coveredFraction() == 0.0)
        throw std::runtime_error("The elevation model " + sourceName + " does not cover the region " + region);
    return grid;
}

} // namespace dsm
