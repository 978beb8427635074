#pragma once

#include "Inspection.h"

namespace dataprep {

/// A strip file: the take it holds, with its line, terrain height, folders,
/// sensor, EOP files, trajectory, start and stop, level-0 images, level-2
/// products and dark takes (each a strip of its own). Relative names are
/// resolved against the session folder, the folder above the file's.
Inspection inspectStripFile(const QString& path);

} // namespace dataprep
