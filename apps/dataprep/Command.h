#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>

#include <string>
#include <vector>

namespace dataprep {

/// Thrown for a wrong command line (a value that does not parse, a wrong
/// combination); the runner prints the message naming the command and exits
/// with code 2.
struct UsageError {
    std::string message;
};

/// A positional argument of a command, for its help and for the count check.
struct Argument {
    /// The name in the help text ("session-dir").
    QString name;
    QString description;
    bool required = true;
    /// Takes every further positional argument (only the last one).
    bool repeatable = false;
};

/// What a command is run with: the parsed command line.
struct Invocation {
    const QCommandLineParser& parser;
    /// The positional arguments, checked against Command::arguments().
    QStringList arguments;
    /// --json was given: print one JSON document (docs/json.md) on stdout.
    bool json = false;
};

/// One subcommand of dataprep. A command declares its options and
/// positional arguments; CommandRunner parses the command line, prints the
/// help and reports wrong usage, and then calls run(). Every command takes
/// --json and --help besides its own options.
class Command {
public:
    virtual ~Command() = default;
    virtual const char* name() const = 0;
    /// One line for the command list.
    virtual const char* summary() const = 0;
    /// The usage line after "dataprep <name> " ("<session-dir> [--take NAME]... [--json]").
    virtual QString synopsis() const = 0;
    /// What the command does, shown by its help above the options.
    virtual QString description() const = 0;
    virtual std::vector<Argument> arguments() const = 0;
    /// The command's own options (without --json and --help).
    virtual QList<QCommandLineOption> options() const { return {}; }
    /// Runs the command and returns its exit code: 0 success, 1 failure or
    /// errors found. Throws UsageError for a wrong value and std::exception
    /// for a failure that leaves no result.
    virtual int run(const Invocation& invocation) = 0;
};

} // namespace dataprep
