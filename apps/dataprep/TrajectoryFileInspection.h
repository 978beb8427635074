#pragma once

#include "FileKind.h"
#include "Inspection.h"

namespace dataprep {

/// A trajectory file (SBET, SOL) opened by its content as the library opens
/// it, or an smrmsg accuracy file (`named` Smrmsg): what every command says
/// of a trajectory (TrajectoryFields), the record size, a partial last
/// record, the order of the records, the time index, the accuracy file of
/// an SBET file, and the first and last record. A file that holds another
/// format than its name says, a partial record and records out of time
/// order are warnings.
Inspection inspectTrajectoryFile(const QString& path, FileKind::Kind named);

} // namespace dataprep
