#include "TrajectoryCommand.h"

#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/trajectory/SbetFile.h>
#include <datamodel/trajectory/SolFile.h>

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace dataprep {

namespace {

enum class TrajectoryKind { Sbet, Accuracy, Sol };

QString degrees(double valueRad, int decimals)
{
    return QString::number(valueRad * 180.0 / std::numbers::pi, 'f', decimals) + QStringLiteral(" deg");
}

QString gpsSeconds(double valueSec)
{
    return QString::number(valueSec, 'f', 4) + QStringLiteral(" s");
}

QJsonValue number(double value)
{
    // JSON has no not-a-number; such values are written as null.
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue();
}

/// A record as the library hands it out: angles in radians in JSON, in
/// degrees on the terminal. The standard deviations are north, east and
/// down (m), then roll, pitch and heading (rad).
Fields recordFields(const datamodel::ImuRecord& record, bool positions, bool stdDevs)
{
    Fields fields;
    fields.add(QStringLiteral("time"), number(record.time), gpsSeconds(record.time));
    if (positions) {
        fields.add(QStringLiteral("latitude"), number(record.latitude), degrees(record.latitude, 9));
        fields.add(QStringLiteral("longitude"), number(record.longitude), degrees(record.longitude, 9));
        fields.add(QStringLiteral("height"), number(record.height), QString::number(record.height, 'f', 3) + QStringLiteral(" m"));
        fields.add(QStringLiteral("roll"), number(record.roll), degrees(record.roll, 6));
        fields.add(QStringLiteral("pitch"), number(record.pitch), degrees(record.pitch, 6));
        fields.add(QStringLiteral("heading"), number(record.heading), degrees(record.heading, 6));
    }
    if (stdDevs) {
        const auto& sd = record.stdDev();
        QJsonArray json;
        for (float value : sd)
            json.append(number(double(value)));
        const QString text = QStringLiteral("N %1 m, E %2 m, D %3 m, roll %4, pitch %5, heading %6")
                                 .arg(double(sd[0]), 0, 'f', 4)
                                 .arg(double(sd[1]), 0, 'f', 4)
                                 .arg(double(sd[2]), 0, 'f', 4)
                                 .arg(degrees(double(sd[3]), 5), degrees(double(sd[4]), 5), degrees(double(sd[5]), 5));
        fields.add(QStringLiteral("stdDev"), json, text);
    }
    return fields;
}

TrajectoryKind kindOf(const QString& path)
{
    const QFileInfo file(path);
    const QString name = file.fileName().toLower();
    if (name.contains(QLatin1String("smrmsg")))
        return TrajectoryKind::Accuracy;
    if (file.suffix().toLower() == QLatin1String("sol"))
        return TrajectoryKind::Sol;
    return TrajectoryKind::Sbet;
}

} // namespace

bool isTrajectoryFile(const QString& path)
{
    const QFileInfo file(path);
    const QString name = file.fileName().toLower();
    const QString suffix = file.suffix().toLower();
    return suffix == QLatin1String("sbet") || suffix == QLatin1String("sol") || name.contains(QLatin1String("smrmsg"))
        || (suffix == QLatin1String("out") && name.contains(QLatin1String("sbet")));
}

Fields inspectTrajectoryFile(const QString& path)
{
    const std::string fileName = path.toStdString();
    const TrajectoryKind kind = kindOf(path);
    std::unique_ptr<datamodel::PosFile> reader;
    QJsonValue accuracyFile;
    const char* kindText = "";
    switch (kind) {
    case TrajectoryKind::Sbet: {
        auto sbet = std::make_unique<datamodel::SbetFile>(fileName);
        if (const auto* accuracy = sbet->accuracyFile())
            accuracyFile = QString::fromStdString(accuracy->fileName());
        reader = std::move(sbet);
        kindText = "SBET trajectory";
        break;
    }
    case TrajectoryKind::Accuracy:
        reader = std::make_unique<datamodel::SbetFile::SmrmsFile>(fileName);
        kindText = "smrmsg accuracy";
        break;
    case TrajectoryKind::Sol:
        reader = std::make_unique<datamodel::SolFile>(fileName);
        kindText = "SOL trajectory";
        break;
    }

    const double intervalSec = reader->frequency();
    const qint64 sizeBytes = QFileInfo(path).size();
    Fields fields;
    fields.add(QStringLiteral("file"), path);
    fields.add(QStringLiteral("kind"), kindText);
    fields.add(QStringLiteral("recordBytes"), reader->recordBytes());
    fields.add(QStringLiteral("records"), reader->numSets());
    fields.add(QStringLiteral("trailingBytes"), qint64(sizeBytes % reader->recordBytes()));
    fields.add(QStringLiteral("startTime"), reader->startTime().value(), gpsSeconds(reader->startTime().value()));
    fields.add(QStringLiteral("endTime"), number(reader->endTime().value()), gpsSeconds(reader->endTime().value()));
    fields.add(QStringLiteral("rollover"), reader->hasGpsRollover());
    fields.add(QStringLiteral("ordered"), reader->isOrdered());
    fields.add(QStringLiteral("indexEntries"), qint64(reader->indexEntries()));
    fields.add(QStringLiteral("frequency"), number(intervalSec),
               std::isfinite(intervalSec)
                   ? QString::number(intervalSec, 'g', 9) + QStringLiteral(" s (")
                         + QString::number(1.0 / intervalSec, 'f', 3) + QStringLiteral(" Hz)")
                   : QStringLiteral("-"));
    fields.add(QStringLiteral("hasStdDevs"), reader->hasStdDevs());
    if (kind == TrajectoryKind::Sbet)
        fields.add(QStringLiteral("accuracyFile"), accuracyFile);

    const bool positions = kind != TrajectoryKind::Accuracy;
    datamodel::ImuRecord record;
    reader->getRecord(0, record);
    fields.add(QStringLiteral("firstRecord"), recordFields(record, positions, reader->hasStdDevs()));
    reader->getRecord(reader->numSets() - 1, record);
    fields.add(QStringLiteral("lastRecord"), recordFields(record, positions, reader->hasStdDevs()));
    return fields;
}

const char* TrajectoryCommand::usage() const
{
    return "Usage: dataprep trajectory <file> --at <gps-seconds>... [--json]\n"
           "\n"
           "Opens a SOL or SBET trajectory file (an SBET with its smrmsg accuracy file)\n"
           "and prints the record at each GPS time (seconds of the week), interpolated\n"
           "between the records around it. Across a GPS week rollover, times below the\n"
           "file's start belong to the following week.\n"
           "\n"
           "Options:\n"
           "  --at T...   one or more GPS times; the option may be repeated\n"
           "  --json      print JSON: angles in radians, standard deviations as\n"
           "              [north, east, down (m), roll, pitch, heading (rad)]\n"
           "\n"
           "Exit code 1 when a time lies outside the trajectory (the other times are\n"
           "still printed).\n";
}

int TrajectoryCommand::run(const QStringList& arguments)
{
    bool json = false;
    bool readingTimes = false;
    QString path;
    std::vector<double> times;
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--json")) {
            json = true;
            readingTimes = false;
        } else if (argument == QLatin1String("--at")) {
            readingTimes = true;
        } else if (readingTimes) {
            bool ok = false;
            const double time = argument.toDouble(&ok);
            if (!ok || !std::isfinite(time))
                throw UsageError{"not a GPS time: " + argument.toStdString()};
            times.push_back(time);
        } else if (argument.startsWith(QLatin1String("--"))) {
            throw UsageError{"unknown option " + argument.toStdString()};
        } else if (path.isEmpty()) {
            path = argument;
        } else {
            throw UsageError{"more than one file given"};
        }
    }
    if (path.isEmpty())
        throw UsageError{"no file given"};
    if (times.empty())
        throw UsageError{"no GPS time given (--at)"};
    if (!QFileInfo::exists(path))
        throw std::runtime_error("File not found: " + path.toStdString());

    const datamodel::ImuTrajectory trajectory(path.toStdString());
    const bool stdDevs = trajectory.hasStdDevs();
    bool allFound = true;
    std::vector<Fields> records;
    for (double time : times) {
        datamodel::ImuRecord record;
        try {
            trajectory.getPosRecord(datamodel::seconds(time), record);
            records.push_back(recordFields(record, true, stdDevs));
        } catch (const std::exception& e) {
            allFound = false;
            Fields failed;
            failed.add(QStringLiteral("time"), time, gpsSeconds(time));
            failed.add(QStringLiteral("error"), e.what());
            records.push_back(std::move(failed));
        }
    }

    Fields fields;
    fields.add(QStringLiteral("file"), path);
    fields.add(QStringLiteral("format"), dynamic_cast<const datamodel::SolFile*>(trajectory.reader()) ? "SOL" : "SBET");
    fields.add(QStringLiteral("records"), trajectory.numSets());
    fields.add(QStringLiteral("hasStdDevs"), stdDevs);
    fields.add(QStringLiteral("rollover"), trajectory.hasGpsRollover());
    fields.add(QStringLiteral("at"), std::move(records));
    if (json)
        std::printf("%s", QJsonDocument(fields.toJson()).toJson(QJsonDocument::Indented).constData());
    else
        fields.print();
    return allFound ? 0 : 1;
}

} // namespace dataprep
