#pragma once

#include <flightsim/FaultSet.h>

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <stdexcept>

namespace flightsim {

/// A simulation parameter that is out of range or inconsistent; the text
/// names the parameter, its option and the offending value.
class ConfigError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Every parameter of a simulated flight, with its unit in its name. The
/// presets give consistent starting points; validate() checks a set of
/// values before anything is written.
struct SimulationConfig {
    enum class Preset { Tiny, Small, Realistic };

    std::uint64_t seed = 1;

    // Recording session and sensor.
    QString sessionId;                  ///< empty: "S" + start as yyMMdd_HHmm
    QString sensorSerial = QStringLiteral("2004");
    QString sensorType = QStringLiteral("ZEL");
    QString sensorGeneration = QStringLiteral("ZELM8");
    QString sensorHead = QStringLiteral("QX310");
    int calibrationVersion = 1;
    QDateTime startUtc = QDateTime(QDate(2026, 5, 14), QTime(8, 30, 0), Qt::UTC);

    // Block of flight lines.
    double centerLonDeg = 11.5;
    double centerLatDeg = 48.1;
    double lineAzimuthDeg = 90.0;       ///< direction of the first line, clockwise from north
    int takes = 3;
    double lineSpacingM = 1300.0;
    double speedMps = 70.0;
    double heightAboveTerrainM = 1500.0; ///< above the mean terrain height
    double terrainHeightM = 500.0;      ///< mean ellipsoidal height of the terrain
    double terrainReliefM = 60.0;       ///< largest departure from the mean
    double maxBankDeg = 25.0;
    double rollRateDegPerSec = 5.0;
    double pitchTrimDeg = 2.5;
    double leadInSec = 30.0;            ///< straight approach before the first take
    double leadOutSec = 30.0;           ///< straight flight after the last take
    double runMarginSec = 10.0;         ///< straight flight between a take and a turn
    double durationSec = 0.0;           ///< > 0: lead-in and lead-out fill the flight to this length

    // Camera.
    QStringList bands;                  ///< band codes such as PANF28A
    int linesPerTake = 8000;
    double lineRateHz = 800.0;
    int samplesPerLine = 4;             ///< pixels written per scan line
    double focalLengthMm = 62.5;
    double pixelSizeMm = 0.0065;
    int ccdPixels = 12000;
    std::array<double, 3> misalignmentDeg{0.07, -0.045, 0.12}; ///< omega, phi, kappa
    double nominalZOffsetM = 0.35;
    double integrationTimeMs = 0.0;     ///< 0: the line period
    int darkTakes = 1;                  ///< the first lines that get a dark take before their take
    int darkLines = 200;

    // Camera clock against GPS time.
    double ctOffsetSec = 3600.0;        ///< camera time at the flight start
    double ctDriftPpm = 12.5;

    // Trajectory.
    double imuRateHz = 200.0;
    double accuracyRateHz = 1.0;        ///< smrmsg record rate
    double turbulence = 1.0;            ///< scale of the turbulence; 0 is calm air

    double demSpacingM = 25.0;
    bool writeSessionData = false;

    FaultSet faults;
    int faultTake = 0;                  ///< 1-based take that carries per-take faults; 0: the middle one

    /// The twelve default bands: PAN forward, nadir and backward in A and B
    /// lines (forward at 28 and 14 degrees), red, green, blue and near
    /// infrared at nadir.
    static QStringList defaultBands();
    static SimulationConfig preset(Preset preset);
    static QString presetName(Preset preset);
    static bool presetFromName(const QString& name, Preset& preset);

    /// 0-based index of the take that carries the per-take faults.
    int faultTakeIndex() const { return faultTake > 0 ? faultTake - 1 : takes / 2; }
    /// Integration time of every band in whole microseconds.
    int integrationTimeUs() const;

    /// Throws ConfigError naming the first parameter that is out of range.
    void validate() const;
};

} // namespace flightsim
