#include <platform/flightdata/Utility.h>

#include <stdexcept>

namespace flightdata {

bool Utility::isZelM9(const SessionInterface& session)
{
    return session.sensorGeneration() == "ZELM9";
}

const ZelTake& Utility::takeFromLineNumber(const SessionInterface& session, unsigned lineNumber)
{
    for (const ZelLine& line : session.lines()) {
        if (line.number < 0 || unsigned(line.number) != lineNumber)
            continue;
        for (const ZelTake& take : line.takes)
            if (!take.isDark())
                return take;
    }
    throw std::runtime_error("No take for line number " + std::to_string(lineNumber) + " in the flight data");
}

std::string Utility::firstTake(const SessionInterface& session)
{
    const QDateTime& utc = session.firstTakeTime().utc;
    if (!utc.isValid())
        throw std::runtime_error("The flight data hold no first take time");
    return utc.toUTC().toString(QString::fromLatin1(TimePosition::sDateTimeString)).toStdString();
}

std::vector<const ZelTake*> Utility::darkTakes(const SessionInterface& session, unsigned lineNumber)
{
    std::vector<const ZelTake*> result;
    for (const ZelLine& line : session.lines()) {
        if (line.number < 0 || unsigned(line.number) != lineNumber)
            continue;
        for (const ZelTake& take : line.takes)
            if (take.isDark())
                result.push_back(&take);
    }
    return result;
}

} // namespace flightdata
