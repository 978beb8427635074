#pragma once

#include "Fields.h"

#include <datamodel/session/PreparationReport.h>

namespace dataprep {

/// The JSON objects of a session preparation, shared by prepare, ctg and
/// demo so that each key has one meaning and one type (docs/json.md).

/// id, type, calibrationVersion, cameraFile.
Fields sensorFields(const datamodel::SensorSummary& sensor);
/// file, records, gpsRollover.
Fields timeMarksFields(const datamodel::TimeMarkSummary& marks);
/// name, file, format (null), opened, records, gpsStartSec, gpsEndSec,
/// gpsRollover, recordIntervalSec, frequencyHz, hasStdDevs, error: the
/// trajectory object of TrajectoryFields.
Fields trajectorySummaryFields(const datamodel::TrajectorySummary& trajectory);
/// take, band, lines, ctgStatus, ctFile, ctgFile, gpsStartSec, gpsEndSec, error.
Fields bandFields(const std::string& take, const datamodel::BandPreparation& band);
/// name, lineNumber, darkTakes, gpsStartSec, gpsEndSec, coveredBy (null
/// when `coverage` was not worked out), bands.
Fields takeFields(const datamodel::TakePreparation& take, bool coverage);
/// written, present, failed, notChecked.
Fields ctgCountFields(const datamodel::PreparationReport& report);

} // namespace dataprep
