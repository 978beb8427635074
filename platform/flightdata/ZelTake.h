#pragma once

#include <platform/flightdata/TimePosition.h>
#include <platform/flightdata/ZelBand.h>

#include <string>
#include <vector>

namespace flightdata {

/// One take recorded on a flight line: an image take or a dark (shutter
/// closed) take, with its bands.
class ZelTake {
public:
    ZelTake(std::string label, bool dark, long long lines, double lineRateHz, TimePosition start,
            std::vector<ZelBand> bands)
        : m_label(std::move(label))
        , m_dark(dark)
        , m_lines(lines)
        , m_lineRateHz(lineRateHz)
        , m_start(std::move(start))
        , m_bands(std::move(bands))
    {
    }

    const std::string& label() const { return m_label; }
    bool isDark() const { return m_dark; }
    long long lines() const { return m_lines; }
    double lineRateHz() const { return m_lineRateHz; }
    /// The time of the take's first scan line.
    const TimePosition& start() const { return m_start; }
    const std::vector<ZelBand>& bands() const { return m_bands; }

    /// The band recorded on `channel`. Throws std::runtime_error
    /// "No band on analog channel <n> in take <label>" when there is none.
    const ZelBand& getBandForAnalogChannel(int channel) const;
    /// The band of that code, or null.
    const ZelBand* bandByName(const std::string& name) const;

private:
    std::string m_label;
    bool m_dark;
    long long m_lines;
    double m_lineRateHz;
    TimePosition m_start;
    std::vector<ZelBand> m_bands;
};

} // namespace flightdata
