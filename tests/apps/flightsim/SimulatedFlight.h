#pragma once

// A simulated session in a temporary folder, with its truth file loaded.

#include "FlightFiles.h"

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

#include <stdexcept>

namespace flightfiles {

/// The tiny preset with a fixed seed: one take of 400 lines in two bands,
/// 12 s of trajectory.
inline flightsim::SimulationConfig tinyConfig()
{
    flightsim::SimulationConfig config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
    config.seed = 7;
    return config;
}

/// Tiny takes on `takes` lines 400 m apart (short teardrop turns between them).
inline flightsim::SimulationConfig tinyBlock(int takes)
{
    flightsim::SimulationConfig config = tinyConfig();
    config.takes = takes;
    config.lineSpacingM = 400.0;
    return config;
}

class SimulatedFlight {
public:
    explicit SimulatedFlight(const flightsim::SimulationConfig& config)
        : m_config(config)
    {
        if (!m_temporary.isValid())
            throw std::runtime_error("test: no temporary folder");
        m_directory = m_temporary.path() + QStringLiteral("/session");
        m_report = flightsim::FlightSimulator(config).run(m_directory);
        m_truth = readJson(path(QStringLiteral("truth.json")));
    }

    const QString& directory() const { return m_directory; }
    QString path(const QString& relative) const { return m_directory + QLatin1Char('/') + relative; }
    /// The path of a file named in the truth file.
    QString path(const QJsonValue& relative) const { return path(relative.toString()); }
    const QJsonObject& truth() const { return m_truth; }
    const flightsim::SimulationConfig& config() const { return m_config; }
    const flightsim::SimulationReport& report() const { return m_report; }
    QJsonArray takes() const { return m_truth[QStringLiteral("takes")].toArray(); }
    QJsonObject take(int i) const { return takes()[i].toObject(); }
    QJsonObject trajectory() const { return m_truth[QStringLiteral("trajectory")].toObject(); }
    /// The truth entries of the fault named `name`.
    std::vector<QJsonObject> faults(const QString& name) const
    {
        std::vector<QJsonObject> found;
        for (const QJsonValue& fault : m_truth[QStringLiteral("faults")].toArray())
            if (fault[QStringLiteral("name")].toString() == name)
                found.push_back(fault.toObject());
        return found;
    }
    QStringList faultNames() const
    {
        QStringList names;
        for (const QJsonValue& fault : m_truth[QStringLiteral("faults")].toArray())
            names << fault[QStringLiteral("name")].toString();
        return names;
    }
    /// The camera time of flight time `flightSec` by the truth's clock.
    double ctAt(double flightSec) const
    {
        const QJsonObject clock = m_truth[QStringLiteral("cameraClock")].toObject();
        return clock[QStringLiteral("offsetSec")].toDouble()
            + (1.0 + clock[QStringLiteral("driftPpm")].toDouble() * 1e-6) * flightSec;
    }
    double startGpsSec() const { return m_truth[QStringLiteral("time")][QStringLiteral("startGpsSec")].toDouble(); }

private:
    flightsim::SimulationConfig m_config;
    QTemporaryDir m_temporary;
    QString m_directory;
    flightsim::SimulationReport m_report;
    QJsonObject m_truth;
};

} // namespace flightfiles
