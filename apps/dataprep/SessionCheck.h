#pragma once

#include <QString>

namespace util {
class ProgressInterface;
}

namespace dataprep {

/// Reads every band .info file of the session directory's raw/ folder,
/// groups the bands into takes by strip name, validates every info file and
/// prints a summary (JSON when `json`). Returns 0 when every file is valid,
/// 1 otherwise; problems are listed on stderr.
int checkSession(const QString& directory, bool json, util::ProgressInterface* progress);

} // namespace dataprep
