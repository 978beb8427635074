#include <flightsim/SimulationOptions.h>

#include <functional>
#include <vector>

namespace flightsim {

namespace {

struct Option {
    const char* name;
    const char* valueName;   // nullptr: a flag without value
    const char* help;
    std::function<void(SimulationConfig&, const QString&)> apply;
};

[[noreturn]] void badValue(const char* option, const QString& value, const char* expected)
{
    throw ConfigError(QStringLiteral("option --%1 needs %2, got \"%3\"")
                          .arg(QLatin1String(option), QLatin1String(expected), value)
                          .toStdString());
}

double toDouble(const char* option, const QString& value)
{
    bool ok = false;
    const double result = value.toDouble(&ok);
    if (!ok)
        badValue(option, value, "a number");
    return result;
}

int toInt(const char* option, const QString& value)
{
    bool ok = false;
    const int result = value.toInt(&ok);
    if (!ok)
        badValue(option, value, "a whole number");
    return result;
}

template <typename Member>
std::function<void(SimulationConfig&, const QString&)> setDouble(const char* option, Member member)
{
    return [option, member](SimulationConfig& c, const QString& v) { c.*member = toDouble(option, v); };
}

template <typename Member>
std::function<void(SimulationConfig&, const QString&)> setInt(const char* option, Member member)
{
    return [option, member](SimulationConfig& c, const QString& v) { c.*member = toInt(option, v); };
}

template <typename Member>
std::function<void(SimulationConfig&, const QString&)> setText(Member member)
{
    return [member](SimulationConfig& c, const QString& v) { c.*member = v; };
}

void addFaults(SimulationConfig& config, const QString& value)
{
    for (const QString& item : value.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString name = item.trimmed();
        if (name == QLatin1String("all")) {
            for (Fault fault : FaultSet::all())
                config.faults.add(fault);
            continue;
        }
        const auto fault = FaultSet::fromName(name);
        if (!fault) {
            QStringList known{QStringLiteral("all")};
            for (Fault f : FaultSet::all())
                known << FaultSet::name(f);
            throw ConfigError("unknown fault \"" + name.toStdString() + "\" (--fault); known faults: "
                              + known.join(QStringLiteral(", ")).toStdString());
        }
        config.faults.add(*fault);
    }
}

const std::vector<Option>& options()
{
    using C = SimulationConfig;
    static const std::vector<Option> list = {
        {"preset", "NAME", "tiny, small (default) or realistic", nullptr},
        {"seed", "N", "random seed; the same seed gives the same bytes (default 1)",
         [](C& c, const QString& v) {
             bool ok = false;
             c.seed = v.toULongLong(&ok);
             if (!ok)
                 badValue("seed", v, "a whole number");
         }},
        {"session-id", "ID", "session and GNSS/IMU folder identifier (default S<yyMMdd>_<HHmm> of the start)",
         setText(&C::sessionId)},
        {"serial", "N", "camera serial number (default 2004)", setText(&C::sensorSerial)},
        {"sensor-type", "TYPE", "sensor type (default ZEL)", setText(&C::sensorType)},
        {"generation", "NAME", "sensor generation in the flight data (default ZELM8)", setText(&C::sensorGeneration)},
        {"head", "NAME", "sensor head in the flight data (default QX310)", setText(&C::sensorHead)},
        {"calibration-version", "N", "calibration version of the camera file (default 1)",
         setInt("calibration-version", &C::calibrationVersion)},
        {"start", "TIME", "UTC start of the recording, yyyy-MM-ddTHH:mm:ss (default 2026-05-14T08:30:00)",
         [](C& c, const QString& v) {
             QDateTime time = QDateTime::fromString(v, Qt::ISODate);
             if (!time.isValid())
                 badValue("start", v, "a UTC time yyyy-MM-ddTHH:mm:ss");
             // A time without zone is UTC; one with an offset is converted.
             if (time.timeSpec() == Qt::LocalTime)
                 time.setTimeSpec(Qt::UTC);
             c.startUtc = time.toUTC();
         }},
        {"lon", "DEG", "longitude of the block centre (default 11.5)", setDouble("lon", &C::centerLonDeg)},
        {"lat", "DEG", "latitude of the block centre, within +/-80 (default 48.1)", setDouble("lat", &C::centerLatDeg)},
        {"azimuth", "DEG", "direction of the first line, clockwise from north (default 90)",
         setDouble("azimuth", &C::lineAzimuthDeg)},
        {"takes", "N", "number of flight lines, one take each", setInt("takes", &C::takes)},
        {"line-spacing", "M", "distance between neighbouring lines (default 1300)",
         setDouble("line-spacing", &C::lineSpacingM)},
        {"speed", "M/S", "ground speed (default 70)", setDouble("speed", &C::speedMps)},
        {"height", "M", "flying height above the mean terrain (default 1500)",
         setDouble("height", &C::heightAboveTerrainM)},
        {"terrain-height", "M", "mean ellipsoidal height of the terrain (default 500)",
         setDouble("terrain-height", &C::terrainHeightM)},
        {"terrain-relief", "M", "largest departure of the terrain from its mean (default 60)",
         setDouble("terrain-relief", &C::terrainReliefM)},
        {"max-bank", "DEG", "bank angle of the turns (default 25)", setDouble("max-bank", &C::maxBankDeg)},
        {"roll-rate", "DEG/S", "roll rate when entering and leaving turns (default 5)",
         setDouble("roll-rate", &C::rollRateDegPerSec)},
        {"pitch-trim", "DEG", "pitch of level flight (default 2.5)", setDouble("pitch-trim", &C::pitchTrimDeg)},
        {"lead-in", "S", "straight approach before the first take", setDouble("lead-in", &C::leadInSec)},
        {"lead-out", "S", "straight flight after the last take", setDouble("lead-out", &C::leadOutSec)},
        {"run-margin", "S", "straight flight between a take and a turn (default 10)",
         setDouble("run-margin", &C::runMarginSec)},
        {"duration", "S", "total flight length; lead-in and lead-out are stretched to fill it",
         setDouble("duration", &C::durationSec)},
        {"bands", "LIST", "comma-separated band codes (default: 12 bands, PANF28A ... NIRN00A)",
         [](C& c, const QString& v) {
             c.bands.clear();
             for (const QString& band : v.split(QLatin1Char(','), Qt::SkipEmptyParts))
                 c.bands << band.trimmed();
         }},
        {"lines", "N", "scan lines per band and take", setInt("lines", &C::linesPerTake)},
        {"line-rate", "HZ", "scan lines per second (default 800)", setDouble("line-rate", &C::lineRateHz)},
        {"samples", "N", "pixels written per scan line (default 4)", setInt("samples", &C::samplesPerLine)},
        {"focal-length", "MM", "focal length (default 62.5)", setDouble("focal-length", &C::focalLengthMm)},
        {"pixel-size", "MM", "CCD pixel size (default 0.0065)", setDouble("pixel-size", &C::pixelSizeMm)},
        {"ccd-pixels", "N", "pixels of a CCD line (default 12000)", setInt("ccd-pixels", &C::ccdPixels)},
        {"misalignment", "O,P,K", "camera misalignment omega, phi, kappa in degrees (default 0.07,-0.045,0.12)",
         [](C& c, const QString& v) {
             const QStringList parts = v.split(QLatin1Char(','));
             if (parts.size() != 3)
                 badValue("misalignment", v, "three comma-separated angles");
             for (int i = 0; i < 3; ++i)
                 c.misalignmentDeg[std::size_t(i)] = toDouble("misalignment", parts[i]);
         }},
        {"z-offset", "M", "nominal z offset of the camera mount (default 0.35)",
         setDouble("z-offset", &C::nominalZOffsetM)},
        {"integration-time", "MS", "integration time of every band (default: the line period)",
         setDouble("integration-time", &C::integrationTimeMs)},
        {"dark-takes", "N", "number of lines that begin with a dark take (default 1)",
         setInt("dark-takes", &C::darkTakes)},
        {"dark-lines", "N", "scan lines of a dark take (default 200)", setInt("dark-lines", &C::darkLines)},
        {"ct-offset", "S", "camera clock reading at the flight start (default 3600)",
         setDouble("ct-offset", &C::ctOffsetSec)},
        {"ct-drift", "PPM", "camera clock rate error against GPS time (default 12.5)",
         setDouble("ct-drift", &C::ctDriftPpm)},
        {"imu-rate", "HZ", "trajectory record rate (default 200)", setDouble("imu-rate", &C::imuRateHz)},
        {"accuracy-rate", "HZ", "smrmsg record rate (default 1)", setDouble("accuracy-rate", &C::accuracyRateHz)},
        {"turbulence", "F", "turbulence scale, 0 for calm air (default 1)", setDouble("turbulence", &C::turbulence)},
        {"dem-spacing", "M", "grid spacing of the DEM (default 25)", setDouble("dem-spacing", &C::demSpacingM)},
        {"session-data", nullptr, "also write raw/sessionData.xml with the file naming pattern",
         [](C& c, const QString&) { c.writeSessionData = true; }},
        {"fault", "NAME", "inject a fault (repeatable, comma lists, \"all\"; see below)", addFaults},
        {"fault-take", "N", "the take (1-based) that carries per-take faults (default: the middle take)",
         setInt("fault-take", &C::faultTake)},
    };
    return list;
}

} // namespace

QList<QCommandLineOption> SimulationOptions::commandLineOptions()
{
    QList<QCommandLineOption> list;
    for (const Option& option : options()) {
        if (option.valueName)
            list << QCommandLineOption(QLatin1String(option.name), QLatin1String(option.help),
                                       QLatin1String(option.valueName));
        else
            list << QCommandLineOption(QLatin1String(option.name), QLatin1String(option.help));
    }
    return list;
}

SimulationConfig SimulationOptions::config(const QCommandLineParser& parser)
{
    SimulationConfig::Preset preset = SimulationConfig::Preset::Small;
    if (parser.isSet(QStringLiteral("preset"))) {
        const QString name = parser.value(QStringLiteral("preset"));
        if (!SimulationConfig::presetFromName(name, preset))
            throw ConfigError("unknown preset \"" + name.toStdString() + "\" (--preset); use tiny, small or realistic");
    }
    // The preset first, then every option given, repeated ones in the order given.
    SimulationConfig config = SimulationConfig::preset(preset);
    for (const Option& option : options()) {
        const QString name = QLatin1String(option.name);
        if (!option.apply || !parser.isSet(name))
            continue;
        if (option.valueName) {
            for (const QString& value : parser.values(name))
                option.apply(config, value);
        } else {
            option.apply(config, QString());
        }
    }
    return config;
}

SimulationOptions::Parsed SimulationOptions::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.addOptions(commandLineOptions());
    if (!parser.parse(QStringList{QStringLiteral("flightsim")} + arguments))
        throw ConfigError(parser.errorText().toStdString());
    const QStringList positional = parser.positionalArguments();
    if (positional.isEmpty())
        throw ConfigError("no session directory given");
    if (positional.size() > 1)
        throw ConfigError("only one session directory may be given, got \"" + positional[0].toStdString()
                          + "\" and \"" + positional[1].toStdString() + "\"");
    return Parsed{config(parser), positional.front()};
}

QString SimulationOptions::help()
{
    QString text;
    for (const Option& option : options()) {
        QString left = QStringLiteral("--") + QLatin1String(option.name);
        if (option.valueName)
            left += QLatin1Char(' ') + QLatin1String(option.valueName);
        text += QStringLiteral("  %1 %2\n").arg(left, -26).arg(QLatin1String(option.help));
    }
    return text + QLatin1Char('\n') + faultHelp();
}

QString SimulationOptions::faultHelp()
{
    QString text = QStringLiteral("Faults (--fault NAME; per-take faults go to --fault-take):\n");
    for (Fault fault : FaultSet::all())
        text += QStringLiteral("  %1 %2\n").arg(FaultSet::name(fault), -26).arg(FaultSet::description(fault));
    return text;
}

} // namespace flightsim
