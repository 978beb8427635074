#pragma once

#include "Inspection.h"

namespace dataprep {

/// A band info file: its files, sensor, band, strip name, start and stop
/// positions and times, integration time and flight line.
Inspection inspectInfoFile(const QString& path);

} // namespace dataprep
