#include <flightsim/FaultSet.h>

#include <algorithm>

namespace flightsim {

namespace {

struct FaultName {
    Fault fault;
    const char* name;
    const char* description;
};

constexpr FaultName sNames[] = {
    {Fault::TmGap, "tm-gap", "three time marks missing around the middle of the fault take"},
    {Fault::WeekRollover, "week-rollover", "the GPS week ends during the fault take (overrides --start)"},
    {Fault::TmJitter, "tm-jitter", "up to five time marks latched 6 to 15 ms late or early"},
    {Fault::CtBackwards, "ct-backwards", "the camera time of the first band steps back in the fault take"},
    {Fault::SawTooth, "saw-tooth", "the last band of the fault take with the eight-line saw-tooth"},
    {Fault::ShortTrajectory, "short-trajectory", "the trajectory ends in the middle of the last take"},
    {Fault::HeavyTurbulence, "heavy-turbulence", "heavy turbulence during the fault take"},
    {Fault::TruncatedTrajectory, "truncated-trajectory", "the SBET file ends inside its last record"},
    {Fault::MissingSensorId, "missing-sensor-id", "the third band's .info file of the fault take (the first of fewer than four) has no sensor id"},
    {Fault::IntegrationTimeOutOfRange, "integration-time",
     "the second band of the fault take recorded with a 25 ms integration time"},
};

} // namespace

bool FaultSet::has(Fault fault) const
{
    return std::find(m_faults.begin(), m_faults.end(), fault) != m_faults.end();
}

void FaultSet::add(Fault fault)
{
    if (!has(fault))
        m_faults.push_back(fault);
}

std::vector<Fault> FaultSet::faults() const
{
    std::vector<Fault> ordered;
    for (Fault fault : all())
        if (has(fault))
            ordered.push_back(fault);
    return ordered;
}

QStringList FaultSet::names() const
{
    QStringList list;
    for (Fault fault : faults())
        list << name(fault);
    return list;
}

const std::vector<Fault>& FaultSet::all()
{
    static const std::vector<Fault> faults = [] {
        std::vector<Fault> list;
        for (const FaultName& entry : sNames)
            list.push_back(entry.fault);
        return list;
    }();
    return faults;
}

QString FaultSet::name(Fault fault)
{
    for (const FaultName& entry : sNames)
        if (entry.fault == fault)
            return QString::fromLatin1(entry.name);
    return {};
}

QString FaultSet::description(Fault fault)
{
    for (const FaultName& entry : sNames)
        if (entry.fault == fault)
            return QString::fromLatin1(entry.description);
    return {};
}

std::optional<Fault> FaultSet::fromName(const QString& name)
{
    for (const FaultName& entry : sNames)
        if (name == QLatin1String(entry.name))
            return entry.fault;
    return std::nullopt;
}

} // namespace flightsim
