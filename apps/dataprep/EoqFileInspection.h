#pragma once

#include "Inspection.h"

namespace dataprep {

/// An EOQ file: its records (count, time range) and the statistics of the
/// trajectory quality measures its header holds.
Inspection inspectEoqFile(const QString& path);

} // namespace dataprep
