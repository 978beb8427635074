// Elevation models read with GDAL, the terrain grid in a mapping system with
// the Earth's curvature of an LSR system, and the factory that hands it out.

#include "TestSupport.h"

#include <platform/dsm/FlatElevationSource.h>
#include <platform/dsm/ProjectedElevationSource.h>
#include <platform/dsm/ProjectedElevationSourceFactory.h>
#include <platform/dsm/RasterElevationSource.h>
#include <platform/geo/coordSysFactory.h>

#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

using dsm::ProjectedElevationSource;
using dsm::ProjectedElevationSourceFactory;
using dsm::RasterElevationSource;
using geo::XYZPoint;
using testsupport::thrownMessage;

namespace {

const geo::coordSysFactory& systems()
{
    return geo::coordSysFactory::getInstance();
}

/// Writes a one-band GeoTIFF: cell (c, r) holds value(c, r); the corner of
/// cell (0, 0) lies at (originX, originY), cells step by `step` in x and
/// -step in y.
void writeGeoTiff(const std::string& path, const OGRSpatialReference& srs, double originX, double originY, double step,
                  int columns, int rows, GDALDataType type, const std::function<double(int, int)>& value,
                  const double* noData = nullptr, double scale = 1.0, double offset = 0.0)
{
    GDALAllRegister();
    GDALDataset* dataset =
        GetGDALDriverManager()->GetDriverByName("GTiff")->Create(path.c_str(), columns, rows, 1, type, nullptr);
    ASSERT_NE(dataset, nullptr);
    double transform[6] = {originX, step, 0.0, originY, 0.0, -step};
    dataset->SetGeoTransform(transform);
    dataset->SetSpatialRef(&srs);
    GDALRasterBand* band = dataset->GetRasterBand(1);
    if (noData)
        band->SetNoDataValue(*noData);
    band->SetScale(scale);
    band->SetOffset(offset);
    std::vector<double> values(std::size_t(columns) * std::size_t(rows));
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < columns; ++c)
            values[std::size_t(r) * std::size_t(columns) + std::size_t(c)] = value(c, r);
    ASSERT_EQ(band->RasterIO(GF_Write, 0, 0, columns, rows, values.data(), columns, rows, GDT_Float64, 0, 0), CE_None);
    GDALClose(dataset);
}

/// A transverse Mercator on WGS84 centred at (lon0, lat0), as the flight
/// simulator writes its elevation models.
OGRSpatialReference transverseMercator(double lon0, double lat0)
{
    OGRSpatialReference srs;
    srs.SetWellKnownGeogCS("WGS84");
    srs.SetTM(lat0, lon0, 1.0, 0.0, 0.0);
    return srs;
}

/// transverseMercator(11, 47) as PROJ knows it.
constexpr const char* sTransverseMercator11E47N =
    "+proj=tmerc +lat_0=47 +lon_0=11 +k=1 +x_0=0 +y_0=0 +datum=WGS84 +units=m +no_defs +type=crs";

/// Geographic points (longitude, latitude in degrees) of projected ones.
XYZPoint geographic(const geo::coordSys& from, XYZPoint p)
{
    from.transform(*systems().createGEO84(), p);
    return p;
}

class ElevationFiles : public ::testing::Test {
protected:
    std::string path(const char* name) const { return dir.filePath(QString::fromLatin1(name)).toStdString(); }
    QTemporaryDir dir;
};

} // namespace

