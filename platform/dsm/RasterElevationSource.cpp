#include <platform/dsm/RasterElevationSource.h>

#include <platform/geo/coordSys.h>
#include <platform/geo/coordSysFactory.h>

#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace dsm {

namespace {

/// Cells read into memory at most; a larger part is read averaged down.
constexpr double sMaxWindowCells = 32.0 * 1024 * 1024;
/// Cells read beyond the area on every side, so that interpolation near the
/// area's border has its four cells.
constexpr int sMarginCells = 2;
constexpr double sMeanEarthRadiusM = 6371008.8;
constexpr float sNoHeight = std::numeric_limits<float>::quiet_NaN();

/// Keeps GDAL's messages off stderr while the library calls it: a failure is
/// reported by an exception that quotes GDAL's last message instead.
class QuietGdal {
public:
    QuietGdal()
    {
        CPLPushErrorHandler(CPLQuietErrorHandler);
        CPLErrorReset();
    }
    ~QuietGdal() { CPLPopErrorHandler(); }
    QuietGdal(const QuietGdal&) = delete;
    QuietGdal& operator=(const QuietGdal&) = delete;

    static std::string reason(const char* fallback)
    {
        const char* message = CPLGetLastErrorMsg();
        return message && *message ? std::string(message) : std::string(fallback);
    }
};

void registerDrivers()
{
    static std::once_flag once;
    std::call_once(once, [] { GDALAllRegister(); });
}

} // namespace

struct RasterElevationSource::Impl {
    std::string path;
    GDALDataset* dataset = nullptr;
    GDALRasterBand* band = nullptr;
    int columns = 0;
    int rows = 0;
    /// Cell (column, row) corner to the raster's system and back (GDAL's
    /// geotransform: the centre of cell (c, r) is at (c + 0.5, r + 0.5)).
    double fromCell[6]{};
    double toCell[6]{};
    /// Whether the geotransform's first axis is the system's northing or
    /// latitude (a raster stored in the system's own axis order).
    bool swapAxes = false;
    bool geographic = false;
    /// Metres per linear unit, or radians per angular unit when geographic.
    double unitSize = 1.0;
    std::string coordSysName;
    std::unique_ptr<geo::coordSys> system;
    std::unique_ptr<geo::coordSys> wgs84;

    /// The part read: raster cells [column0, column0 + windowColumns) x
    /// [row0, row0 + windowRows) held as bufferColumns x bufferRows values,
    /// each standing for cellsPerValueX x cellsPerValueY cells.
    int column0 = 0, row0 = 0, windowColumns = 0, windowRows = 0;
    int bufferColumns = 0, bufferRows = 0;
    double cellsPerValueX = 1.0, cellsPerValueY = 1.0;
    std::vector<float> values;

    ~Impl()
    {
        if (dataset)
            GDALClose(dataset);
    }

    [[noreturn]] void invalid(const std::string& what) const
    {
        throw std::runtime_error("Invalid elevation model " + path + ": " + what);
    }

    /// Geographic WGS84 points to the raster's cell coordinates (continuous:
    /// cell (c, r) spans [c, c + 1) x [r, r + 1)); a point PROJ cannot
    /// transform becomes NaN.
    void toCells(std::span<geo::XYZPoint> points) const
    {
        for (geo::XYZPoint& p : points)
            p.z = 0.0;
        try {
            wgs84->transform(*system, points);
        } catch (const std::runtime_error&) {
            // One point outside the system's domain fails the batch: go
            // point by point so that only the bad ones are lost.
            for (geo::XYZPoint& p : points) {
                try {
                    wgs84->transform(*system, p);
                } catch (const std::runtime_error&) {
                    p = {std::nan(""), std::nan(""), 0.0};
                }
            }
        }
        for (geo::XYZPoint& p : points) {
            const double x = swapAxes ? p.y : p.x;
            const double y = swapAxes ? p.x : p.y;
            p.x = toCell[0] + toCell[1] * x + toCell[2] * y;
            p.y = toCell[3] + toCell[4] * x + toCell[5] * y;
        }
    }

