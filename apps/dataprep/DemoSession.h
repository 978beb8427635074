#pragma once

#include <QString>

namespace dataprep {

/// Writes the embedded default session into `directory` (created when
/// missing): three flight lines of four bands each, one band .info file per
/// band in raw/. Returns the number of files written. Throws
/// std::runtime_error when a file cannot be written.
int writeDemoSession(const QString& directory);

} // namespace dataprep