TEST_F(ElevationFiles, HeightsOfProjectedAndGeographicRastersAreInterpolatedBilinearly)
{
    // A transverse Mercator model at 25 m holding the plane 300 + 0.01 e +
    // 0.02 n at its cell centres (so bilinear interpolation is exact), with
    // one cell without height.
    const std::string tm = path("tm.tif");
    const double origin = -1000.0, step = 25.0, noData = -9999.0;
    const int cells = 80;
    auto plane = [](double e, double n) { return 300.0 + 0.01 * e + 0.02 * n; };
    writeGeoTiff(tm, transverseMercator(11.0, 47.0), origin, -origin, step, cells, cells, GDT_Float32,
                 [&](int c, int r) {
                     return c == 40 && r == 40 ? noData : plane(origin + (c + 0.5) * step, -origin - (r + 0.5) * step);
                 },
                 &noData);
    RasterElevationSource raster(tm);
    EXPECT_EQ(raster.columns(), cells);
    EXPECT_DOUBLE_EQ(raster.spacingM({11.0, 47.0, 0.0}), 25.0);
    const auto tmSystem = systems().createCoordSys(sTransverseMercator11E47N);
    std::vector<XYZPoint> outline{geographic(*tmSystem, {-500, -500, 0}), geographic(*tmSystem, {500, 500, 0})};
    ASSERT_TRUE(raster.load(outline));
    std::vector<XYZPoint> points{geographic(*tmSystem, {-321.7, 412.3, 0}), geographic(*tmSystem, {-100.0, 200.0, 0}),
                                 geographic(*tmSystem, {12.5 + 3.0, -12.5 - 3.0, 0}), // next to the no-data cell
                                 geographic(*tmSystem, {900.0, 0.0, 0})};              // beyond what was loaded
    raster.heights(points);
    EXPECT_NEAR(points[0].z, plane(-321.7, 412.3), 1e-3);
    EXPECT_NEAR(points[1].z, plane(-100, 200), 1e-3);
    EXPECT_TRUE(std::isnan(points[2].z));
    EXPECT_TRUE(std::isnan(points[3].z));
    // Far away from the model there is nothing to load.
    std::vector<XYZPoint> far{{30.0, 10.0, 0.0}, {30.1, 10.1, 0.0}};
    EXPECT_FALSE(raster.load(far));

    // A geographic model of scaled 16-bit heights: 100 + 0.1 * value, the
    // value of a cell being 10 * its column + its row; -32768 is no-data.
    const std::string geo = path("geo.tif");
    OGRSpatialReference wgs84;
    wgs84.SetWellKnownGeogCS("WGS84");
    const double noValue = -32768;
    const double lon0 = 7.0, lat0 = 46.1, degStep = 0.001;
    writeGeoTiff(geo, wgs84, lon0, lat0, degStep, 100, 100, GDT_Int16,
                 [&](int c, int r) { return r == 99 ? noValue : 10.0 * c + r; }, &noValue, 0.1, 100.0);
    RasterElevationSource geographicRaster(geo);
    EXPECT_NEAR(geographicRaster.spacingM({7.05, 46.05, 0}),
                degStep * M_PI / 180 * 6371008.8 * std::cos(46.05 * M_PI / 180), 1e-6);
    std::vector<XYZPoint> area{{7.0, 46.0, 0}, {7.1, 46.1, 0}};
    ASSERT_TRUE(geographicRaster.load(area));
    // Cell (c, r) has its centre at lon0 + (c + 0.5) step, lat0 - (r + 0.5) step.
    std::vector<XYZPoint> at{{lon0 + 20.75 * degStep, lat0 - 30.25 * degStep, 0},
                             {lon0 + 0.1 * degStep, lat0 - 0.2 * degStep, 0}, // within half a cell of the edge
                             {lon0 + 50.5 * degStep, lat0 - 99.5 * degStep, 0}};
    geographicRaster.heights(at);
    EXPECT_NEAR(at[0].z, 100.0 + 0.1 * (10.0 * 20.25 + 29.75), 1e-6);
    EXPECT_NEAR(at[1].z, 100.0, 1e-6);
    EXPECT_TRUE(std::isnan(at[2].z));
}

TEST_F(ElevationFiles, UnreadableModelsAreRefusedNamingTheFile)
{
    const std::string missing = path("none.tif");
    auto openingError = [](const std::string& path) { return thrownMessage([&] { RasterElevationSource{path}; }); };
    EXPECT_EQ(openingError(missing).rfind("Cannot open elevation model " + missing + ": ", 0), 0u);
    const std::string text = testsupport::writeFile(dir, QStringLiteral("text.tif"), "not a raster");
    EXPECT_EQ(openingError(text).rfind("Cannot open elevation model " + text + ": ", 0), 0u);
    // A raster without georeferencing.
    const std::string bare = path("bare.tif");
    GDALAllRegister();
    GDALClose(GetGDALDriverManager()->GetDriverByName("GTiff")->Create(bare.c_str(), 4, 4, 1, GDT_Float32, nullptr));
    EXPECT_EQ(openingError(bare), "Invalid elevation model " + bare + ": it has no georeferencing (geotransform)");
}

