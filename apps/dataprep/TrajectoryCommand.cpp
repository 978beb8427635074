#include "TrajectoryCommand.h"

#include "Output.h"
#include "TrajectoryFields.h"
#include "TrajectoryFile.h"

#include <platform/util/ErrorText.h>

#include <QFileInfo>

#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace dataprep {

namespace {

const QString sAtOption = QStringLiteral("at");

} // namespace

QString TrajectoryCommand::synopsis() const
{
    return QStringLiteral("<file> --at <gps-seconds>... [--json]");
}

QString TrajectoryCommand::description() const
{
    return QStringLiteral(
        "Opens a SOL or SBET trajectory file (an SBET with its smrmsg accuracy file)\n"
        "and prints the record at each GPS time (seconds of the week), interpolated\n"
        "between the records around it. Across a GPS week rollover, times below the\n"
        "file's start belong to the following week. The file is opened as SOL and\n"
        "then as SBET, whatever its name; when both fail, both reasons are given.\n"
        "\n"
        "Times follow --at (\"--at 5 6.5\") or repeat it (\"--at 5 --at 6.5\"). Text\n"
        "shows angles in degrees; JSON gives them in radians and the standard\n"
        "deviations by name (northM, eastM, downM, rollRad, pitchRad, headingRad).\n"
        "\n"
        "Exit code 1 when a time lies outside the trajectory (the other times are\n"
        "still printed) or the file is not a trajectory.");
}

std::vector<Argument> TrajectoryCommand::arguments() const
{
    return {{QStringLiteral("file"), QStringLiteral("The SOL or SBET trajectory file.")},
            {QStringLiteral("gps-seconds"), QStringLiteral("Further GPS times after the first --at."), false, true}};
}

QList<QCommandLineOption> TrajectoryCommand::options() const
{
    return {QCommandLineOption(sAtOption, QStringLiteral("A GPS time, seconds of the week (repeatable)."),
                               QStringLiteral("gps-seconds"))};
}

int TrajectoryCommand::run(const Invocation& invocation)
{
    const QString path = invocation.arguments.first();
    const QStringList timeTexts = invocation.parser.values(sAtOption) + invocation.arguments.mid(1);
    if (!invocation.parser.isSet(sAtOption))
        throw UsageError{"no GPS time given (--at)"};
    std::vector<double> times;
    for (const QString& timeText : timeTexts) {
        bool ok = false;
        const double timeSec = timeText.toDouble(&ok);
        if (!ok || !std::isfinite(timeSec))
            throw UsageError{"not a GPS time: " + timeText.toStdString()};
        times.push_back(timeSec);
    }
    if (!QFileInfo::exists(path))
        throw std::runtime_error("File not found: " + path.toStdString());

    const TrajectoryFile file = TrajectoryFile::open(path);
    datamodel::PosFile& reader = file.reader();
    Messages messages;
    std::vector<Fields> samples;
    for (double timeSec : times) {
        datamodel::ImuRecord record;
        try {
            reader.getRecord(datamodel::seconds(timeSec), record);
            samples.push_back(trajectoryRecordFields(record, true, reader.hasStdDevs()));
            samples.back().add(QStringLiteral("error"), QJsonValue());
        } catch (const std::exception& e) {
            record.time = timeSec;
            Fields failed = trajectoryRecordFields(record, false, false);
            failed.add(QStringLiteral("error"), QStringLiteral("Error"), QString::fromStdString(util::fullMessage(e)));
            samples.push_back(std::move(failed));
            addError(messages, "GPS time " + QString::number(timeSec, 'f', 4).toStdString() + " s", util::fullMessage(e));
        }
    }

    Fields report;
    report.add(QStringLiteral("trajectory"), QStringLiteral("Trajectory"), trajectoryFileFields(path, file));
    report.add(QStringLiteral("samples"), QStringLiteral("Records at the times asked for"), std::move(samples));
    if (invocation.json) {
        printJson(name(), path, report, messages);
    } else {
        report.print(stdout);
        printMessages(messages);
    }
    return hasErrors(messages) ? 1 : 0;
}

} // namespace dataprep
