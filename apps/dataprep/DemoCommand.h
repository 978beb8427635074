#pragma once

#include "Command.h"

namespace dataprep {

/// `dataprep demo [--keep <dir>]`: writes the embedded default session (a
/// small flight of band .info files) and runs the session checks on it.
class DemoCommand final : public Command {
public:
    const char* name() const override { return "demo"; }
    const char* summary() const override { return "write the embedded default session and check it"; }
    const char* usage() const override;
    int run(const QStringList& arguments) override;
};

} // namespace dataprep