TEST_F(ElevationFiles, GridNodesHoldTheLsrHeightOfTheTerrainPointAtTheirOwnPosition)
{
    // A steep plane in a transverse Mercator model centred on the anchor;
    // the grid reaches 6 km from the anchor, where a point 800 m up moves by
    // about 0.75 m across the tangent plane against one on the ellipsoid.
    const XYZPoint anchor{11.0, 47.0, 0.0};
    const std::string tm = path("steep.tif");
    const double origin = -8000.0, step = 25.0;
    auto plane = [](double e, double n) { return 600.0 + 0.3 * e - 0.2 * n; };
    writeGeoTiff(tm, transverseMercator(anchor.x, anchor.y), origin, -origin, step, 640, 640, GDT_Float32,
                 [&](int c, int r) { return plane(origin + (c + 0.5) * step, -origin - (r + 0.5) * step); });
    const auto lsr = systems().createLSR84(anchor);
    const auto wgs84 = systems().createGEO84();
    const auto tmSystem = systems().createCoordSys(sTransverseMercator11E47N);

    RasterElevationSource raster(tm);
    const auto grid = ProjectedElevationSource::build(raster, *lsr, 4000.0, 2000.0, 6500.0, 4500.0);
    EXPECT_DOUBLE_EQ(grid->spacingM(), 25.0);
    EXPECT_EQ(grid->description(), tm);
    EXPECT_DOUBLE_EQ(grid->coveredFraction(), 1.0);
    // Terrain points known in the model's system, taken to the LSR system
    // directly: the grid must hold their z at their x and y.
    for (const auto& [e, n] : {std::pair(4500.3, 2400.9), std::pair(6012.0, 4311.0), std::pair(5200.0, 3999.5)}) {
        XYZPoint point(e, n, plane(e, n));
        tmSystem->transform(*lsr, point);
        SCOPED_TRACE(std::to_string(point.x) + ", " + std::to_string(point.y));
        EXPECT_NEAR(grid->height(point.x, point.y), point.z, 0.005);
    }
    EXPECT_FALSE(grid->covers(grid->xMax() + 1.0, 3000.0));
    EXPECT_TRUE(std::isnan(grid->height(3000.0, 3000.0)));

    // A flat surface: the LSR z of a point at 250 m ellipsoidal height far
    // from the anchor falls with the square of the distance.
    dsm::FlatElevationSource flat(250.0);
    const auto level = ProjectedElevationSource::build(flat, *lsr, -20000.0, -1000.0, 20000.0, 1000.0);
    EXPECT_DOUBLE_EQ(level->spacingM(), 100.0);
    for (const double lon : {10.75, 11.0, 11.2}) {
        XYZPoint point(lon, 47.003, 250.0);
        wgs84->transform(*lsr, point);
        EXPECT_NEAR(level->height(point.x, point.y), point.z, 0.0005) << lon;
    }
    EXPECT_LT(level->minHeight(), 250.0 - 30.0);
}

TEST_F(ElevationFiles, TheFactoryHandsOutTheConfiguredTerrainAndRefusesRegionsItDoesNotCover)
{
    const XYZPoint anchor{11.0, 47.0, 0.0};
    const auto lsr = systems().createLSR84(anchor);
    ProjectedElevationSourceFactory factory;
    factory.setFlatHeight(120.0);
    EXPECT_NEAR(factory.getAvailProjectedSource(*lsr, -100, -100, 100, 100)->height(0.0, 0.0), 120.0, 0.0005);

    // A model 2 km square around the anchor: a region half on it is taken
    // (the rest holds no heights), one beside it is refused.
    const std::string tm = path("small.tif");
    writeGeoTiff(tm, transverseMercator(anchor.x, anchor.y), -1000.0, 1000.0, 10.0, 200, 200, GDT_Float32,
                 [](int, int) { return 400.0; });
    factory.setElevationModel(tm);
    factory.setGridSpacing(20.0);
    const auto half = factory.getAvailProjectedSource(*lsr, 0.0, -500.0, 2000.0, 500.0);
    EXPECT_DOUBLE_EQ(half->spacingM(), 20.0);
    EXPECT_GT(half->coveredFraction(), 0.4);
    EXPECT_LT(half->coveredFraction(), 0.6);
    EXPECT_NEAR(half->height(500.0, 0.0), 400.0 - 0.02, 0.02);
    EXPECT_FALSE(half->covers(1500.0, 0.0));
    EXPECT_EQ(thrownMessage([&] { factory.getAvailProjectedSource(*lsr, 5000.0, 0.0, 6000.0, 1000.0); }),
              "The elevation model " + tm
                  + " does not cover the region x 5000.000 to 6000.000 m, y 0.000 to 1000.000 m of the LSR System");
    EXPECT_NE(ProjectedElevationSourceFactory::instance, nullptr);
    EXPECT_EQ(ProjectedElevationSourceFactory::instance->elevationModel(), "");

    // A session's elevation model: the first GeoTIFF of a folder in name order.
    QDir(dir.path()).mkdir(QStringLiteral("dem"));
    EXPECT_EQ(ProjectedElevationSourceFactory::findElevationModel(path("dem")), "");
    for (const char* name : {"dem/b.TIF", "dem/a.tiff", "dem/0.txt"})
        testsupport::writeFile(dir, QString::fromLatin1(name), "x");
    EXPECT_EQ(ProjectedElevationSourceFactory::findElevationModel(path("dem")), path("dem/a.tiff"));
}
