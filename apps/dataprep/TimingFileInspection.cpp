#include "TimingFileInspection.h"

#include <datamodel/timing/LineTimeCheck.h>
#include <datamodel/timing/TmFile.h>

#include <platform/raster/CtFile.h>
#include <platform/sensor/CameraTime.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace dataprep {

namespace {

// Irregular steps of a time-mark file listed, at most.
constexpr int sListedSteps = 20;

QString millisecondsText(const std::optional<double>& valueSec)
{
    if (!valueSec || !std::isfinite(*valueSec))
        return QStringLiteral("-");
    return QString::number(*valueSec * 1000.0, 'f', 4) + QStringLiteral(" ms");
}

QString diagnosisText(const datamodel::TmFile::StepDiagnosis& diagnosis)
{
    if (diagnosis.isolatedMark)
        return QStringLiteral("one mark off");
    if (diagnosis.missingMarks > 0)
        return QStringLiteral("%1 marks missing").arg(diagnosis.missingMarks);
    if (diagnosis.missingMarks == 0)
        return QStringLiteral("CT off, GPS regular");
    return QStringLiteral("unexplained");
}

Fields markFields(const datamodel::TmFile::TmRecord& record)
{
    Fields fields;
    fields.add(QStringLiteral("gpsSec"), QStringLiteral("GPS time"), number(record.gpsTime), secondsText(record.gpsTime));
    fields.add(QStringLiteral("ctSec"), QStringLiteral("Camera time"), number(record.ctTime), secondsText(record.ctTime));
    return fields;
}

// Mean, smallest and largest step between consecutive values, and the
// steps that do not rise; null without two values.
void addSteps(Fields& fields, const std::vector<double>& values, Messages& messages, const std::string& subject,
              const datamodel::LineTimeCheck& check)
{
    std::optional<double> mean, smallest, largest;
    int notRising = 0;
    if (values.size() >= 2) {
        smallest = largest = values[1] - values[0];
        for (std::size_t i = 1; i < values.size(); ++i) {
            const double step = values[i] - values[i - 1];
            smallest = std::min(*smallest, step);
            largest = std::max(*largest, step);
            notRising += !(step > 0.0);
        }
        mean = (values.back() - values.front()) / double(values.size() - 1);
    }
    fields.add(QStringLiteral("meanStepSec"), QStringLiteral("Mean step"), number(mean), millisecondsText(mean));
    fields.add(QStringLiteral("smallestStepSec"), QStringLiteral("Smallest step"), number(smallest),
               millisecondsText(smallest));
    fields.add(QStringLiteral("largestStepSec"), QStringLiteral("Largest step"), number(largest),
               millisecondsText(largest));
    fields.add(QStringLiteral("stepsNotRising"), QStringLiteral("Steps not rising"), notRising);
    for (const std::string& finding : check.findings(values))
        addWarning(messages, subject, finding);
}

std::optional<double> front(const std::vector<double>& values)
{
    return values.empty() ? std::nullopt : std::optional<double>(values.front());
}

std::optional<double> back(const std::vector<double>& values)
{
    return values.empty() ? std::nullopt : std::optional<double>(values.back());
}

} // namespace

Inspection inspectTimeMarkFile(const QString& path)
{
    const std::string name = path.toStdString();
    datamodel::TmFile tm(name);
    const auto& records = tm.records();
    const double ctPeriodSec = tm.ctPeriod().value();
    const double gpsPeriodSec = tm.gpsPeriod().value();
    const bool regular = tm.analyzeAndFix();

    Inspection inspection{QStringLiteral("timeMarks"), QStringLiteral("time-mark file"), {}, {}};
    Fields& fields = inspection.fields;
    fields.add(QStringLiteral("file"), QStringLiteral("File"), path);
    fields.add(QStringLiteral("records"), QStringLiteral("Marks"), tm.numLoadedSets());
    fields.add(QStringLiteral("gpsRollover"), QStringLiteral("GPS week rollover"), tm.hasGpsRollover());
    fields.add(QStringLiteral("gpsPeriodSec"), QStringLiteral("GPS period"), number(gpsPeriodSec),
               secondsText(gpsPeriodSec));
    fields.add(QStringLiteral("ctPeriodSec"), QStringLiteral("Camera-time period"), number(ctPeriodSec),
               secondsText(ctPeriodSec));
    fields.add(QStringLiteral("first"), QStringLiteral("First mark"),
               records.empty() ? std::nullopt : std::optional<Fields>(markFields(records.front())));
    fields.add(QStringLiteral("last"), QStringLiteral("Last mark"),
               records.empty() ? std::nullopt : std::optional<Fields>(markFields(records.back())));
    fields.add(QStringLiteral("regular"), QStringLiteral("Regular"), regular);

    // Every step off its period by more than the regularity tolerance.
    std::vector<Fields> steps;
    int irregular = 0;
    std::size_t firstIrregular = 0;
    const double toleranceSec = datamodel::TmFile::sRegularityToleranceSec;
    for (std::size_t i = 1; i < records.size(); ++i) {
        const double ctStepSec = records[i].ctTime - records[i - 1].ctTime;
        const double gpsStepSec = records[i].gpsTime - records[i - 1].gpsTime;
        if (std::abs(ctStepSec - ctPeriodSec) <= toleranceSec && std::abs(gpsStepSec - gpsPeriodSec) <= toleranceSec)
            continue;
        if (irregular++ == 0)
            firstIrregular = i;
        if (irregular > sListedSteps)
            continue;
        Fields step;
        step.add(QStringLiteral("record"), QStringLiteral("Record"), qint64(i));
        step.add(QStringLiteral("gpsStepSec"), QStringLiteral("GPS step"), number(gpsStepSec), secondsText(gpsStepSec));
        step.add(QStringLiteral("ctStepSec"), QStringLiteral("Camera-time step"), number(ctStepSec),
                 secondsText(ctStepSec));
        step.add(QStringLiteral("diagnosis"), QStringLiteral("Diagnosis"), diagnosisText(tm.diagnoseStep(i)));
        steps.push_back(std::move(step));
    }
    fields.add(QStringLiteral("irregularSteps"), QStringLiteral("Irregular steps"), irregular);
    fields.add(QStringLiteral("firstIrregularSteps"), QStringLiteral("First irregular steps"), std::move(steps));
    try {
        tm.checkPlausible();
    } catch (const std::exception& e) {
        addError(inspection.messages, name, e.what());
    }
    if (irregular > 0)
        addWarning(inspection.messages, name,
                   std::to_string(irregular) + " steps between marks off the period by more than "
                       + QString::number(toleranceSec * 1000.0).toStdString() + " ms, the first at record "
                       + std::to_string(firstIrregular));
    return inspection;
}

