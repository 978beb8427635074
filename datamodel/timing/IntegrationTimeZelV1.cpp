#include <datamodel/timing/IntegrationTimeZelV1.h>

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>

#include <platform/flightdata/Utility.h>

#include <QDomElement>

namespace datamodel {

const std::string IntegrationTimeZelV1::EMPTY_NAME;

IntegrationTimeZelV1::IntegrationTimeZelV1(Seconds value)
    : m_valueSec(static_cast<float>(value.value()))
{
}

bool IntegrationTimeZelV1::write(const std::string&)
{
    return false;
}

void IntegrationTimeZelV1::addXmlAttribute(QDomElement& element) const
{
    if (isValid())
        element.setAttribute(QStringLiteral("it"), QString::number(double(m_valueSec) * 1000.0, 'f', 3));
}

void IntegrationTimeZelV1::init(const L0Image& image)
{
    // The recorder's integration time of the band: the flight-data take of
    // the take's line, its band on the image band's analog channel. When the
    // flight data cannot tell, the value stays as it is.
    try {
        const Take& take = image.take();
        std::uint32_t lineNumber = take.lineNumber();
        if (lineNumber == Take::sUnsetLineNumber) {
            const L0Image* first = take.imagesL0().empty() ? nullptr : take.imagesL0().front();
            if (!first || first->infoFile().lineNumber() < 0)
                return;
            lineNumber = std::uint32_t(first->infoFile().lineNumber());
        }
        const auto flight = take.session().flightDataSession();
        const flightdata::ZelTake& zelTake = flightdata::Utility::takeFromLineNumber(*flight, lineNumber);
        const flightdata::ZelBand* band = zelTake.bandByName(image.bandName());
        int channel = band ? band->analogChannel() : -1;
        if (const Sensor::BandGeometry* geometry = take.session().sensor().band(image.bandName()))
            channel = geometry->analogChannel;
        m_valueSec = static_cast<float>(zelTake.getBandForAnalogChannel(channel).getIntegrationTime());
    } catch (const std::exception&) {
        // The value stays as it is.
    }
}

} // namespace datamodel
