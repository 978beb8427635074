#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep ctg <session-dir> [--take NAME]... [--json]`: writes the CTG file
/// (the GPS time of every scan line) of every band of the session that has
/// none, through the library's session preparation without the trajectory
/// coverage, and prints the bands with what became of their CTG files.
class CtgCommand final : public Command {
public:
    const char* name() const override { return "ctg"; }
    const char* summary() const override { return "write the missing CTG files (GPS time per scan line) of a session"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override;
    QList<QCommandLineOption> options() const override;
    int run(const Invocation& invocation) override;
};

} // namespace dataprep
