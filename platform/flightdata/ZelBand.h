#pragma once

#include <string>

namespace flightdata {

/// One band of a recorded take: its code, the analog channel it was
/// recorded on and the integration time the recorder used.
class ZelBand {
public:
    ZelBand(std::string name, int analogChannel, double integrationTimeSec, int tdiStages, std::string infoFile)
        : m_name(std::move(name))
        , m_analogChannel(analogChannel)
        , m_integrationTimeSec(integrationTimeSec)
        , m_tdiStages(tdiStages)
        , m_infoFile(std::move(infoFile))
    {
    }

    const std::string& name() const { return m_name; }
    int analogChannel() const { return m_analogChannel; }
    /// The recorded integration time in seconds.
    double getIntegrationTime() const { return m_integrationTimeSec; }
    int tdiStages() const { return m_tdiStages; }
    /// The band's .info file name (in the session's raw folder).
    const std::string& infoFile() const { return m_infoFile; }

private:
    std::string m_name;
    int m_analogChannel;
    double m_integrationTimeSec;
    int m_tdiStages;
    std::string m_infoFile;
};

} // namespace flightdata
