#include "CtgCommand.h"

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TmFile.h>

#include <platform/raster/CtFile.h>
#include <platform/sensor/CameraTime.h>
#include <platform/util/TerminalProgress.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <map>
#include <stdexcept>
#include <vector>

namespace dataprep {

namespace {

// Irregular steps of a time-mark file listed by `inspect`, at most.
constexpr int sListedSteps = 20;

QJsonValue number(double value)
{
    // JSON has no not-a-number; such values are written as null.
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue();
}

QString secondsText(double valueSec)
{
    return QString::number(valueSec, 'f', 6) + QStringLiteral(" s");
}

QString millisecondsText(double valueSec)
{
    return QString::number(valueSec * 1000.0, 'f', 4) + QStringLiteral(" ms");
}

Fields timed(const QString& gpsName, double gpsSec, const QString& ctName, double ctSec)
{
    Fields fields;
    fields.add(gpsName, number(gpsSec), secondsText(gpsSec));
    fields.add(ctName, number(ctSec), secondsText(ctSec));
    return fields;
}

// The error text with the reasons nested inside it.
std::string explain(const std::exception& error)
{
    std::string text = error.what();
    try {
        std::rethrow_if_nested(error);
    } catch (const std::exception& inner) {
        text += " (" + explain(inner) + ")";
    } catch (...) {
    }
    return text;
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

Fields inspectTimeMarks(const QString& path)
{
    datamodel::TmFile tm(path.toStdString());
    const auto& records = tm.records();
    const double ctPeriod = tm.ctPeriod().value();
    const double gpsPeriod = tm.gpsPeriod().value();
    Fields fields;
    fields.add(QStringLiteral("file"), path);
    fields.add(QStringLiteral("kind"), "time marks (GPS time, camera time)");
    fields.add(QStringLiteral("records"), tm.numLoadedSets());
    fields.add(QStringLiteral("gpsPeriod"), number(gpsPeriod), secondsText(gpsPeriod));
    fields.add(QStringLiteral("ctPeriod"), number(ctPeriod), secondsText(ctPeriod));
    fields.add(QStringLiteral("first"), timed(QStringLiteral("gpsTime"), records.front().gpsTime,
                                             QStringLiteral("ctTime"), records.front().ctTime));
    fields.add(QStringLiteral("last"), timed(QStringLiteral("gpsTime"), records.back().gpsTime,
                                            QStringLiteral("ctTime"), records.back().ctTime));
    fields.add(QStringLiteral("gpsRollover"), tm.hasGpsRollover());
    fields.add(QStringLiteral("regular"), tm.analyzeAndFix());

    // Every step off its period by more than the regularity tolerance.
    std::vector<Fields> steps;
    int irregular = 0;
    const double tolerance = datamodel::TmFile::sRegularityToleranceSec;
    for (std::size_t i = 1; i < records.size(); ++i) {
        const double ctStep = records[i].ctTime - records[i - 1].ctTime;
        const double gpsStep = records[i].gpsTime - records[i - 1].gpsTime;
        if (std::abs(ctStep - ctPeriod) <= tolerance && std::abs(gpsStep - gpsPeriod) <= tolerance)
            continue;
        if (++irregular > sListedSteps)
            continue;
        Fields step;
        step.add(QStringLiteral("record"), qint64(i));
        step.add(QStringLiteral("ctStep"), number(ctStep), secondsText(ctStep));
        step.add(QStringLiteral("gpsStep"), number(gpsStep), secondsText(gpsStep));
        step.add(QStringLiteral("diagnosis"), diagnosisText(tm.diagnoseStep(i)));
        steps.push_back(std::move(step));
    }
    fields.add(QStringLiteral("irregularSteps"), irregular);
    fields.add(QStringLiteral("firstIrregularSteps"), std::move(steps));
    return fields;
}

Fields stepFields(Fields fields, const std::vector<double>& values)
{
    if (values.size() < 2)
        return fields;
    double smallest = values[1] - values[0];
    double largest = smallest;
    int notRising = 0;
    for (std::size_t i = 1; i < values.size(); ++i) {
        const double step = values[i] - values[i - 1];
        smallest = std::min(smallest, step);
        largest = std::max(largest, step);
        notRising += !(step > 0.0);
    }
    const double mean = (values.back() - values.front()) / double(values.size() - 1);
    fields.add(QStringLiteral("meanStep"), number(mean), millisecondsText(mean));
    fields.add(QStringLiteral("smallestStep"), number(smallest), millisecondsText(smallest));
    fields.add(QStringLiteral("largestStep"), number(largest), millisecondsText(largest));
    fields.add(QStringLiteral("stepsNotRising"), notRising);
    return fields;
}

Fields inspectCt(const QString& path)
{
    const raster::CtFile ct(path.toStdString());
    Fields fields;
    fields.add(QStringLiteral("file"), path);
    fields.add(QStringLiteral("kind"), "camera time per scan line (CT)");
    fields.add(QStringLiteral("lines"), qint64(ct.size()));
    if (ct.size() > 0) {
        fields.add(QStringLiteral("firstCt"), number(ct.values().front()), secondsText(ct.values().front()));
        fields.add(QStringLiteral("lastCt"), number(ct.values().back()), secondsText(ct.values().back()));
    }
    return stepFields(std::move(fields), ct.values());
}

Fields inspectCtg(const QString& path)
{
    const sensor::CameraTime ctg(path.toStdString());
    std::vector<double> values;
    for (const auto& time : ctg.values())
        values.push_back(time.value());
    Fields fields;
    fields.add(QStringLiteral("file"), path);
    fields.add(QStringLiteral("kind"), "GPS time per scan line (CTG)");
    fields.add(QStringLiteral("lines"), qint64(values.size()));
    if (values.empty())
        return fields;
    fields.add(QStringLiteral("firstGpsTime"), number(values.front()), secondsText(values.front()));
    fields.add(QStringLiteral("lastGpsTime"), number(values.back()), secondsText(values.back()));
    fields = stepFields(std::move(fields), values);
    fields.add(QStringLiteral("nonUniformCT"), ctg.isNonUniformCT());
    std::vector<Fields> stretches;
    for (const auto& [start, entry] : ctg.getInternalCtglRepresentation()) {
        Fields stretch;
        stretch.add(QStringLiteral("firstLine"), qint64(entry.firstLine));
        stretch.add(QStringLiteral("lines"), qint64(entry.lines));
        stretch.add(QStringLiteral("gpsTime"), number(start.value()), secondsText(start.value()));
        stretch.add(QStringLiteral("cycleTime"), number(entry.cycleTime.value()), millisecondsText(entry.cycleTime.value()));
        stretches.push_back(std::move(stretch));
    }
    fields.add(QStringLiteral("stretches"), std::move(stretches));
    return fields;
}

// One band's outcome.
struct BandReport {
    std::string take;
    std::string band;
    std::string ctg;
    std::size_t lines = 0;
    enum Status { Written, Present, Failed } status = Failed;
    std::string error;
};

const char* statusText(BandReport::Status status)
{
    switch (status) {
    case BandReport::Written:
        return "written";
    case BandReport::Present:
        return "present";
    default:
        return "failed";
    }
}

} // namespace

bool isTimingFile(const QString& path)
{
    const QFileInfo file(path);
    const QString suffix = file.suffix().toLower();
    return suffix == QLatin1String("ct") || suffix == QLatin1String("ctg") || suffix == QLatin1String("tm")
        || (suffix == QLatin1String("dat") && file.fileName().startsWith(QLatin1String("tm"), Qt::CaseInsensitive));
}

Fields inspectTimingFile(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("ct"))
        return inspectCt(path);
    if (suffix == QLatin1String("ctg"))
        return inspectCtg(path);
    return inspectTimeMarks(path);
}

const char* CtgCommand::usage() const
{
    return "Usage: dataprep ctg <session-dir> [--take NAME]... [--json]\n"
           "\n"
           "Writes the CTG file (raw/<band>.ctg: the GPS time of every scan line) of\n"
           "every band of the session that has none. Each band's camera times\n"
           "(raw/<band>.ct) are converted to GPS time through the session's time-mark\n"
           "file (gps-imu/<id>/extract/tm*.dat). CTG files that exist are left as they\n"
           "are; a file is written whole or not at all. The takes are the band .info\n"
           "files of raw/, grouped by strip name.\n"
           "\n"
           "Options:\n"
           "  --take NAME   only the bands of this take (repeatable)\n"
           "  --json        print the report as JSON\n"
           "\n"
           "Exit code 1 when a band's CTG file could not be written.\n";
}

int CtgCommand::run(const QStringList& arguments)
{
    QString directory;
    QStringList onlyTakes;
    bool json = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (argument == QLatin1String("--json")) {
            json = true;
        } else if (argument == QLatin1String("--take")) {
            if (i + 1 >= arguments.size())
                throw UsageError{"--take needs a take name"};
            onlyTakes << arguments[++i];
        } else if (argument.startsWith(QLatin1String("--"))) {
            throw UsageError{"unknown option " + argument.toStdString()};
        } else if (directory.isEmpty()) {
            directory = argument;
        } else {
            throw UsageError{"more than one directory given"};
        }
    }
    if (directory.isEmpty())
        throw UsageError{"no session directory given"};

