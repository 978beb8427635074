#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep inspect <file> [--json]`: prints every field of a file the
/// library reads.
class InspectCommand final : public Command {
public:
    const char* name() const override { return "inspect"; }
    const char* summary() const override { return "print every field of a .info, .stp, .it, .tdi, trajectory or timing file"; }
    const char* usage() const override;
    int run(const QStringList& arguments) override;
};

} // namespace dataprep
