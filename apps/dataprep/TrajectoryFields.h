#pragma once

#include "Fields.h"

#include <datamodel/trajectory/ImuRecord.h>

#include <QString>

namespace dataprep {

class TrajectoryFile;

/// A trajectory record: gpsSec, latitudeRad, longitudeRad, heightM,
/// rollRad, pitchRad, headingRad (null for an accuracy file, which holds no
/// positions: `positions` false) and stdDev (null when the file has none).
/// The text shows angles in degrees.
Fields trajectoryRecordFields(const datamodel::ImuRecord& record, bool positions, bool stdDevs);

/// The standard deviations of a record: northM, eastM, downM, rollRad,
/// pitchRad, headingRad.
Fields stdDevFields(const datamodel::ImuRecord& record);

/// What every command says of an opened trajectory file: name, file,
/// format, opened (true), records, gpsStartSec, gpsEndSec, gpsRollover,
/// recordIntervalSec, frequencyHz, hasStdDevs, error (null); the same
/// object as a session's trajectory in prepare (PreparationFields).
Fields trajectoryFileFields(const QString& path, const TrajectoryFile& file);

/// The record interval as text: "0.005 s (200.000 Hz)", or "-".
QString intervalText(double intervalSec);
/// 1 / interval, or null when the interval is not a positive number.
QJsonValue frequencyHz(double intervalSec);

} // namespace dataprep
