#pragma once

#include <QStringList>

#include <string>

namespace dataprep {

/// Thrown for a wrong command line; main() prints the message with the
/// command's usage and exits with code 2.
struct UsageError {
    std::string message;
};

/// One subcommand of the program.
class Command {
public:
    virtual ~Command() = default;
    virtual const char* name() const = 0;
    /// One line for the command list.
    virtual const char* summary() const = 0;
    /// The full help text of the command.
    virtual const char* usage() const = 0;
    /// Runs the command on its arguments (without the command name) and
    /// returns the exit code. Failures are thrown as std::exception.
    virtual int run(const QStringList& arguments) = 0;
};

} // namespace dataprep
