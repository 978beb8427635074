#pragma once

#include "Command.h"

#include <QStringList>

#include <memory>
#include <vector>

namespace dataprep {

/// Runs dataprep's command line: finds the command, parses its options and
/// positional arguments with QCommandLineParser, prints the program's and
/// the commands' help and the version, and turns wrong usage and failures
/// into messages and exit codes (0 success, 1 failure or errors found,
/// 2 wrong usage).
class CommandRunner {
public:
    void add(std::unique_ptr<Command> command);

    /// Runs the command line `arguments` (without the program name) and
    /// returns the exit code.
    int run(QStringList arguments) const;

private:
    Command* find(const QString& name) const;
    void printProgramHelp() const;
    /// The help of `command`: usage line, description, options, arguments.
    QString help(const Command& command, QCommandLineParser& parser) const;
    int runCommand(Command& command, const QStringList& arguments) const;

    std::vector<std::unique_ptr<Command>> m_commands;
};

} // namespace dataprep
