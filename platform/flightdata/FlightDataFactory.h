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

    /// Reads `directory` + "/FlightData.xml". Throws std::runtime_error
    /// "Cannot open flight data file: " + path when there is no file to read.
    /// A file that is there but cannot be taken throws util::InvalidFileError:
    /// path + ": XML nested deeper than 256 elements", "Cannot parse flight
    /// data file: " + path + ": " + the parser's message (with line and
    /// column), or "Invalid flight data file " + path + ": " + what is wrong
    /// (a missing or empty attribute, a number that is none or out of its
    /// range: GPS seconds within a week, line numbers from 1, channels from 0,
    /// integration times and line rates above 0, TDI stages from 1).
    std::shared_ptr<SessionInterface> load(const QString& directory) const;

private:
    FlightDataFactory() = default;
};

} // namespace flightdata
