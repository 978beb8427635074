#pragma once

#include <platform/flightdata/SessionInterface.h>

#include <string>

namespace flightdata {

/// Questions asked of flight data.
class Utility {
public:
    /// Whether the flight was recorded by the newer sensor generation "ZELM9".
    static bool isZelM9(const SessionInterface& session);
    /// The image take recorded on the flight line with that number. Throws
    /// std::runtime_error "No take for line number <n> in the flight data".
    static const ZelTake& takeFromLineNumber(const SessionInterface& session, unsigned lineNumber);
    /// The time of the first take, as UTC text in TimePosition::sDateTimeString.
    static std::string firstTake(const SessionInterface& session);
    /// The dark takes recorded on the flight line with that number (possibly none).
    static std::vector<const ZelTake*> darkTakes(const SessionInterface& session, unsigned lineNumber);
};

} // namespace flightdata
