#include <platform/flightdata/ZelTake.h>

#include <stdexcept>

namespace flightdata {

const ZelBand& ZelTake::getBandForAnalogChannel(int channel) const
{
    for (const ZelBand& band : m_bands)
        if (band.analogChannel() == channel)
            return band;
    throw std::runtime_error("No band on analog channel " + std::to_string(channel) + " in take " + m_label);
}

const ZelBand* ZelTake::bandByName(const std::string& name) const
{
    for (const ZelBand& band : m_bands)
        if (band.name() == name)
            return &band;
    return nullptr;
}

} // namespace flightdata
