#pragma once

#include "Inspection.h"

namespace dataprep {

/// An integration-time file (`integrationTimes` true; values in seconds) or
/// a TDI file (stage counts): record count, first and last line, smallest,
/// largest and nominal value, and the runs of equal values.
Inspection inspectScanLineDataFile(const QString& path, bool integrationTimes);

} // namespace dataprep
