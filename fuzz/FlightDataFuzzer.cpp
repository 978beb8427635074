// Feeds arbitrary bytes to the flight-data reader as FlightData.xml in a
// session's mm folder, and asks the flight data that reads what a recording
// session asks of it. Any exception other than std::runtime_error, any crash
// or sanitizer finding is a bug, and so is flight data that breaks what the
// reader promises (times within a GPS week, line numbers from 1, channels
// from 0, positive integration times and line rates).

#include "FuzzSupport.h"

#include <platform/flightdata/FlightDataFactory.h>
#include <platform/flightdata/Utility.h>

#include <QDir>
#include <QString>

#include <cstdlib>
#include <stdexcept>

namespace {

void checkTime(const flightdata::TimePosition& time)
{
    if (!time.utc.isValid() || time.gpsWeek < 0 || !(time.gpsSeconds >= 0.0 && time.gpsSeconds < 604800.0))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QString folder = QString::fromStdString(fuzzsupport::scratchDirectory() + "/mm");
    static const bool made = QDir().mkpath(folder);
    (void)made;
    fuzzsupport::writeInput("mm/FlightData.xml", data, size);
    try {
        const auto flight = flightdata::FlightDataFactory::instance().load(folder);
        checkTime(flight->flightStart());
        checkTime(flight->firstTakeTime());
        if (flight->id().empty() || flight->id() == "." || flight->id() == ".."
            || flight->id().find('/') != std::string::npos)
            std::abort();
        (void)flightdata::Utility::isZelM9(*flight);
        (void)flightdata::Utility::firstTake(*flight);
        for (const flightdata::ZelLine& line : flight->lines()) {
            if (line.number < 1)
                std::abort();
            try {
                const flightdata::ZelTake& take = flightdata::Utility::takeFromLineNumber(*flight, unsigned(line.number));
                for (const flightdata::ZelBand& band : take.bands())
                    (void)take.getBandForAnalogChannel(band.analogChannel()).name();
            } catch (const std::runtime_error&) {
            }
            (void)flightdata::Utility::darkTakes(*flight, unsigned(line.number));
            for (const flightdata::ZelTake& take : line.takes) {
                checkTime(take.start());
                if (take.lines() < 0 || !(take.lineRateHz() > 0.0))
                    std::abort();
                for (const flightdata::ZelBand& band : take.bands()) {
                    if (band.analogChannel() < 0 || !(band.getIntegrationTime() > 0.0) || band.tdiStages() < 1
                        || take.bandByName(band.name()) == nullptr)
                        std::abort();
                }
            }
        }
    } catch (const std::runtime_error&) {
    }
    return 0;
}
