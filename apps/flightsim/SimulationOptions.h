#pragma once

#include <flightsim/SimulationConfig.h>

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>
#include <QStringList>

namespace flightsim {

/// The command-line options of a simulation, shared by `flightsim` and
/// `dataprep simulate`: options "--name value" or "--name=value" read by a
/// QCommandLineParser. A preset is applied first, wherever it stands; the
/// other options then override its values.
class SimulationOptions {
public:
    struct Parsed {
        SimulationConfig config;
        QString directory;
    };

    /// The options, for a parser that also reads other options.
    static QList<QCommandLineOption> commandLineOptions();
    /// The configuration given by a parser that holds commandLineOptions().
    /// Throws ConfigError for an unknown preset or fault and a malformed
    /// value. The values themselves are checked by SimulationConfig::validate().
    static SimulationConfig config(const QCommandLineParser& parser);

    /// Parses `arguments` (without the program or command name): the options
    /// and one positional argument, the session directory. Throws
    /// ConfigError for an unknown option, a missing or malformed value, or a
    /// missing or extra directory (the parser's texts for the options).
    static Parsed parse(const QStringList& arguments);

    /// The option list for a usage text, one option per line, then the faults.
    static QString help();
    /// The faults that --fault injects, one per line with what it does.
    static QString faultHelp();
};

} // namespace flightsim
