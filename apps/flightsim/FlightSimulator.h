#pragma once

#include <flightsim/SimulationConfig.h>

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace util {
class ProgressInterface;
}

namespace flightsim {

/// What a simulation wrote.
struct SimulationReport {
    QString directory;
    QString sessionId;
    QString startUtc;           ///< ISO 8601
    int gpsWeek = 0;
    int takes = 0;
    int darkTakes = 0;
    int bands = 0;
    long long linesPerTake = 0;
    double flightSec = 0.0;
    long long trajectoryRecords = 0;
    long long accuracyRecords = 0;
    long long timeMarks = 0;
    QStringList faults;
    int files = 0;
    long long bytes = 0;
    double seconds = 0.0;
    std::vector<std::pair<QString, double>> phaseSeconds;

    QJsonObject toJson() const;
    /// A few lines for a terminal.
    QString toText() const;
};

/// Simulates a flight and writes its recording session. The session is
/// built in a hidden folder beside the target and renamed onto it at the
/// end, so the target either holds a complete session or is left as it was.
class FlightSimulator {
public:
    explicit FlightSimulator(SimulationConfig config);

    /// Writes the session into `directory`, which must not exist or be empty
    /// (its parent is created when missing). Throws ConfigError for invalid
    /// parameters and std::runtime_error for file-system failures.
    SimulationReport run(const QString& directory, util::ProgressInterface* progress = nullptr) const;

private:
    SimulationConfig m_config;
};

} // namespace flightsim
