#pragma once

#include "Inspection.h"

namespace dataprep {

/// A time-mark file: record count, periods, first and last mark, GPS week
/// rollover, regularity and the first irregular steps with what they look
/// like. Irregular steps are warnings.
Inspection inspectTimeMarkFile(const QString& path);
/// A CT file: line count, first and last camera time, mean, smallest and
/// largest step; steps that do not rise are a warning.
Inspection inspectCtFile(const QString& path);
/// A CTG file: line count, first and last GPS time, steps, and the
/// stretches of steady line period; steps that do not rise are a warning.
Inspection inspectCtgFile(const QString& path);

} // namespace dataprep
