#include <platform/geometry/RayToSurfaceIntersection.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>

namespace geometry {

namespace {

constexpr double sInfinity = std::numeric_limits<double>::infinity();
/// The ray is followed from this far above the highest node to this far
/// below the lowest: at the end it lies clearly below the surface, so
/// rounding cannot make it miss a crossing there.
constexpr double sBandMarginM = 1.0;

/// A ray's walk along one grid axis (Amanatides and Woo): the cell it is in,
/// the ray parameter at which it leaves it and the parameter per cell.
struct Axis {
    int index;
    int step;
    double tNext;
    double tDelta;
};

/// The walk along one axis from ray parameter `t`: `origin` and `slope` are
/// the ray's position at t = 0 and its change per unit of t, in nodes,
/// `perSlope` is 1 / slope; `size` is the cell's size in nodes (a power of
/// two); the cell is kept within [low, high].
Axis axisAt(double origin, double slope, double perSlope, double t, double size, int low, int high)
{
    const double position = (origin + slope * t) * (1.0 / size);
    int index = int(std::floor(position));
    // On a border, moving down: the cell below it.
    if (slope < 0.0 && double(index) == position)
        --index;
    index = std::clamp(index, low, high);
    if (slope > 0.0)
        return {index, 1, ((index + 1) * size - origin) * perSlope, size * perSlope};
    if (slope < 0.0)
        return {index, -1, (index * size - origin) * perSlope, -size * perSlope};
    return {index, 0, sInfinity, sInfinity};
}

/// Moves the walk into the next cell across the border it reaches first;
/// returns the ray parameter of that border.
double advance(Axis& x, Axis& y)
{
    Axis& axis = x.tNext <= y.tNext ? x : y;
    const double t = axis.tNext;
    axis.index += axis.step;
    axis.tNext += axis.tDelta;
    return t;
}

/// The smallest root within [0, length] of a tau^2 + b tau + c, which has
/// one there (c > 0 >= the value at length); by bisection when rounding
/// puts the closed form's roots outside.
double firstRoot(double a, double b, double c, double length)
{
    double candidate = sInfinity;
    if (a == 0.0) {
        candidate = -c / b;
    } else {
        const double root = std::sqrt(std::max(0.0, b * b - 4.0 * a * c));
        const double q = -0.5 * (b + std::copysign(root, b));
        const double slack = 1e-9 * length;
        for (const double r : {q / a, q != 0.0 ? c / q : sInfinity})
            if (r >= -slack && r <= length + slack)
                candidate = std::min(candidate, r);
    }
    if (std::isfinite(candidate))
        return std::clamp(candidate, 0.0, length);
    double low = 0.0, high = length;
    for (int i = 0; i < 80 && high - low > 1e-12 * length; ++i) {
        const double mid = 0.5 * (low + high);
        (c + mid * (b + mid * a) > 0.0 ? low : high) = mid;
    }
    return high;
}

enum class Step { Clear, Hit, NoData };

/// One ray's way through the cells of a grid, in the grid's nodes
/// horizontally and metres vertically.
struct Walk {
    double ox = 0.0, oy = 0.0, oz = 0.0; ///< the origin: nodes, nodes, m
    double gx = 0.0, gy = 0.0, dz = 0.0; ///< per metre along the ray: nodes, nodes, m
    const float* heights = nullptr;
    int columns = 0;
    double accuracy = 0.0;
    /// Where the ray came within the accuracy of the surface while going
    /// down towards it at a cell's border (-1: nowhere): a touch once the
    /// clearance grows after it.
    double touchT = -1.0;
    double hitT = 0.0;

    bool touchConfirmed()
    {
        hitT = touchT;
        return touchT >= 0.0;
    }

