#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep inspect <file> [--json]`: prints every field of a file the
/// library reads. The name says what the file should be; the content is
/// checked against it where it carries a mark, so that a renamed file is
/// refused rather than read as what it is not.
class InspectCommand final : public Command {
public:
    const char* name() const override { return "inspect"; }
    const char* summary() const override { return "print every field of a file the library reads"; }
    QString synopsis() const override;
    QString description() const override;
    std::vector<Argument> arguments() const override;
    int run(const Invocation& invocation) override;
};

} // namespace dataprep
