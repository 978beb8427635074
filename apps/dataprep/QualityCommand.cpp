#include "QualityCommand.h"

#include "Output.h"
#include "PreparationFields.h"
#include "PrepareCommand.h"

#include <datamodel/session/PreparationReport.h>
#include <datamodel/session/SessionPreparation.h>

#include <cmath>
#include <cstdio>

namespace dataprep {

namespace {

const QString sDemOption = QStringLiteral("dem");
const QString sTerrainHeightOption = QStringLiteral("terrain-height");

} // namespace

QString QualityCommand::synopsis() const
{
    return QStringLiteral(
        "<session-dir> [--take NAME]... [--trajectory FILE] [--dem FILE] [--terrain-height M] [--json]");
}

QString QualityCommand::description() const
{
    return QStringLiteral(
        "Generates the exterior orientation of every take (as `dataprep eop`) and\n"
        "from it the trajectory quality: per EOP sample the Normalized Coverage\n"
        "Speed (NCS, 1 nominal), the Relative L1 Pixel Error (RPE, pixels) and the\n"
        "Pixel Smearing Ratio (PSR, pixels), from the scan lines of the take's band\n"
        "nearest nadir intersected with the terrain. Writes raw/<take>.eoq beside\n"
        "the EOP file and judges the statistics against the limits of the settings\n"
        "file (turbulence warnings and errors).\n"
        "\n"
        "The terrain is the DEM given with --dem, else the first *.tif or *.tiff of\n"
        "the session's dem/ folder, else flat at --terrain-height metres above the\n"
        "ellipsoid (0 by default). Exit code 1 when a take's quality is an error\n"
        "or cannot be computed.");
}

std::vector<Argument> QualityCommand::arguments() const
{
    return {sessionDirArgument()};
}

QList<QCommandLineOption> QualityCommand::options() const
{
    return {takeOption(),
            trajectoryOption(),
            QCommandLineOption(sDemOption, QStringLiteral("The DEM (a GeoTIFF or any raster GDAL reads)."),
                               QStringLiteral("FILE")),
            QCommandLineOption(sTerrainHeightOption,
                               QStringLiteral("Ellipsoidal height of flat terrain when there is no DEM (m)."),
                               QStringLiteral("M"))};
}

int QualityCommand::run(const Invocation& invocation)
{
    const QString directory = invocation.arguments.first();
    datamodel::SessionPreparation::Options options;
    options.validate = false;
    options.writeEop = true;
    options.computeQuality = true;
    setTrajectoryAsked(invocation, options);
    options.dem = invocation.parser.value(sDemOption).toStdString();
    if (invocation.parser.isSet(sTerrainHeightOption)) {
        bool ok = false;
        const double height = invocation.parser.value(sTerrainHeightOption).toDouble(&ok);
        if (!ok || !std::isfinite(height) || std::abs(height) > 10000.0) {
            std::fprintf(stderr, "dataprep quality: --terrain-height %s is not a height in metres (-10000 to 10000)\n",
                         qPrintable(invocation.parser.value(sTerrainHeightOption)));
            return 2;
        }
        options.flatTerrainHeightM = height;
    }
    addTakesAsked(invocation, options);
    const datamodel::PreparationReport report = prepareSession(directory, options, invocation.json);
    if (invocation.json) {
        const Fields payload = takesPayload(report);
        printJson(name(), directory, payload, report.messages);
    } else {
        std::printf("Session      %s\n", report.sessionDirectory.empty() ? report.input.c_str()
                                                                        : report.sessionDirectory.c_str());
        for (const datamodel::TakePreparation& take : report.takes) {
            if (!take.quality) {
                std::printf("  %-8s no trajectory quality\n", take.name.c_str());
                continue;
            }
            const datamodel::QualitySummary& q = *take.quality;
            std::printf("  %-8s %s: %d samples from band %s on %s\n", take.name.c_str(), q.file.c_str(), q.samples,
                        q.band.c_str(),
                        q.dem.empty() ? qPrintable(QStringLiteral("flat terrain at %1 m").arg(q.flatHeightM))
                                      : q.dem.c_str());
            std::printf("           NCS %.3g to %.3g (RMS %.3g), RPE %.3g to %.3g (RMS %.3g), PSR up to %.3g (RMS %.3g)\n",
                        q.minNcs, q.maxNcs, q.rmsNcs, q.minRpe, q.maxRpe, q.rmsRpe, q.maxPsr, q.rmsPsr);
        }
        printMessages(report.messages);
    }
    return report.hasErrors() ? 1 : 0;
}

} // namespace dataprep
