#pragma once

#include "Command.h"
#include "Fields.h"

#include <QString>

namespace dataprep {

/// `dataprep ctg <session-dir> [--take NAME]... [--json]`: writes the CTG file
/// (the GPS time of every scan line) of every band of the session that has
/// none, converting the band's CT values through the session's time-mark
/// file, and reports what it wrote.
class CtgCommand final : public Command {
public:
    const char* name() const override { return "ctg"; }
    const char* summary() const override { return "write the missing CTG files (GPS time per scan line) of a session"; }
    const char* usage() const override;
    int run(const QStringList& arguments) override;
};

/// Whether `inspect` reads `path` as a timing file: a time-mark file (*.tm,
/// tm*.dat), a CT file (*.ct) or a CTG file (*.ctg).
bool isTimingFile(const QString& path);
/// The fields `inspect` prints for a timing file. Time-mark file: record
/// count, periods, first and last mark, rollover, regularity and the
/// irregular steps. CT file: line count, first and last camera time, mean,
/// smallest and largest step. CTG file: line count, first and last GPS time,
/// mean step, and the stretches of steady line period.
Fields inspectTimingFile(const QString& path);

} // namespace dataprep
