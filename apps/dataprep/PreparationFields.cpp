#include "PreparationFields.h"

#include "TrajectoryFields.h"

#include <QJsonArray>

namespace dataprep {

namespace {

QJsonArray textArray(const std::vector<std::string>& values)
{
    QJsonArray array;
    for (const std::string& value : values)
        array.append(QString::fromStdString(value));
    return array;
}

} // namespace

Fields sensorFields(const datamodel::SensorSummary& sensor)
{
    Fields fields;
    fields.add(QStringLiteral("id"), text(sensor.id));
    fields.add(QStringLiteral("type"), text(sensor.type));
    fields.add(QStringLiteral("calibrationVersion"), sensor.calibrationVersion);
    fields.add(QStringLiteral("cameraFile"), text(sensor.cameraFile));
    return fields;
}

Fields timeMarksFields(const datamodel::TimeMarkSummary& marks)
{
    Fields fields;
    fields.add(QStringLiteral("file"), text(marks.file));
    fields.add(QStringLiteral("records"), marks.records);
    fields.add(QStringLiteral("gpsRollover"), marks.gpsRollover);
    return fields;
}

Fields trajectorySummaryFields(const datamodel::TrajectorySummary& trajectory)
{
    const bool opened = trajectory.opened;
    // A file crosses a week boundary when its first time is later than its last.
    QJsonValue rollover;
    if (trajectory.gpsStartSec && trajectory.gpsEndSec)
        rollover = *trajectory.gpsStartSec > *trajectory.gpsEndSec;
    Fields fields;
    fields.add(QStringLiteral("name"), text(trajectory.name));
    fields.add(QStringLiteral("file"), textOrNull(trajectory.path));
    fields.add(QStringLiteral("format"), textOrNull(trajectory.format));
    fields.add(QStringLiteral("opened"), opened);
    fields.add(QStringLiteral("records"), opened ? QJsonValue(trajectory.records) : QJsonValue());
    fields.add(QStringLiteral("gpsStartSec"), number(trajectory.gpsStartSec));
    fields.add(QStringLiteral("gpsEndSec"), number(trajectory.gpsEndSec));
    fields.add(QStringLiteral("gpsRollover"), rollover);
    fields.add(QStringLiteral("recordIntervalSec"), opened ? number(trajectory.recordIntervalSec) : QJsonValue());
    fields.add(QStringLiteral("frequencyHz"), opened ? frequencyHz(trajectory.recordIntervalSec) : QJsonValue());
    fields.add(QStringLiteral("hasStdDevs"), opened ? QJsonValue(trajectory.hasStdDevs) : QJsonValue());
    fields.add(QStringLiteral("error"), textOrNull(trajectory.error));
    return fields;
}

Fields bandFields(const std::string& take, const datamodel::BandPreparation& band)
{
    Fields fields;
    fields.add(QStringLiteral("take"), text(take));
    fields.add(QStringLiteral("band"), text(band.band));
    fields.add(QStringLiteral("lines"), band.lines ? QJsonValue(qint64(*band.lines)) : QJsonValue());
    fields.add(QStringLiteral("ctgStatus"), QString::fromLatin1(datamodel::toString(band.ctg)));
    fields.add(QStringLiteral("ctFile"), text(band.ctFile));
    fields.add(QStringLiteral("ctgFile"), text(band.ctgFile));
    fields.add(QStringLiteral("gpsStartSec"), number(band.gpsStartSec));
    fields.add(QStringLiteral("gpsEndSec"), number(band.gpsEndSec));
    fields.add(QStringLiteral("error"), textOrNull(band.error));
    return fields;
}

Fields takeFields(const datamodel::TakePreparation& take, bool coverage)
{
    std::vector<Fields> bands;
    for (const datamodel::BandPreparation& band : take.bands)
        bands.push_back(bandFields(take.name, band));
    Fields fields;
    fields.add(QStringLiteral("name"), text(take.name));
    fields.add(QStringLiteral("lineNumber"), take.lineNumber ? QJsonValue(*take.lineNumber) : QJsonValue());
    fields.add(QStringLiteral("darkTakes"), textArray(take.darkTakes));
    fields.add(QStringLiteral("gpsStartSec"), number(take.gpsStartSec));
    fields.add(QStringLiteral("gpsEndSec"), number(take.gpsEndSec));
    fields.add(QStringLiteral("coveredBy"), coverage ? QJsonValue(textArray(take.coveredBy)) : QJsonValue());
    fields.add(QStringLiteral("bands"), QString(), std::move(bands));
    std::optional<Fields> eop;
    if (take.eop) {
        eop.emplace();
        eop->add(QStringLiteral("trajectory"), text(take.eop->trajectory));
        eop->add(QStringLiteral("file"), textOrNull(take.eop->file));
        eop->add(QStringLiteral("samples"), qint64(take.eop->samples));
        eop->add(QStringLiteral("intervalSec"), take.eop->intervalSec);
    }
    fields.add(QStringLiteral("eop"), QString(), std::move(eop));
    std::optional<Fields> quality;
    if (take.quality) {
        const datamodel::QualitySummary& q = *take.quality;
        quality.emplace();
        quality->add(QStringLiteral("band"), text(q.band));
        quality->add(QStringLiteral("dem"), textOrNull(q.dem));
        quality->add(QStringLiteral("flatHeightM"), q.dem.empty() ? QJsonValue(q.flatHeightM) : QJsonValue());
        quality->add(QStringLiteral("file"), textOrNull(q.file));
        quality->add(QStringLiteral("samples"), qint64(q.samples));
        quality->add(QStringLiteral("minNcs"), double(q.minNcs));
        quality->add(QStringLiteral("maxNcs"), double(q.maxNcs));
        quality->add(QStringLiteral("rmsNcs"), double(q.rmsNcs));
        quality->add(QStringLiteral("minRpe"), double(q.minRpe));
        quality->add(QStringLiteral("maxRpe"), double(q.maxRpe));
        quality->add(QStringLiteral("rmsRpe"), double(q.rmsRpe));
        quality->add(QStringLiteral("maxPsr"), double(q.maxPsr));
        quality->add(QStringLiteral("rmsPsr"), double(q.rmsPsr));
    }
    fields.add(QStringLiteral("quality"), QString(), std::move(quality));
    return fields;
}

Fields ctgCountFields(const datamodel::PreparationReport& report)
{
    using datamodel::CtgStatus;
    Fields fields;
    fields.add(QStringLiteral("written"), qint64(report.ctgCount(CtgStatus::Written)));
    fields.add(QStringLiteral("present"), qint64(report.ctgCount(CtgStatus::Present)));
    fields.add(QStringLiteral("failed"), qint64(report.ctgCount(CtgStatus::Failed)));
    fields.add(QStringLiteral("notChecked"), qint64(report.ctgCount(CtgStatus::NotChecked)));
    return fields;
}

} // namespace dataprep
