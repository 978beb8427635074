#include <datamodel/validation/IntegrationTimeValidator.h>

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Settings.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TimeFormat_p.h>

#include <platform/flightdata/Utility.h>

#include <cmath>
#include <memory>
#include <stdexcept>

namespace datamodel {

namespace {

bool checkRequested()
{
    const QString value = Settings::readString(Settings::sCtNotEqualItWarningKey, QStringLiteral("false")).toLower();
    return value == QLatin1String("true") || value == QLatin1String("yes");
}

/// The take's line number: its own, else that of its first band's info file.
std::uint32_t lineNumberOf(const Take& take)
{
    if (take.lineNumber() != Take::sUnsetLineNumber)
        return take.lineNumber();
    if (take.imagesL0().empty() || !take.imagesL0().front())
        throw std::runtime_error("No line number for take " + take.name());
    const int number = take.imagesL0().front()->infoFile().lineNumber();
    if (number < 0)
        throw std::runtime_error("No line number for take " + take.name());
    return std::uint32_t(number);
}

} // namespace

IntegrationTimeValidator::IntegrationTimeValidator(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
{
}

IntegrationTimeValidator::~IntegrationTimeValidator() = default;

void IntegrationTimeValidator::validate(CameraTime& times)
{
    times.cache();
    if (times.isNonUniformCT())
        validateV2(times);
    else
        validateV1(times);
}

void IntegrationTimeValidator::validateV1(CameraTime& times)
{
    const L0Image& image = times.img();
    const Take& take = image.take();
    const RecordingSession* session = dynamic_cast<const RecordingSession*>(&take.manager());
    if (!session || (session->isFromRaw() && session->isFromMM()))
        return;
    if (!checkRequested())
        return;
    std::shared_ptr<flightdata::SessionInterface> flight;
    try {
        flight = session->flightDataSession();
    } catch (const std::exception&) {
        return; // no flight data: the camera head is not known to be a QX310
    }
    if (flight->sensorHead() != "QX310")
        return;

    const std::vector<Seconds>& values = times.values();
    const std::size_t n = values.size();
    if (n == 0)
        throw std::runtime_error("CT index out of range.");
    // Divided by the number of lines, not of steps, as the recorder's tools do.
    const double averageSec = (values[n - 1].value() - values[0].value()) / double(n);

    const flightdata::ZelTake& zelTake = flightdata::Utility::takeFromLineNumber(*flight, lineNumberOf(take));
    const flightdata::ZelBand* named = zelTake.bandByName(image.bandName());
    int channel = named ? named->analogChannel() : -1;
    try {
        // The camera description knows the channel better than the flight data.
        if (const Sensor::BandGeometry* geometry = session->sensor().band(image.bandName()))
            channel = geometry->analogChannel;
    } catch (const std::exception&) {
        // No camera description: the flight data's channel stands.
    }
    const double integrationSec = zelTake.getBandForAnalogChannel(channel).getIntegrationTime();

    if (integrationSec > 0.0) {
        const double toleranceSec = sTolerance * averageSec;
        if (std::abs(averageSec - integrationSec) > toleranceSec)
            warning(std::string("FlightData.xml") + " claims the integration time is " + fixedText(integrationSec, 4)
                    + "s but the CTG file has an average delta of " + fixedText(averageSec, 4)
                    + "s (maximum difference allowed is " + fixedText(toleranceSec, 4) + "s)" + " for band "
                    + image.bandName());
    } else {
        warning("The integration time from " + image.infoFileName() + " is invalid and will not be used.");
    }
}

void IntegrationTimeValidator::validateV2(CameraTime&) {}

} // namespace datamodel