    /// The height at cell coordinates (c, r), interpolated in the part read.
    double heightAtCell(double c, double r) const
    {
        // Value (i, k) of the buffer stands for the centre of its cells.
        double u = (c - column0) / cellsPerValueX - 0.5;
        double v = (r - row0) / cellsPerValueY - 0.5;
        // Half a value's width at the raster's own edge takes the edge value.
        const double lastU = bufferColumns - 1, lastV = bufferRows - 1;
        if (u < 0.0 && column0 == 0 && u >= -0.5)
            u = 0.0;
        if (u > lastU && column0 + windowColumns == columns && u <= lastU + 0.5)
            u = lastU;
        if (v < 0.0 && row0 == 0 && v >= -0.5)
            v = 0.0;
        if (v > lastV && row0 + windowRows == rows && v <= lastV + 0.5)
            v = lastV;
        if (!(u >= 0.0 && u <= lastU && v >= 0.0 && v <= lastV))
            return std::nan("");
        const int i = std::min(int(u), std::max(bufferColumns - 2, 0));
        const int k = std::min(int(v), std::max(bufferRows - 2, 0));
        const double fu = u - i, fv = v - k;
        const int i1 = std::min(i + 1, bufferColumns - 1);
        const int k1 = std::min(k + 1, bufferRows - 1);
        const float* row = values.data() + std::size_t(k) * std::size_t(bufferColumns);
        const float* next = values.data() + std::size_t(k1) * std::size_t(bufferColumns);
        // A neighbour that does not count (weight 0) may lack a height.
        auto term = [](float value, double weight) { return weight == 0.0 ? 0.0 : value * weight; };
        return term(row[i], (1 - fu) * (1 - fv)) + term(row[i1], fu * (1 - fv)) + term(next[i], (1 - fu) * fv)
            + term(next[i1], fu * fv);
    }
};

RasterElevationSource::RasterElevationSource(const std::string& path)
    : m_impl(std::make_unique<Impl>())
{
    Impl& d = *m_impl;
    d.path = path;
    registerDrivers();
    QuietGdal quiet;
    d.dataset = GDALDataset::Open(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY);
    if (!d.dataset)
        throw std::runtime_error("Cannot open elevation model " + path + ": "
                                 + QuietGdal::reason("not a raster that GDAL can read"));
    if (d.dataset->GetRasterCount() < 1)
        d.invalid("it holds no raster band");
    d.band = d.dataset->GetRasterBand(1);
    if (GDALDataTypeIsComplex(d.band->GetRasterDataType()))
        d.invalid("its heights are complex numbers");
    d.columns = d.dataset->GetRasterXSize();
    d.rows = d.dataset->GetRasterYSize();
    if (d.columns < 1 || d.rows < 1)
        d.invalid("it has no cells");
    if (d.dataset->GetGeoTransform(d.fromCell) != CE_None)
        d.invalid("it has no georeferencing (geotransform)");
    if (!GDALInvGeoTransform(d.fromCell, d.toCell))
        d.invalid("its georeferencing (geotransform) cannot be inverted");
    const OGRSpatialReference* srs = d.dataset->GetSpatialRef();
    if (!srs || srs->IsEmpty())
        d.invalid("it has no coordinate system");
    if (!srs->IsProjected() && !srs->IsGeographic())
        d.invalid("its coordinate system is neither projected nor geographic");
    d.geographic = srs->IsGeographic();
    d.unitSize = d.geographic ? srs->GetAngularUnits() : srs->GetLinearUnits();
    d.coordSysName = srs->GetName() ? srs->GetName() : "unnamed";
    // The geotransform's x is the system's axis mapping[0]; the coordinate
    // system below has x east (or longitude) whatever the system's order.
    const std::vector<int>& mapping = srs->GetDataAxisToSRSAxisMapping();
    const bool firstAxisNorth = srs->EPSGTreatsAsLatLong() || srs->EPSGTreatsAsNorthingEasting();
    const bool rasterXIsFirstAxis = mapping.empty() || std::abs(mapping[0]) == 1;
    d.swapAxes = rasterXIsFirstAxis == firstAxisNorth;

    char* wkt = nullptr;
    const char* const options[] = {"FORMAT=WKT2_2019", nullptr};
    if (srs->exportToWkt(&wkt, options) != OGRERR_NONE || !wkt) {
        CPLFree(wkt);
        d.invalid("its coordinate system cannot be written as WKT");
    }
    const std::string definition = wkt;
    CPLFree(wkt);
    const geo::coordSysFactory& factory = geo::coordSysFactory::getInstance();
    try {
        d.system = factory.createCoordSys(definition);
    } catch (const std::runtime_error& error) {
        d.invalid(std::string("its coordinate system cannot be used: ") + error.what());
    }
    d.wgs84 = factory.createGEO84();
}

RasterElevationSource::~RasterElevationSource() = default;

const std::string& RasterElevationSource::path() const
{
    return m_impl->path;
}

int RasterElevationSource::columns() const
{
    return m_impl->columns;
}

int RasterElevationSource::rows() const
{
    return m_impl->rows;
}

std::string RasterElevationSource::coordSysName() const
{
    return m_impl->coordSysName;
}

std::string RasterElevationSource::description() const
{
    return m_impl->path;
}

double RasterElevationSource::spacingM(const geo::XYZPoint& nearDeg) const
{
    const Impl& d = *m_impl;
    // A cell's extent along the system's two axes, in the system's units
    // (a rotated raster's cells are taken as their larger step).
    double east = std::max(std::abs(d.fromCell[1]), std::abs(d.fromCell[2]));
    double north = std::max(std::abs(d.fromCell[4]), std::abs(d.fromCell[5]));
    if (d.swapAxes)
        std::swap(east, north);
    if (!d.geographic)
        return std::min(east, north) * d.unitSize;
    const double eastM = east * d.unitSize * sMeanEarthRadiusM * std::cos(nearDeg.y * std::numbers::pi / 180.0);
    const double northM = north * d.unitSize * sMeanEarthRadiusM;
    return std::min(std::abs(eastM), northM);
}

