#pragma once

#include <flightsim/SimulationConfig.h>

#include <QString>
#include <QStringList>

namespace flightsim {

/// The command-line options of a simulation, shared by `flightsim` and
/// `dataprep simulate`: one positional argument (the session directory) and
/// options "--name value" or "--name=value". A preset is applied first,
/// wherever it stands; the other options then override its values.
class SimulationOptions {
public:
    struct Parsed {
        SimulationConfig config;
        QString directory;
    };

    /// Parses `arguments` (without the program or command name). Throws
    /// ConfigError for an unknown option, a missing or malformed value, or a
    /// missing or extra directory. The values themselves are checked by
    /// SimulationConfig::validate().
    static Parsed parse(const QStringList& arguments);

    /// The option list for a usage text, one option per line.
    static QString help();
};

} // namespace flightsim