    /// The ray over cell (i, k) between ray parameters tIn and tOut.
    Step cell(int i, int k, double tIn, double tOut)
    {
        const float* row = heights + std::size_t(k) * std::size_t(columns) + std::size_t(i);
        const double h00 = row[0], h10 = row[1], h01 = row[columns], h11 = row[columns + 1];
        if (std::isnan(h00 + h10 + h01 + h11))
            return Step::NoData;
        if (oz + dz * tOut - accuracy > std::max(std::max(h00, h10), std::max(h01, h11))) {
            // Clear of the cell by more than the accuracy all the way (the
            // ray is lowest where it leaves).
            return touchConfirmed() ? Step::Hit : Step::Clear;
        }
        // The clearance, ray z less surface z, over the cell as a function of
        // tau = t - tIn: qa tau^2 + qb tau + qc, exactly, for the bilinear
        // surface h00 + a u + b v + c u v (u, v within the cell, 0 to 1).
        const double u = ox + gx * tIn - i, v = oy + gy * tIn - k;
        const double a = h10 - h00, b = h01 - h00, c = h11 - h10 - h01 + h00;
        const double span = tOut - tIn;
        const double qa = -c * gx * gy;
        const double qb = dz - (a * gx + b * gy + c * (u * gy + v * gx));
        const double qc = oz + dz * tIn - (h00 + a * u + b * v + c * u * v);
        if (touchT >= 0.0) {
            if (qb >= 0.0 && qc > 0.0)
                return hit(touchT);
            touchT = -1.0;
        }
        if (qc <= 0.0)
            return hit(tIn);
        const double atOut = qc + span * (qb + span * qa);
        if (atOut <= 0.0)
            return hit(tIn + firstRoot(qa, qb, qc, span));
        if (qa > 0.0) {
            // Convex: the ray may dip to the surface between the borders.
            const double lowest = -qb / (2.0 * qa);
            if (lowest > 0.0 && lowest < span) {
                const double clearance = qc + lowest * (qb + lowest * qa);
                if (clearance <= 0.0)
                    return hit(tIn + firstRoot(qa, qb, qc, lowest));
                if (clearance <= accuracy)
                    return hit(tIn + lowest);
            }
        }
        if (atOut <= accuracy && qb + 2.0 * qa * span < 0.0)
            touchT = tOut;
        return Step::Clear;
    }

    Step hit(double t)
    {
        hitT = t;
        return Step::Hit;
    }
};

} // namespace

RayToSurfaceIntersection::RayToSurfaceIntersection(const sensor::IdentitySensorModel& model,
                                                   const dsm::ProjectedElevationSource& surface, double accuracyM)
    : m_model(model)
    , m_surface(surface)
    , m_accuracyM(accuracyM)
{
    if (!std::isfinite(accuracyM) || accuracyM <= 0.0) {
        char value[32];
        std::snprintf(value, sizeof value, "%g", accuracyM);
        throw std::runtime_error(std::string("The accuracy of a ray intersection must be above 0 m, not ") + value);
    }
}

const char* RayToSurfaceIntersection::describe(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Hit:
        return "the ray meets the terrain";
    case Outcome::NotDownward:
        return "the ray does not point downward";
    case Outcome::BelowSurface:
        return "the ray starts below the terrain";
    case Outcome::Missed:
        return "the ray leaves the elevation grid without meeting the terrain";
    case Outcome::NoData:
        return "the ray passes where the elevation grid has no heights";
    }
    return "unknown outcome";
}

RayToSurfaceIntersection::Outcome RayToSurfaceIntersection::intersect(const sensor::EOP& eop, double pixel,
                                                                      geo::XYZPoint& ground) const
{
    geo::XYZPoint origin, direction;
    m_model.rayAt(eop, pixel, origin, direction);
    return intersect(origin, direction, ground);
}