    datamodel::RecordingSession session(directory.toStdString());
    const datamodel::TmFile& marks = session.tmFile();

    // The session's takes (from its strip files, flight data or band info files).
    std::vector<std::string> problems;
    std::vector<datamodel::Take*> takes;
    std::size_t bandCount = 0;
    for (datamodel::Take* take : session.takes()) {
        if (!onlyTakes.isEmpty() && !onlyTakes.contains(QString::fromStdString(take->name())))
            continue;
        takes.push_back(take);
        bandCount += take->imagesL0().size();
    }
    for (const QString& wanted : onlyTakes)
        if (std::none_of(takes.begin(), takes.end(), [&](const datamodel::Take* t) { return t->name() == wanted.toStdString(); }))
            throw std::runtime_error("No take " + wanted.toStdString() + " in " + session.directory());

    std::vector<BandReport> reports;
    {
        util::TerminalProgress progress;
        util::ProgressTask task(&progress, "Writing CTG files", 0, static_cast<long long>(bandCount));
        for (datamodel::Take* take : takes) {
            for (datamodel::L0Image* image : take->imagesL0()) {
                BandReport report;
                report.take = take->name();
                report.band = image->bandName();
                report.ctg = image->ctgFilename();
                datamodel::CameraTime& times = image->cameraTime();
                try {
                    if (times.ctgFileCreated()) {
                        report.status = BandReport::Present;
                    } else {
                        times.createFromCtTmFiles();
                        report.lines = times.size();
                        report.status = BandReport::Written;
                    }
                } catch (const std::exception& e) {
                    report.error = explain(e);
                }
                image->uncache(); // one band's times in memory at a time
                reports.push_back(std::move(report));
                task.report(static_cast<long long>(reports.size()));
            }
        }
    }

