#include <flightsim/SimulationConfig.h>

#include <QRegularExpression>

#include <cmath>

namespace flightsim {

namespace {

QString number(double value)
{
    return QString::number(value, 'g', 10);
}

void requireRange(const char* what, const char* option, double value, double low, double high, const char* unit)
{
    if (!(value >= low && value <= high))
        throw ConfigError(QStringLiteral("%1 must be between %2 and %3%4 (%5), got %6")
                              .arg(QLatin1String(what), number(low), number(high),
                                   QLatin1String(unit), QLatin1String(option), number(value))
                              .toStdString());
}

} // namespace

QStringList SimulationConfig::defaultBands()
{
    return {QStringLiteral("PANF28A"), QStringLiteral("PANF28B"), QStringLiteral("PANF14A"),
            QStringLiteral("PANF14B"), QStringLiteral("PANN00A"), QStringLiteral("PANN00B"),
            QStringLiteral("PANB14A"), QStringLiteral("PANB14B"), QStringLiteral("REDN00A"),
            QStringLiteral("GRNN00A"), QStringLiteral("BLUN00A"), QStringLiteral("NIRN00A")};
}

SimulationConfig SimulationConfig::preset(Preset preset)
{
    SimulationConfig config;
    config.bands = defaultBands();
    switch (preset) {
    case Preset::Tiny:
        // One take of 0.5 s between two straight legs: well under a second
        // to generate, yet with a dozen time marks.
        config.takes = 1;
        config.bands = {QStringLiteral("PANN00A"), QStringLiteral("REDN00A")};
        config.linesPerTake = 400;
        config.leadInSec = 5.8;
        config.leadOutSec = 5.7;
        config.darkTakes = 0;
        config.demSpacingM = 50.0;
        break;
    case Preset::Small:
        break;
    case Preset::Realistic:
        // 20 takes of 75 s, two hours of trajectory.
        config.takes = 20;
        config.linesPerTake = 60000;
        config.durationSec = 7200.0;
        break;
    }
    return config;
}

QString SimulationConfig::presetName(Preset preset)
{
    switch (preset) {
    case Preset::Tiny:
        return QStringLiteral("tiny");
    case Preset::Small:
        return QStringLiteral("small");
    case Preset::Realistic:
        return QStringLiteral("realistic");
    }
    return {};
}

bool SimulationConfig::presetFromName(const QString& name, Preset& preset)
{
    for (Preset candidate : {Preset::Tiny, Preset::Small, Preset::Realistic}) {
        if (name == presetName(candidate)) {
            preset = candidate;
            return true;
        }
    }
    return false;
}

int SimulationConfig::integrationTimeUs() const
{
    const double ms = integrationTimeMs > 0.0 ? integrationTimeMs : 1000.0 / lineRateHz;
    return int(std::lround(ms * 1000.0));
}

void SimulationConfig::validate() const
{
    if (!startUtc.isValid() || startUtc < QDateTime(QDate(1980, 1, 6), QTime(0, 0), Qt::UTC)
        || startUtc.toUTC().date().year() > 2200)
        throw ConfigError("start time must be a valid UTC time between 1980-01-06 and 2200 (--start)");
    static const QRegularExpression idPattern(QStringLiteral("^[A-Za-z0-9_-]{1,64}$"));
    if (!sessionId.isEmpty() && !idPattern.match(sessionId).hasMatch())
        throw ConfigError("session id must be 1 to 64 letters, digits, '_' or '-' (--session-id), got \""
                          + sessionId.toStdString() + "\"");
    static const QRegularExpression serialPattern(QStringLiteral("^[0-9]{1,9}$"));
    if (!serialPattern.match(sensorSerial).hasMatch())
        throw ConfigError("sensor serial number must be a decimal number of up to 9 digits (--serial), got \""
                          + sensorSerial.toStdString() + "\"");
    static const QRegularExpression wordPattern(QStringLiteral("^[A-Za-z0-9_.-]{1,32}$"));
    for (const auto& [value, what] : {std::pair{sensorType, "sensor type (--sensor-type)"},
                                      std::pair{sensorGeneration, "sensor generation (--generation)"},
                                      std::pair{sensorHead, "sensor head (--head)"}})
        if (!wordPattern.match(value).hasMatch())
            throw ConfigError(std::string(what) + " must be 1 to 32 letters, digits, '_', '.' or '-', got \""
                              + value.toStdString() + "\"");
    requireRange("calibration version", "--calibration-version", calibrationVersion, 0, 1e6, "");

    requireRange("block centre longitude", "--lon", centerLonDeg, -180.0, 180.0, " degrees");
    requireRange("block centre latitude", "--lat", centerLatDeg, -80.0, 80.0, " degrees");
    requireRange("line azimuth", "--azimuth", lineAzimuthDeg, 0.0, 360.0, " degrees");
    requireRange("number of takes", "--takes", takes, 1, 999, "");
    requireRange("line spacing", "--line-spacing", lineSpacingM, 50.0, 50000.0, " m");
    requireRange("speed", "--speed", speedMps, 20.0, 150.0, " m/s");
    requireRange("height above terrain", "--height", heightAboveTerrainM, 100.0, 10000.0, " m");
    requireRange("terrain height", "--terrain-height", terrainHeightM, -500.0, 8000.0, " m");
    requireRange("terrain relief", "--terrain-relief", terrainReliefM, 0.0, 0.5 * heightAboveTerrainM,
                 " m (half the height above terrain)");
    requireRange("largest bank angle", "--max-bank", maxBankDeg, 5.0, 60.0, " degrees");
    requireRange("roll rate", "--roll-rate", rollRateDegPerSec, 0.5, 30.0, " degrees/s");
    requireRange("pitch trim", "--pitch-trim", pitchTrimDeg, -10.0, 15.0, " degrees");
    requireRange("lead-in", "--lead-in", leadInSec, 1.0, 86400.0, " s");
    requireRange("lead-out", "--lead-out", leadOutSec, 1.0, 86400.0, " s");
    requireRange("run margin", "--run-margin", runMarginSec, 2.0, 3600.0, " s");
    requireRange("flight duration", "--duration", durationSec, 0.0, 6.0 * 86400.0, " s");

    if (bands.isEmpty())
        throw ConfigError("at least one band is needed (--bands)");
    if (bands.size() > 64)
        throw ConfigError("at most 64 bands are supported (--bands), got " + std::to_string(bands.size()));
    static const QRegularExpression bandPattern(QStringLiteral("^(RED|BLU|GRN|PAN|NIR)(F|B|N)([0-9]{2})(A|B)$"));
    for (qsizetype i = 0; i < bands.size(); ++i) {
        if (!bandPattern.match(bands[i]).hasMatch())
            throw ConfigError("band \"" + bands[i].toStdString()
                              + "\" is not a band code: channel RED, BLU, GRN, PAN or NIR, direction F, B or N, "
                                "two digits, line A or B, as in PANF28A (--bands)");
        if (bands.indexOf(bands[i]) != i)
            throw ConfigError("band \"" + bands[i].toStdString() + "\" is listed twice (--bands)");
    }
    requireRange("lines per take", "--lines", linesPerTake, 16, 10000000, "");
    requireRange("line rate", "--line-rate", lineRateHz, 10.0, 10000.0, " lines/s");
    requireRange("samples per line", "--samples", samplesPerLine, 1, std::min(4096, ccdPixels), "");
    requireRange("focal length", "--focal-length", focalLengthMm, 5.0, 1000.0, " mm");
    requireRange("pixel size", "--pixel-size", pixelSizeMm, 0.0005, 0.1, " mm");
    requireRange("CCD pixels", "--ccd-pixels", ccdPixels, 16, 100000, "");
    for (double angle : misalignmentDeg)
        requireRange("misalignment angle", "--misalignment", angle, -5.0, 5.0, " degrees");
    requireRange("nominal z offset", "--z-offset", nominalZOffsetM, -10.0, 10.0, " m");
    requireRange("integration time", "--integration-time", integrationTimeMs, 0.0, 1000.0, " ms");
    requireRange("dark takes", "--dark-takes", darkTakes, 0, takes, "");
    requireRange("dark lines", "--dark-lines", darkLines, 8, 1000000, "");

    requireRange("camera clock offset", "--ct-offset", ctOffsetSec, 0.0, 500000.0, " s");
    requireRange("camera clock drift", "--ct-drift", ctDriftPpm, -1000.0, 1000.0, " ppm");

    requireRange("trajectory rate", "--imu-rate", imuRateHz, 10.0, 1000.0, " Hz");
    requireRange("accuracy record rate", "--accuracy-rate", accuracyRateHz, 0.001, imuRateHz, " Hz");
    const double stride = imuRateHz / accuracyRateHz;
    if (std::abs(stride - std::round(stride)) > 1e-9)
        throw ConfigError("trajectory rate (--imu-rate " + number(imuRateHz).toStdString()
                          + ") must be a whole multiple of the accuracy record rate (--accuracy-rate "
                          + number(accuracyRateHz).toStdString() + ")");
    requireRange("turbulence", "--turbulence", turbulence, 0.0, 10.0, "");
    requireRange("DEM spacing", "--dem-spacing", demSpacingM, 1.0, 1000.0, " m");

    requireRange("fault take", "--fault-take", faultTake, 0, takes, "");
    if (faults.has(Fault::SawTooth) && linesPerTake % 8 != 0)
        throw ConfigError("the saw-tooth fault needs a number of lines per take that is a multiple of 8 (--lines), got "
                          + std::to_string(linesPerTake));
    if (faults.has(Fault::SawTooth) && faults.has(Fault::CtBackwards) && bands.size() < 2)
        throw ConfigError("the faults saw-tooth and ct-backwards go to different bands: they need at least two bands");
}

} // namespace flightsim
