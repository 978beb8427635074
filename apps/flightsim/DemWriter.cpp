#include <flightsim/DemWriter.h>

#include <gdal_frmts.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace flightsim {

namespace {

constexpr double sMarginM = 500.0;

[[noreturn]] void gdalFailure(const QString& path, const char* what)
{
    const char* reason = CPLGetLastErrorMsg();
    throw std::runtime_error("Cannot write: " + path.toStdString() + ": " + what
                             + (reason && *reason ? std::string(" (") + reason + ")" : std::string()));
}

} // namespace

QJsonObject DemWriter::write(const QString& path, const SimulationConfig& config, const FlightPlan& plan,
                             const LocalPlane& plane, const Terrain& terrain)
{
    // The footprint of the block in the plane: lines, forward and backward
    // look, half the swath, and the margin.
    const double heightM = config.heightAboveTerrainM;
    const double halfSwathM = heightM * 0.5 * config.ccdPixels * config.pixelSizeMm / config.focalLengthMm;
    const double lookM = heightM * std::tan(35.0 * std::numbers::pi / 180.0);
    const auto& takes = plan.takes();
    const double halfLength = 0.5 * plan.lineLengthM() + lookM + sMarginM;
    const double yLow = takes.front().yM - halfSwathM - sMarginM;
    const double yHigh = takes.back().yM + halfSwathM + sMarginM;
    double minE = 1e300, maxE = -1e300, minN = 1e300, maxN = -1e300;
    for (double x : {-halfLength, halfLength}) {
        for (double y : {yLow, yHigh}) {
            double e = 0.0, n = 0.0;
            plane.toEastNorth(x, y, e, n);
            minE = std::min(minE, e);
            maxE = std::max(maxE, e);
            minN = std::min(minN, n);
            maxN = std::max(maxN, n);
        }
    }
    // The projection's scale departs a little from the tangent plane's.
    const double slack = 0.01 * std::max(maxE - minE, maxN - minN);
    const double spacing = config.demSpacingM;
    const double originE = std::floor((minE - slack) / spacing) * spacing;
    const double originN = std::ceil((maxN + slack) / spacing) * spacing;
    const int columns = int(std::ceil((maxE + slack - originE) / spacing));
    const int rows = int(std::ceil((originN - (minN - slack)) / spacing));
    if (double(columns) * rows > 64e6)
        throw ConfigError("the DEM would have " + std::to_string(columns) + " x " + std::to_string(rows)
                          + " cells; choose a larger spacing (--dem-spacing)");

    const double centerLatDeg = plane.centerLatRad() * 180.0 / std::numbers::pi;
    const double centerLonDeg = plane.centerLonRad() * 180.0 / std::numbers::pi;
    OGRSpatialReference projected;
    projected.SetWellKnownGeogCS("WGS84");
    projected.SetTM(centerLatDeg, centerLonDeg, 1.0, 0.0, 0.0);
    projected.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    OGRSpatialReference geographic;
    geographic.SetWellKnownGeogCS("WGS84");
    geographic.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    std::unique_ptr<OGRCoordinateTransformation> toGeographic(
        OGRCreateCoordinateTransformation(&projected, &geographic));
    if (!toGeographic)
        gdalFailure(path, "cannot set up the projection");
    char* wkt = nullptr;
    projected.exportToWkt(&wkt);
    const std::string projectionWkt = wkt ? wkt : "";
    CPLFree(wkt);

    CPLErrorReset();
    GDALRegister_GTiff();
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
    if (!driver)
        gdalFailure(path, "no GeoTIFF driver");
    const QFileInfo info(path);
    const QString temporary = info.path() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".partial");
    const QByteArray temporaryName = QFile::encodeName(temporary);
    char** options = nullptr;
    options = CSLSetNameValue(options, "COMPRESS", "DEFLATE");
    options = CSLSetNameValue(options, "PREDICTOR", "3");
    GDALDataset* dataset = driver->Create(temporaryName.constData(), columns, rows, 1, GDT_Float32, options);
    CSLDestroy(options);
    if (!dataset)
        gdalFailure(path, "cannot create the GeoTIFF");
    struct Closer {
        GDALDataset*& dataset;
        QByteArray name;
        bool keep = false;
        ~Closer()
        {
            if (dataset)
                GDALClose(dataset);
            if (!keep)
                std::remove(name.constData());
        }
    } closer{dataset, temporaryName};

    double transform[6] = {originE, spacing, 0.0, originN, 0.0, -spacing};
    dataset->SetGeoTransform(transform);
    dataset->SetProjection(projectionWkt.c_str());
    GDALRasterBand* band = dataset->GetRasterBand(1);
    band->SetDescription("ellipsoidal height (m)");

    const auto width = static_cast<std::size_t>(columns);
    std::vector<double> xs(width);
    std::vector<double> ys(width);
    std::vector<float> heights(width);
    double minHeight = 1e300, maxHeight = -1e300;
    for (int row = 0; row < rows; ++row) {
        for (int c = 0; c < columns; ++c) {
            xs[std::size_t(c)] = originE + (c + 0.5) * spacing;
            ys[std::size_t(c)] = originN - (row + 0.5) * spacing;
        }
        if (!toGeographic->Transform(columns, xs.data(), ys.data()))
            gdalFailure(path, "cannot transform cell centres to WGS84");
        for (int c = 0; c < columns; ++c) {
            constexpr double sDegToRad = std::numbers::pi / 180.0;
            double x = 0.0, y = 0.0;
            plane.toPlane(ys[std::size_t(c)] * sDegToRad, xs[std::size_t(c)] * sDegToRad, x, y);
            const double h = terrain.heightAt(x, y);
            heights[std::size_t(c)] = float(h);
            minHeight = std::min(minHeight, h);
            maxHeight = std::max(maxHeight, h);
        }
        if (band->RasterIO(GF_Write, 0, row, columns, 1, heights.data(), columns, 1, GDT_Float32, 0, 0) != CE_None)
            gdalFailure(path, "cannot write a row");
    }
    GDALClose(dataset);
    dataset = nullptr;
    if (CPLGetLastErrorType() >= CE_Failure)
        gdalFailure(path, "cannot close the GeoTIFF");
    if (std::rename(temporaryName.constData(), QFile::encodeName(path).constData()) != 0)
        throw std::runtime_error("Cannot write: " + path.toStdString() + ": cannot rename the temporary file onto it");
    closer.keep = true;

    return QJsonObject{
        {QStringLiteral("projection"), QStringLiteral("transverse Mercator on WGS84, scale 1, centred on the block")},
        {QStringLiteral("centerLonDeg"), centerLonDeg},
        {QStringLiteral("centerLatDeg"), centerLatDeg},
        {QStringLiteral("spacingM"), spacing},
        {QStringLiteral("columns"), columns},
        {QStringLiteral("rows"), rows},
        {QStringLiteral("originEastM"), originE},
        {QStringLiteral("originNorthM"), originN},
        {QStringLiteral("minHeightM"), minHeight},
        {QStringLiteral("maxHeightM"), maxHeight},
    };
}

} // namespace flightsim