    int written = 0;
    int present = 0;
    int failed = 0;
    for (const BandReport& report : reports) {
        written += report.status == BandReport::Written;
        present += report.status == BandReport::Present;
        failed += report.status == BandReport::Failed;
    }
    if (json) {
        QJsonArray bands;
        for (const BandReport& report : reports) {
            QJsonObject band{{QStringLiteral("take"), QString::fromStdString(report.take)},
                             {QStringLiteral("band"), QString::fromStdString(report.band)},
                             {QStringLiteral("ctg"), QString::fromStdString(report.ctg)},
                             {QStringLiteral("status"), QString::fromLatin1(statusText(report.status))}};
            if (report.status == BandReport::Written)
                band.insert(QStringLiteral("lines"), qint64(report.lines));
            if (!report.error.empty())
                band.insert(QStringLiteral("error"), QString::fromStdString(report.error));
            bands.append(band);
        }
        QJsonArray errors;
        for (const std::string& problem : problems)
            errors.append(QString::fromStdString(problem));
        const QJsonObject root{{QStringLiteral("session"), QString::fromStdString(session.directory())},
                               {QStringLiteral("timeMarks"), QString::fromStdString(marks.name())},
                               {QStringLiteral("bands"), bands},
                               {QStringLiteral("written"), written},
                               {QStringLiteral("present"), present},
                               {QStringLiteral("failed"), failed},
                               {QStringLiteral("errors"), errors}};
        std::printf("%s", QJsonDocument(root).toJson(QJsonDocument::Indented).constData());
    } else {
        std::printf("Session     %s\n", session.directory().c_str());
        std::printf("Time marks  %s (%d marks)\n\n", marks.name().c_str(), marks.numLoadedSets());
        std::printf("%-8s %-8s %8s  %-8s %s\n", "Take", "Band", "Lines", "CTG", "File");
        for (const BandReport& report : reports) {
            const std::string lines = report.status == BandReport::Written ? std::to_string(report.lines) : "";
            std::printf("%-8s %-8s %8s  %-8s %s\n", report.take.c_str(), report.band.c_str(), lines.c_str(),
                        statusText(report.status), report.ctg.c_str());
        }
        std::printf("\nWrote %d CTG file%s; %d already present; %d failed.\n", written, written == 1 ? "" : "s",
                    present, failed);
    }
    for (const std::string& problem : problems)
        std::fprintf(stderr, "error: %s\n", problem.c_str());
    for (const BandReport& report : reports)
        if (report.status == BandReport::Failed)
            std::fprintf(stderr, "error: %s %s: %s\n", report.take.c_str(), report.band.c_str(), report.error.c_str());
    return failed == 0 && problems.empty() ? 0 : 1;
}

} // namespace dataprep