bool RasterElevationSource::load(std::span<const geo::XYZPoint> outlineDeg)
{
    Impl& d = *m_impl;
    std::vector<geo::XYZPoint> cells(outlineDeg.begin(), outlineDeg.end());
    d.toCells(cells);
    double minC = std::numeric_limits<double>::infinity(), maxC = -minC, minR = minC, maxR = -minC;
    for (const geo::XYZPoint& p : cells) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y))
            continue;
        minC = std::min(minC, p.x), maxC = std::max(maxC, p.x);
        minR = std::min(minR, p.y), maxR = std::max(maxR, p.y);
    }
    if (!(minC <= maxC && minR <= maxR))
        return false;
    // The area's cells and the margin, within the raster. The bounds are
    // compared in double: an area far off the raster gives huge numbers.
    const double c0 = std::max(0.0, std::floor(minC) - sMarginCells);
    const double c1 = std::min(double(d.columns), std::ceil(maxC) + sMarginCells);
    const double r0 = std::max(0.0, std::floor(minR) - sMarginCells);
    const double r1 = std::min(double(d.rows), std::ceil(maxR) + sMarginCells);
    if (c0 >= c1 || r0 >= r1)
        return false;
    const int windowColumns = int(c1 - c0), windowRows = int(r1 - r0);
    const double windowCells = double(windowColumns) * windowRows;
    const double shrink = windowCells > sMaxWindowCells ? std::sqrt(windowCells / sMaxWindowCells) : 1.0;
    const int bufferColumns = std::max(1, int(std::ceil(windowColumns / shrink)));
    const int bufferRows = std::max(1, int(std::ceil(windowRows / shrink)));

    std::vector<float> values(std::size_t(bufferColumns) * std::size_t(bufferRows));
    QuietGdal quiet;
    GDALRasterIOExtraArg extra;
    INIT_RASTERIO_EXTRA_ARG(extra);
    extra.eResampleAlg = shrink > 1.0 ? GRIORA_Average : GRIORA_NearestNeighbour;
    auto read = [&](GDALRasterBand* band, void* buffer, GDALDataType type) {
        if (band->RasterIO(GF_Read, int(c0), int(r0), windowColumns, windowRows, buffer, bufferColumns, bufferRows,
                           type, 0, 0, &extra)
            != CE_None)
            throw std::runtime_error("Cannot read elevation model " + d.path + ": "
                                     + QuietGdal::reason("reading the heights failed"));
    };
    read(d.band, values.data(), GDT_Float32);

    int hasNoData = 0;
    const double noData = d.band->GetNoDataValue(&hasNoData);
    const float noDataValue = float(noData);
    const bool noDataIsNan = hasNoData && std::isnan(noData);
    int hasScale = 0, hasOffset = 0;
    const double scale = d.band->GetScale(&hasScale);
    const double offset = d.band->GetOffset(&hasOffset);
    const bool rescale = (hasScale && scale != 1.0) || (hasOffset && offset != 0.0);
    for (float& value : values) {
        if (std::isnan(value) || (hasNoData && !noDataIsNan && value == noDataValue))
            value = sNoHeight;
        else if (rescale)
            value = float(value * scale + offset);
    }
    // A mask of its own (a mask band or an alpha band) excludes cells too.
    const int maskFlags = d.band->GetMaskFlags();
    if (!(maskFlags & (GMF_ALL_VALID | GMF_NODATA))) {
        std::vector<unsigned char> mask(values.size());
        read(d.band->GetMaskBand(), mask.data(), GDT_Byte);
        for (std::size_t i = 0; i < values.size(); ++i)
            if (mask[i] == 0)
                values[i] = sNoHeight;
    }

    d.column0 = int(c0), d.row0 = int(r0);
    d.windowColumns = windowColumns, d.windowRows = windowRows;
    d.bufferColumns = bufferColumns, d.bufferRows = bufferRows;
    d.cellsPerValueX = double(windowColumns) / bufferColumns;
    d.cellsPerValueY = double(windowRows) / bufferRows;
    d.values = std::move(values);
    return true;
}

void RasterElevationSource::heights(std::span<geo::XYZPoint> pointsDeg) const
{
    const Impl& d = *m_impl;
    std::vector<geo::XYZPoint> cells(pointsDeg.begin(), pointsDeg.end());
    d.toCells(cells);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const geo::XYZPoint& c = cells[i];
        pointsDeg[i].z = d.values.empty() || !std::isfinite(c.x) || !std::isfinite(c.y)
            ? std::nan("")
            : d.heightAtCell(c.x, c.y);
    }
}

} // namespace dsm
