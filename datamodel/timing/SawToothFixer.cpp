#include <datamodel/timing/SawToothFixer.h>

#include <datamodel/log/VNLLog.h>
#include <datamodel/timing/CameraTime.h>

#include <cmath>
#include <cstddef>

namespace datamodel {

namespace {

constexpr std::size_t sBlock = 8;

VNLLog& ctFileLog()
{
    static VNLLog log("datamodel.CtFile");
    return log;
}

} // namespace

SawToothFixer::SawToothFixer(CameraTime* times)
    : m_times(times)
{
}

void SawToothFixer::operator()() const
{
    std::vector<Seconds>& values = m_times->values();
    if (!hasSawTooth(values))
        return;
    fixSawTooth(values);
    m_times->write(std::string());
}

bool SawToothFixer::hasSawTooth(const std::vector<Seconds>& values) const
{
    const std::size_t n = values.size();
    if (n < 2 * sBlock || n % sBlock != 0)
        return false;
    const double d = (values[1] - values[0]).value();
    const double anchorStep = (values[8] - values[7]).value();
    if (std::abs(anchorStep - d) / d < sTolerance)
        return false;
    for (std::size_t i = 1; i < n; ++i) {
        const double step = (values[i] - values[i - 1]).value();
        const bool ok = i % sBlock != 0 ? std::abs(step - d) <= sTolerance
                                        : std::abs((step - anchorStep) * 0.95) <= sTolerance;
        if (!ok)
            return false;
    }
    return true;
}

void SawToothFixer::fixSawTooth(std::vector<Seconds>& values) const
{
    VNL_LOG_DEBUG(ctFileLog(), "SawToothEffect removed");
    const std::size_t n = values.size();
    if (n > sBlock) {
        for (std::size_t b = 0; sBlock * b + sBlock < n; ++b) {
            const Seconds base = values[sBlock * b];
            const Seconds step = (values[sBlock * b + sBlock] - base) / double(sBlock);
            for (std::size_t j = 1; j < sBlock; ++j)
                values[sBlock * b + j] = base + double(j) * step;
        }
    }
    // The last seven lines have no anchor after them: they continue with
    // the spacing of the last full block.
    if (n >= 2 * sBlock) {
        const Seconds base = values[n - sBlock];
        const Seconds step = (values[n - sBlock] - values[n - 2 * sBlock]) / double(sBlock);
        for (std::size_t j = 1; j < sBlock; ++j)
            values[n - sBlock + j] = base + double(j) * step;
    }
}

} // namespace datamodel
