#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace flightsim {

/// A fault that the simulator can inject into a flight.
enum class Fault {
    TmGap,                  ///< time marks missing around the fault take's middle
    WeekRollover,           ///< the GPS week ends during the fault take
    TmJitter,               ///< time marks whose camera time is latched 6 to 15 ms off
    CtBackwards,            ///< the camera time of one band steps back within the fault take
    SawTooth,               ///< one band of the fault take with the eight-line saw-tooth
    ShortTrajectory,        ///< the trajectory ends in the middle of the last take
    HeavyTurbulence,        ///< heavy turbulence during the fault take
    TruncatedTrajectory,    ///< the SBET file ends inside its last record
    MissingSensorId,        ///< one .info file without sensor serial number
    IntegrationTimeOutOfRange, ///< one band recorded with a 25 ms integration time
};

/// A set of faults with their command-line names.
class FaultSet {
public:
    bool has(Fault fault) const;
    void add(Fault fault);
    bool empty() const { return m_faults.empty(); }
    /// In the order of all().
    std::vector<Fault> faults() const;
    QStringList names() const;

    /// Every fault, in declaration order.
    static const std::vector<Fault>& all();
    /// The command-line name ("tm-gap", "week-rollover", ...).
    static QString name(Fault fault);
    /// One line for the help text.
    static QString description(Fault fault);
    static std::optional<Fault> fromName(const QString& name);

private:
    std::vector<Fault> m_faults;
};

} // namespace flightsim