Inspection inspectCtFile(const QString& path)
{
    const raster::CtFile ct(path.toStdString());
    Inspection inspection{QStringLiteral("ct"), QStringLiteral("CT file (camera time of every scan line)"), {}, {}};
    Fields& fields = inspection.fields;
    fields.add(QStringLiteral("file"), QStringLiteral("File"), path);
    fields.add(QStringLiteral("lines"), QStringLiteral("Scan lines"), qint64(ct.size()));
    fields.add(QStringLiteral("firstCtSec"), QStringLiteral("First camera time"), number(front(ct.values())),
               secondsText(front(ct.values())));
    fields.add(QStringLiteral("lastCtSec"), QStringLiteral("Last camera time"), number(back(ct.values())),
               secondsText(back(ct.values())));
    addSteps(fields, ct.values(), inspection.messages, ct.name(),
             datamodel::LineTimeCheck("camera time", 0.0, std::numeric_limits<double>::infinity()));
    return inspection;
}

Inspection inspectCtgFile(const QString& path)
{
    const sensor::CameraTime ctg(path.toStdString());
    std::vector<double> values;
    values.reserve(ctg.values().size());
    for (const auto& time : ctg.values())
        values.push_back(time.value());
    Inspection inspection{QStringLiteral("ctg"), QStringLiteral("CTG file (GPS time of every scan line)"), {}, {}};
    Fields& fields = inspection.fields;
    fields.add(QStringLiteral("file"), QStringLiteral("File"), path);
    fields.add(QStringLiteral("lines"), QStringLiteral("Scan lines"), qint64(values.size()));
    fields.add(QStringLiteral("gpsStartSec"), QStringLiteral("GPS start"), number(front(values)),
               secondsText(front(values)));
    fields.add(QStringLiteral("gpsEndSec"), QStringLiteral("GPS end"), number(back(values)), secondsText(back(values)));
    addSteps(fields, values, inspection.messages, path.toStdString(),
             datamodel::LineTimeCheck("GPS time", 0.0, 2.0 * datamodel::TmFile::sWeekSec));
    fields.add(QStringLiteral("nonUniformCt"), QStringLiteral("Non-uniform line period"),
               values.empty() ? QJsonValue() : QJsonValue(ctg.isNonUniformCT()));
    std::vector<Fields> stretches;
    if (!values.empty()) {
        for (const auto& [start, entry] : ctg.getInternalCtglRepresentation()) {
            Fields stretch;
            stretch.add(QStringLiteral("firstLine"), QStringLiteral("First line"), qint64(entry.firstLine));
            stretch.add(QStringLiteral("lines"), QStringLiteral("Lines"), qint64(entry.lines));
            stretch.add(QStringLiteral("gpsStartSec"), QStringLiteral("GPS start"), number(start.value()),
                        secondsText(start.value()));
            stretch.add(QStringLiteral("linePeriodSec"), QStringLiteral("Line period"), number(entry.cycleTime.value()),
                        millisecondsText(entry.cycleTime.value()));
            stretches.push_back(std::move(stretch));
        }
    }
    fields.add(QStringLiteral("stretches"), QStringLiteral("Stretches of steady line period"), std::move(stretches));
    return inspection;
}

} // namespace dataprep
