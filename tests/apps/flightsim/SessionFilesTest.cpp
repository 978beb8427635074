// The session layout and the descriptive files of a simulated flight: where
// files lie, the .info, flight-data, camera and pixel files, the DEM, the
// truth's exterior orientation and the simulator's determinism.

#include "SimulatedFlight.h"

#include <datamodel/model/InfoFile.h>

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>

#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

using namespace flightfiles;

namespace {

constexpr double sDeg = std::numbers::pi / 180.0;

flightsim::SimulationConfig twoTakesWithDarkTake()
{
    flightsim::SimulationConfig config = tinyBlock(2);
    config.darkTakes = 1;
    config.bands = {QStringLiteral("PANF28A"), QStringLiteral("PANN00B"), QStringLiteral("NIRB14A")};
    return config;
}

QDateTime utc(const QJsonValue& iso)
{
    QDateTime time = QDateTime::fromString(iso.toString(), Qt::ISODateWithMs);
    return time.toUTC();
}

QDateTime wholeSeconds(const QDateTime& time)
{
    return time.addMSecs(-time.time().msec());
}

} // namespace

TEST(FlightsimSession, FilesLieWhereSessionDiscoveryLooksForThem)
{
    const SimulatedFlight flight(twoTakesWithDarkTake());
    const QString id = flight.truth()[QStringLiteral("session")][QStringLiteral("id")].toString();

    const QStringList gpsImu = QDir(flight.path(QStringLiteral("gps-imu"))).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(gpsImu, QStringList{id});
    const QDir folder(flight.path(QStringLiteral("gps-imu/") + id));
    for (const char* sub : {"extract", "gps", "ground", "proc", "raw"})
        EXPECT_TRUE(folder.exists(QLatin1String(sub))) << sub;
    EXPECT_EQ(QDir(folder.filePath(QStringLiteral("extract")))
                  .entryList({QStringLiteral("tm*.dat"), QStringLiteral("tm*.DAT")}, QDir::Files)
                  .size(),
              1);
    const QDir proc(folder.filePath(QStringLiteral("proc")));
    const QStringList trajectories =
        proc.entryList({QStringLiteral("*.sol"), QStringLiteral("*.sbet"), QStringLiteral("sbet*.out")}, QDir::Files);
    ASSERT_EQ(trajectories.size(), 2);
    for (const QString& name : trajectories) {
        if (!name.contains(QLatin1String("sbet")))
            continue;
        QString companion = name;
        companion.replace(companion.indexOf(QLatin1String("sbet")), 4, QStringLiteral("smrmsg"));
        EXPECT_TRUE(proc.exists(companion)) << companion.toStdString();
    }

    // One .info file per band and take (dark takes included), each naming a
    // CT file in raw/ and a pixel file in images/ by its own base name.
    const QDir raw(flight.path(QStringLiteral("raw")));
    const QStringList infos = raw.entryList({QStringLiteral("*.info")}, QDir::Files);
    EXPECT_EQ(infos.size(), (2 + 1) * 3);
    for (const QString& name : infos) {
        const QString base = name.chopped(5);
        const QDomDocument info = readXml(raw.filePath(name));
        EXPECT_EQ(info.elementsByTagName(QStringLiteral("CAMERA_TIME_FILE")).at(0).toElement().text(), base + QStringLiteral(".ct"));
        EXPECT_EQ(info.elementsByTagName(QStringLiteral("PIXEL_FILE")).at(0).toElement().text(), base + QStringLiteral(".lri"));
        for (const char* extension : {".ct", ".it", ".tdi"})
            EXPECT_TRUE(raw.exists(base + QLatin1String(extension))) << (base + QLatin1String(extension)).toStdString();
        EXPECT_TRUE(QFileInfo::exists(flight.path(QStringLiteral("images/") + base + QStringLiteral(".lri"))));
    }
    EXPECT_TRUE(QFileInfo::exists(flight.path(QStringLiteral("mm/FlightData.xml"))));
    EXPECT_TRUE(QFileInfo::exists(flight.path(QStringLiteral("mm/Camera.xml"))));
    EXPECT_TRUE(QDir(flight.path(QStringLiteral("mm"))).entryList({QStringLiteral("*.raw"), QStringLiteral("*.raw.xml")}).isEmpty());
    EXPECT_FALSE(QFileInfo::exists(flight.path(QStringLiteral("raw/sessionData.xml"))));
    // Nothing of the simulator's working files is left over.
    for (QDirIterator it(flight.directory(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); it.hasNext();)
        EXPECT_FALSE(it.next().contains(QLatin1String(".partial")));
}

TEST(FlightsimSession, InfoFilesCarryEveryElementTheLibraryReads)
{
    const SimulatedFlight flight(twoTakesWithDarkTake());
    const QDateTime flightStart = wholeSeconds(utc(flight.truth()[QStringLiteral("time")][QStringLiteral("startUtc")]));
    static const QRegularExpression datePattern(QStringLiteral("^[0-9]{1,2} [A-Z][a-z]+ [0-9]{4}, [0-9]{2}:[0-9]{2}:[0-9]{2}$"));
    static const QRegularExpression anglePattern(QStringLiteral("^-?[0-9]{1,3}:[0-5][0-9]:[0-5][0-9]\\.[0-9]{4}$"));
    int checked = 0;
    for (const QString& key : {QStringLiteral("takes"), QStringLiteral("darkTakes")}) {
        for (const QJsonValue takeValue : flight.truth()[key].toArray()) {
            const QJsonObject take = takeValue.toObject();
            const QJsonObject start = take[QStringLiteral("start")].toObject();
            const QJsonObject stop = take[QStringLiteral("stop")].toObject();
            for (const QJsonValue band : take[QStringLiteral("bands")].toArray()) {
                const QString path = flight.path(band[QStringLiteral("info")]);
                const QDomDocument xml = readXml(path);
                for (const char* tag : {"time", "longitude", "latitude"}) {
                    const QDomNodeList nodes = xml.elementsByTagName(QLatin1String(tag));
                    for (int i = 0; i < nodes.size(); ++i) {
                        const QString text = nodes.at(i).toElement().text();
                        EXPECT_TRUE((QLatin1String(tag) == QLatin1String("time") ? datePattern : anglePattern).match(text).hasMatch())
                            << tag << ": " << text.toStdString();
                    }
                }
                EXPECT_EQ(xml.elementsByTagName(QStringLiteral("altitude")).size(), 2);

                datamodel::InfoFile info(path.toStdString(), datamodel::InfoFile::STRIPNAMEREGEX);
                EXPECT_EQ(info.sensorId(), "2004");
                EXPECT_EQ(info.sensorType(), "ZEL");
                EXPECT_EQ(QString::fromStdString(info.bandId()), band[QStringLiteral("name")].toString());
                EXPECT_EQ(QString::fromStdString(info.stripName()), take[QStringLiteral("label")].toString());
                EXPECT_EQ(QString::fromStdString(info.lineLabel()), take[QStringLiteral("label")].toString());
                EXPECT_EQ(info.lineNumber(), take[QStringLiteral("lineNumber")].toInt());
                EXPECT_EQ(info.flightStart(), flightStart);
                EXPECT_EQ(info.lineStart(), wholeSeconds(utc(take[QStringLiteral("startUtc")])));
                EXPECT_EQ(info.lineStop(), wholeSeconds(utc(take[QStringLiteral("stopUtc")])));
                // Four decimals of an arc second are 3 mm on the ground.
                EXPECT_NEAR(info.startPos().x, start[QStringLiteral("lonDeg")].toDouble(), 1e-7);
                EXPECT_NEAR(info.startPos().y, start[QStringLiteral("latDeg")].toDouble(), 1e-7);
                EXPECT_NEAR(info.stopPos().x, stop[QStringLiteral("lonDeg")].toDouble(), 1e-7);
                EXPECT_NEAR(info.stopPos().y, stop[QStringLiteral("latDeg")].toDouble(), 1e-7);
                EXPECT_DOUBLE_EQ(info.integrationTime().value(), 0.00125);
                EXPECT_EQ(QString::fromStdString(info.ctFileName()), band[QStringLiteral("base")].toString() + QStringLiteral(".ct"));
                EXPECT_EQ(QString::fromStdString(info.pixelFilename()), band[QStringLiteral("base")].toString() + QStringLiteral(".lri"));
                EXPECT_NO_THROW(datamodel::InfoFile::Validator().validate(info));
                ++checked;
            }
        }
    }
    EXPECT_EQ(checked, 9);
}

TEST(FlightsimSession, FlightDataAndCameraFilesDescribeTheRecording)
{
    const flightsim::SimulationConfig config = twoTakesWithDarkTake();
    const SimulatedFlight flight(config);
    const QDomElement session = readXml(flight.path(QStringLiteral("mm/FlightData.xml")))
                                    .documentElement()
                                    .firstChildElement(QStringLiteral("Session"));
    EXPECT_EQ(session.attribute(QStringLiteral("id")), flight.truth()[QStringLiteral("session")][QStringLiteral("id")].toString());
    const QDomElement sensor = session.firstChildElement(QStringLiteral("Sensor"));
    EXPECT_EQ(sensor.attribute(QStringLiteral("generation")), QStringLiteral("ZELM8"));
    EXPECT_EQ(sensor.attribute(QStringLiteral("head")), QStringLiteral("QX310"));
    EXPECT_EQ(sensor.attribute(QStringLiteral("serial")), QStringLiteral("2004"));
    EXPECT_EQ(sensor.attribute(QStringLiteral("cameraFile")), QStringLiteral("Camera.xml"));
    const QDateTime firstTake = utc(flight.take(0)[QStringLiteral("startUtc")]);
    EXPECT_EQ(session.firstChildElement(QStringLiteral("FirstTakeTime")).attribute(QStringLiteral("utc")),
              firstTake.toString(QStringLiteral("yyyyMMddHHmmss")));
    EXPECT_DOUBLE_EQ(session.firstChildElement(QStringLiteral("FirstTakeTime")).attribute(QStringLiteral("gpsSeconds")).toDouble(),
                     std::round(flight.take(0)[QStringLiteral("firstLineGpsSec")].toDouble() * 1e6) / 1e6);

    const QDomNodeList lines = session.elementsByTagName(QStringLiteral("Line"));
    ASSERT_EQ(lines.size(), 2);
    for (int i = 0; i < lines.size(); ++i) {
        const QDomElement line = lines.at(i).toElement();
        EXPECT_EQ(line.attribute(QStringLiteral("number")).toInt(), i + 1);
        QStringList labels, types;
        for (QDomElement take = line.firstChildElement(QStringLiteral("Take")); !take.isNull();
             take = take.nextSiblingElement(QStringLiteral("Take"))) {
            labels << take.attribute(QStringLiteral("label"));
            types << take.attribute(QStringLiteral("type"));
            const bool dark = take.attribute(QStringLiteral("type")) == QLatin1String("dark");
            EXPECT_EQ(take.attribute(QStringLiteral("lines")).toInt(), dark ? config.darkLines : config.linesPerTake);
            const QDomNodeList bands = take.elementsByTagName(QStringLiteral("Band"));
            ASSERT_EQ(bands.size(), 3);
            for (int b = 0; b < 3; ++b) {
                const QDomElement band = bands.at(b).toElement();
                EXPECT_EQ(band.attribute(QStringLiteral("name")), config.bands[b]);
                EXPECT_EQ(band.attribute(QStringLiteral("analogChannel")).toInt(), b);
                EXPECT_EQ(band.attribute(QStringLiteral("integrationTimeMs")), QStringLiteral("1.250"));
            }
        }
        const QString label = QStringLiteral("%1").arg(i + 1, 3, 10, QLatin1Char('0'));
        EXPECT_EQ(labels, i == 0 ? QStringList({QStringLiteral("DK") + label, QStringLiteral("L") + label})
                                 : QStringList{QStringLiteral("L") + label});
    }

    const QDomElement camera = readXml(flight.path(QStringLiteral("mm/Camera.xml"))).documentElement();
    EXPECT_EQ(camera.firstChildElement(QStringLiteral("Serial")).text(), QStringLiteral("2004"));
    EXPECT_EQ(camera.firstChildElement(QStringLiteral("CalibrationVersion")).text(), QStringLiteral("1"));
    const double focal = camera.firstChildElement(QStringLiteral("FocalLength")).text().toDouble();
    EXPECT_DOUBLE_EQ(focal, 62.5);
    const QDomElement misalignment = camera.firstChildElement(QStringLiteral("Misalignment"));
    EXPECT_NEAR(misalignment.attribute(QStringLiteral("omega")).toDouble(), config.misalignmentDeg[0] * sDeg, 1e-15);
    EXPECT_NEAR(misalignment.attribute(QStringLiteral("kappa")).toDouble(), config.misalignmentDeg[2] * sDeg, 1e-15);
    EXPECT_DOUBLE_EQ(camera.firstChildElement(QStringLiteral("NominalZOffset")).text().toDouble(), 0.35);
    // A band code's digits are its look angle; the CCD line sits at f * tan(angle).
    const QDomNodeList bands = camera.elementsByTagName(QStringLiteral("Band"));
    ASSERT_EQ(bands.size(), 3);
    const double expectedDeg[3] = {28.0, 0.0, -14.0};
    for (int b = 0; b < 3; ++b) {
        const QDomElement band = bands.at(b).toElement();
        const double x = band.attribute(QStringLiteral("x")).toDouble();
        EXPECT_NEAR(std::atan(x / focal) / sDeg, expectedDeg[b], 0.02) << band.attribute(QStringLiteral("name")).toStdString();
        EXPECT_NEAR(band.attribute(QStringLiteral("lookAngleDeg")).toDouble(), std::atan(x / focal) / sDeg, 1e-5);
    }
}

TEST(FlightsimSession, PixelFilesHoldOneRowPerScanLine)
{
    const SimulatedFlight flight(twoTakesWithDarkTake());
    for (const QString& key : {QStringLiteral("takes"), QStringLiteral("darkTakes")}) {
        const bool dark = key == QLatin1String("darkTakes");
        for (const QJsonValue take : flight.truth()[key].toArray()) {
            for (const QJsonValue band : take[QStringLiteral("bands")].toArray()) {
                const PixelFile pixels = readPixels(flight.path(band[QStringLiteral("pixels")]));
                const auto lines = std::uint64_t(take[QStringLiteral("lines")].toInt());
                EXPECT_EQ(pixels.magic, QByteArray("PX01"));
                EXPECT_EQ(pixels.headerBytes, 32u);
                EXPECT_EQ(pixels.samples, 4u);
                EXPECT_EQ(pixels.bitsPerSample, 16u);
                EXPECT_EQ(pixels.lines, lines);
                EXPECT_EQ(pixels.pixelStep, 3000u);
                EXPECT_EQ(pixels.firstPixel, 1500u);
                EXPECT_EQ(pixels.sizeBytes, qsizetype(32 + lines * 4 * 2));
                const auto [low, high] = std::minmax_element(pixels.values.begin(), pixels.values.end());
                if (dark) {
                    EXPECT_GE(*low, 36);
                    EXPECT_LE(*high, 44);
                } else {
                    EXPECT_GE(*low, 496);
                    EXPECT_LE(*high, 1200 + 300 + 480 + 4);
                    EXPECT_GT(*high - *low, 100); // the ground pattern shows
                }
            }
        }
    }
}

TEST(FlightsimSession, DemCoversTheTakesWithTheTerrainHeights)
{
    const flightsim::SimulationConfig config = twoTakesWithDarkTake();
    const SimulatedFlight flight(config);
    GDALAllRegister();
    std::unique_ptr<GDALDataset> dem(GDALDataset::Open(flight.path(QStringLiteral("dem/terrain.tif")).toUtf8().constData(),
                                                       GDAL_OF_RASTER | GDAL_OF_READONLY));
    ASSERT_TRUE(dem);
    ASSERT_EQ(dem->GetRasterCount(), 1);
    GDALRasterBand* band = dem->GetRasterBand(1);
    EXPECT_EQ(band->GetRasterDataType(), GDT_Float32);
    const OGRSpatialReference* srs = dem->GetSpatialRef();
    ASSERT_TRUE(srs);
    EXPECT_STREQ(srs->GetAttrValue("PROJECTION"), "Transverse_Mercator");
    double transform[6];
    ASSERT_EQ(dem->GetGeoTransform(transform), CE_None);
    EXPECT_DOUBLE_EQ(transform[1], config.demSpacingM);

    const int columns = dem->GetRasterXSize();
    const int rows = dem->GetRasterYSize();
    std::vector<float> heights(std::size_t(columns) * std::size_t(rows));
    ASSERT_EQ(band->RasterIO(GF_Read, 0, 0, columns, rows, heights.data(), columns, rows, GDT_Float32, 0, 0), CE_None);
    const auto [low, high] = std::minmax_element(heights.begin(), heights.end());
    EXPECT_GE(*low, config.terrainHeightM - config.terrainReliefM);
    EXPECT_LE(*high, config.terrainHeightM + config.terrainReliefM);
    EXPECT_GT(*high - *low, 0.1 * config.terrainReliefM);

    // Every take's start and stop lie inside the grid.
    OGRSpatialReference wgs84;
    wgs84.SetWellKnownGeogCS("WGS84");
    wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    std::unique_ptr<OGRCoordinateTransformation> toDem(OGRCreateCoordinateTransformation(&wgs84, srs));
    ASSERT_TRUE(toDem);
    for (const QJsonValue take : flight.takes()) {
        for (const char* end : {"start", "stop"}) {
            double x = take[QLatin1String(end)][QStringLiteral("lonDeg")].toDouble();
            double y = take[QLatin1String(end)][QStringLiteral("latDeg")].toDouble();
            ASSERT_TRUE(toDem->Transform(1, &x, &y));
            const double column = (x - transform[0]) / transform[1];
            const double row = (y - transform[3]) / transform[5];
            EXPECT_TRUE(column > 0 && column < columns && row > 0 && row < rows) << end;
        }
    }
}

TEST(FlightsimSession, TruthOrientationMatchesTheTrajectoryAndLooksDown)
{
    const flightsim::SimulationConfig config = twoTakesWithDarkTake();
    const SimulatedFlight flight(config);
    const std::vector<SbetRecord> sbet = readSbet(flight.path(flight.trajectory()[QStringLiteral("sbet")]));
    for (const QJsonValue takeValue : flight.takes()) {
        const QJsonObject take = takeValue.toObject();
        const QJsonObject orientation = take[QStringLiteral("exteriorOrientation")].toObject();
        const QJsonArray samples = orientation[QStringLiteral("samples")].toArray();
        ASSERT_EQ(samples.size(), 5);
        const double azimuth = take[QStringLiteral("azimuthDeg")].toDouble() * sDeg;
        for (const QJsonValue sample : samples) {
            const auto k = std::size_t(sample[QStringLiteral("record")].toInteger());
            ASSERT_LT(k, sbet.size());
            // The samples lie within the take, on trajectory records.
            EXPECT_GE(sbet[k].time, take[QStringLiteral("firstLineGpsSec")].toDouble());
            EXPECT_LE(sbet[k].time, take[QStringLiteral("lastLineGpsSec")].toDouble());
            EXPECT_EQ(sample[QStringLiteral("gpsSec")].toDouble(), sbet[k].time);
            EXPECT_DOUBLE_EQ(sample[QStringLiteral("latDeg")].toDouble(), sbet[k].lat / sDeg);
            EXPECT_DOUBLE_EQ(sample[QStringLiteral("heightM")].toDouble(), sbet[k].height);
            EXPECT_EQ(sample[QStringLiteral("rollRad")].toDouble(), sbet[k].roll);
            EXPECT_NEAR(sample[QStringLiteral("headingRad")].toDouble(), sbet[k].heading(), 1e-12);

            // Position in the anchor's LSR: near the anchor, at the flying
            // height less the nominal z offset.
            EXPECT_LT(std::hypot(sample[QStringLiteral("xM")].toDouble(), sample[QStringLiteral("yM")].toDouble()), 40.0);
            EXPECT_NEAR(sample[QStringLiteral("zM")].toDouble(), sbet[k].height - config.nominalZOffsetM, 0.01);

            // R = Rx(omega) Ry(phi) Rz(kappa) takes camera axes into the LSR:
            // the camera looks down (-z) and its x axis points along the flight.
            const double o = sample[QStringLiteral("omegaRad")].toDouble();
            const double p = sample[QStringLiteral("phiRad")].toDouble();
            const double kap = sample[QStringLiteral("kappaRad")].toDouble();
            const double lookDownZ = -std::cos(o) * std::cos(p); // R * (0, 0, -1), z component
            EXPECT_LT(lookDownZ, -0.99);
            const double xEast = std::cos(p) * std::cos(kap);
            const double xNorth = std::cos(o) * std::sin(kap) + std::sin(o) * std::sin(p) * std::cos(kap);
            const double along = std::atan2(xEast, xNorth);
            EXPECT_NEAR(wrapPi(along - azimuth), 0.0, 1.5 * sDeg);
        }
    }
}

TEST(FlightsimSession, TheSameSeedGivesTheSameBytes)
{
    flightsim::SimulationConfig config = tinyConfig();
    config.writeSessionData = true;
    const SimulatedFlight first(config);
    const SimulatedFlight second(config);
    int files = 0;
    for (QDirIterator it(first.directory(), QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        const QString path = it.next();
        const QString relative = QDir(first.directory()).relativeFilePath(path);
        EXPECT_EQ(readAll(path), readAll(second.path(relative))) << relative.toStdString();
        ++files;
    }
    EXPECT_EQ(files, 19);
    EXPECT_EQ(files, first.report().files);

    config.seed = 8;
    const SimulatedFlight other(config);
    const QString sbet = first.trajectory()[QStringLiteral("sbet")].toString();
    EXPECT_NE(readAll(first.path(sbet)), readAll(other.path(sbet)));
    EXPECT_EQ(readAll(first.path(sbet)).size(), readAll(other.path(sbet)).size());
}
