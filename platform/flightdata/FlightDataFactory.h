#pragma once

#include <platform/flightdata/SessionInterface.h>

#include <QString>

#include <memory>

namespace flightdata {

/// Reads flight-data files.
class FlightDataFactory {
public:
    /// The name of the flight-data file in a session's mm folder.
    static constexpr const char* sFileName = "FlightData.xml";

    static FlightDataFactory& instance();

    /// Reads `directory` + "/FlightData.xml". Throws std::runtime_error:
    /// "Cannot open flight data file: " + path, "Cannot parse flight data
    /// file: " + path + ": " + the parser's message (with line and column),
    /// or "Invalid flight data file " + path + ": " + what is wrong.
    std::shared_ptr<SessionInterface> load(const QString& directory) const;

private:
    FlightDataFactory() = default;
};

} // namespace flightdata