RayToSurfaceIntersection::Outcome RayToSurfaceIntersection::intersect(const geo::XYZPoint& origin,
                                                                      const geo::XYZPoint& direction,
                                                                      geo::XYZPoint& ground) const
{
    const dsm::ProjectedElevationSource& s = m_surface;
    const double length = std::sqrt(direction.x * direction.x + direction.y * direction.y + direction.z * direction.z);
    // The ray parameter t is the distance from the origin, m.
    Walk walk;
    const double perLength = 1.0 / length;
    walk.dz = direction.z * perLength;
    const double dx = direction.x * perLength, dy = direction.y * perLength;
    if (!(walk.dz < 0.0) || !std::isfinite(dx) || !std::isfinite(dy))
        return Outcome::NotDownward;
    if (std::isnan(s.maxHeight()))
        return Outcome::NoData;
    if (!std::isfinite(origin.x) || !std::isfinite(origin.y) || !std::isfinite(origin.z))
        return Outcome::Missed;

    // The ray in nodes: position (ox, oy) + t (gx, gy).
    const double perNode = 1.0 / s.spacingM();
    walk.ox = (origin.x - s.x0()) * perNode, walk.oy = (origin.y - s.y0()) * perNode;
    walk.gx = dx * perNode, walk.gy = dy * perNode;
    // Divisions are dear: each slope is divided by once.
    const double perGx = 1.0 / walk.gx, perGy = 1.0 / walk.gy, perDz = 1.0 / walk.dz;
    walk.oz = origin.z;
    walk.heights = s.nodeHeights().data();
    walk.columns = s.columns();
    walk.accuracy = m_accuracyM;
    const int columns = s.columns(), rows = s.rows();

    // The stretch of the ray within the grid and between the heights of its
    // highest and lowest nodes: the terrain lies nowhere else.
    const double tBottom = (s.minHeight() - sBandMarginM - origin.z) * perDz;
    if (tBottom <= 0.0)
        return Outcome::BelowSurface;
    const double tTop = (s.maxHeight() + sBandMarginM - origin.z) * perDz;
    double tStart = std::max(0.0, tTop);
    double tEnd = tBottom;
    for (const auto& [o, g, perG, last] : {std::tuple(walk.ox, walk.gx, perGx, columns - 1),
                                           std::tuple(walk.oy, walk.gy, perGy, rows - 1)}) {
        if (g == 0.0) {
            if (o < 0.0 || o > last)
                return Outcome::Missed;
            continue;
        }
        const double t0 = -o * perG, t1 = (last - o) * perG;
        tStart = std::max(tStart, std::min(t0, t1));
        tEnd = std::min(tEnd, std::max(t0, t1));
    }
    if (tStart > tEnd)
        return Outcome::Missed;
    if (tStart != tTop) {
        // The ray starts within the terrain's heights (or enters the grid
        // from the side there): it must start above the surface. Rounding
        // may put the start on the grid's border just outside it.
        const double startHeight = s.height(std::clamp(origin.x + dx * tStart, s.x0(), s.xMax()),
                                            std::clamp(origin.y + dy * tStart, s.y0(), s.yMax()));
        if (std::isnan(startHeight))
            return Outcome::NoData;
        if (origin.z + walk.dz * tStart < startHeight)
            return tStart == 0.0 ? Outcome::BelowSurface : Outcome::Missed;
    }

    const float* blockMaxima = s.blockMaxima().data();
    const int blockColumns = s.blockColumns();
    constexpr int sBlock = dsm::ProjectedElevationSource::sBlockCells;
    const int blockRows = (rows - 1 + sBlock - 1) / sBlock;
    auto finish = [&](Step step) {
        if (step == Step::NoData)
            return Outcome::NoData;
        if (step == Step::Clear)
            return Outcome::Missed;
        ground = {origin.x + dx * walk.hitT, origin.y + dy * walk.hitT, origin.z + walk.dz * walk.hitT};
        return Outcome::Hit;
    };

    Axis blockX = axisAt(walk.ox, walk.gx, perGx, tStart, sBlock, 0, blockColumns - 1);
    Axis blockY = axisAt(walk.oy, walk.gy, perGy, tStart, sBlock, 0, blockRows - 1);
    double blockIn = tStart;
    for (;;) {
        const double blockOut = std::min({blockX.tNext, blockY.tNext, tEnd});
        const float blockTop =
            blockMaxima[std::size_t(blockY.index) * std::size_t(blockColumns) + std::size_t(blockX.index)];
        // The ray is lowest where it leaves the block.
        if (walk.oz + walk.dz * blockOut - walk.accuracy > blockTop) {
            if (walk.touchConfirmed())
                return finish(Step::Hit);
        } else {
            const int firstColumn = blockX.index * sBlock, firstRow = blockY.index * sBlock;
            const int lastColumn = std::min(firstColumn + sBlock - 1, columns - 2);
            const int lastRow = std::min(firstRow + sBlock - 1, rows - 2);
            Axis cellX = axisAt(walk.ox, walk.gx, perGx, blockIn, 1.0, firstColumn, lastColumn);
            Axis cellY = axisAt(walk.oy, walk.gy, perGy, blockIn, 1.0, firstRow, lastRow);
            double cellIn = blockIn;
            for (;;) {
                const double cellOut = std::min({cellX.tNext, cellY.tNext, blockOut});
                // A cell the ray only touches at a corner is passed over:
                // its point is the previous cell's last and the next one's first.
                if (cellOut > cellIn) {
                    const Step step = walk.cell(cellX.index, cellY.index, cellIn, cellOut);
                    if (step != Step::Clear)
                        return finish(step);
                }
                if (cellOut >= blockOut)
                    break;
                cellIn = advance(cellX, cellY);
                if (cellX.index < firstColumn || cellX.index > lastColumn || cellY.index < firstRow
                    || cellY.index > lastRow)
                    break;
            }
        }
        if (blockOut >= tEnd)
            break;
        blockIn = advance(blockX, blockY);
        if (blockX.index < 0 || blockX.index >= blockColumns || blockY.index < 0 || blockY.index >= blockRows)
            break;
    }
    return finish(walk.touchConfirmed() ? Step::Hit : Step::Clear);
}

} // namespace geometry
