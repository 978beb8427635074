#include "ScanLineDataInspection.h"

#include <datamodel/timing/ScanLineData.h>

#include <QFileInfo>

#include <iterator>

namespace dataprep {

namespace {

// Bytes of one record of the file: first line and value.
constexpr qint64 sRecordBytes = 8;

} // namespace

Inspection inspectScanLineDataFile(const QString& path, bool integrationTimes)
{
    // Integration times are stored in microseconds and held in seconds; TDI
    // files hold stage counts.
    const datamodel::ScanLineData data = datamodel::ScanLineData::read(path.toStdString(), integrationTimes ? 1e-6 : 1.0);
    const QString unit = integrationTimes ? QStringLiteral("Sec") : QStringLiteral("Stages");
    auto shown = [&](float value) {
        return integrationTimes ? QString::number(double(value) * 1000.0, 'f', 3) + QStringLiteral(" ms")
                                : QString::number(double(value), 'g', 6);
    };

    Inspection inspection{integrationTimes ? QStringLiteral("integrationTime") : QStringLiteral("tdi"),
                          integrationTimes ? QStringLiteral("integration-time file") : QStringLiteral("TDI file"),
                          {},
                          {}};
    Fields& fields = inspection.fields;
    const bool empty = data.empty();
    fields.add(QStringLiteral("file"), QStringLiteral("File"), path);
    fields.add(QStringLiteral("records"), QStringLiteral("Records"), QFileInfo(path).size() / sRecordBytes);
    fields.add(QStringLiteral("firstLine"), QStringLiteral("First line"),
               empty ? QJsonValue() : QJsonValue(qint64(data.values().begin()->first)));
    fields.add(QStringLiteral("lastLine"), QStringLiteral("Last line"),
               empty ? QJsonValue() : QJsonValue(qint64(std::prev(data.values().end())->first)));
    auto add = [&](const char* key, const char* label, float v) {
        fields.add(QLatin1String(key) + unit, QLatin1String(label), empty ? QJsonValue() : QJsonValue(double(v)),
                   empty ? QStringLiteral("-") : shown(v));
    };
    add("min", "Smallest", empty ? 0.0f : data.minValue());
    add("max", "Largest", empty ? 0.0f : data.maxValue());
    add("nominal", "Nominal", empty ? 0.0f : data.nominalValue());

    // Runs as the file holds them: first line, last line and value.
    std::vector<Fields> runs;
    for (auto it = data.values().begin(); it != data.values().end();) {
        auto last = it;
        auto next = std::next(it);
        if (next != data.values().end() && next->second == it->second) {
            last = next;
            ++next;
        }
        Fields run;
        run.add(QStringLiteral("firstLine"), QStringLiteral("First line"), qint64(it->first));
        run.add(QStringLiteral("lastLine"), QStringLiteral("Last line"), qint64(last->first));
        run.add(integrationTimes ? QStringLiteral("valueSec") : QStringLiteral("valueStages"), QStringLiteral("Value"),
                double(it->second), shown(it->second));
        runs.push_back(std::move(run));
        it = next;
    }
    fields.add(QStringLiteral("runs"), QStringLiteral("Runs"), std::move(runs));
    const std::string problem = data.implausibility(integrationTimes ? datamodel::ScanLineData::Quantity::IntegrationTime
                                                                     : datamodel::ScanLineData::Quantity::TdiStages);
    if (!problem.empty())
        addWarning(inspection.messages, path.toStdString(), problem);
    return inspection;
}

} // namespace dataprep
