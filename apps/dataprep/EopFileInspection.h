#pragma once

#include "Inspection.h"

namespace dataprep {

/// An EOP file: its anchor, sample interval, absolute time, sources and
/// samples (count, time range, the first and the last sample).
Inspection inspectEopFile(const QString& path);

} // namespace dataprep
