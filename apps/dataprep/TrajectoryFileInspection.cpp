#include "TrajectoryFileInspection.h"

#include "TrajectoryFields.h"
#include "TrajectoryFile.h"

#include <datamodel/trajectory/SbetFile.h>

#include <QFileInfo>

namespace dataprep {

Inspection inspectTrajectoryFile(const QString& path, FileKind::Kind named)
{
    const TrajectoryFile file = named == FileKind::Smrmsg ? TrajectoryFile::openAccuracy(path) : TrajectoryFile::open(path);
    datamodel::PosFile& reader = file.reader();
    const std::string subject = path.toStdString();
    const bool positions = file.format() != TrajectoryFile::Format::Smrmsg;
    const qint64 trailingBytes = QFileInfo(path).size() % reader.recordBytes();

    Inspection inspection{QStringLiteral("trajectory"), QString(), trajectoryFileFields(path, file), {}};
    switch (file.format()) {
    case TrajectoryFile::Format::Sol:
        inspection.title = QStringLiteral("SOL trajectory");
        break;
    case TrajectoryFile::Format::Sbet:
        inspection.title = QStringLiteral("SBET trajectory");
        break;
    case TrajectoryFile::Format::Smrmsg:
        inspection.title = QStringLiteral("smrmsg accuracy file");
        break;
    }
    Fields& fields = inspection.fields;
    fields.add(QStringLiteral("recordBytes"), QStringLiteral("Record size"), reader.recordBytes(),
               QStringLiteral("%1 bytes").arg(reader.recordBytes()));
    fields.add(QStringLiteral("trailingBytes"), QStringLiteral("Bytes after the last record"), trailingBytes);
    fields.add(QStringLiteral("ordered"), QStringLiteral("Records in time order"), reader.isOrdered());
    fields.add(QStringLiteral("indexEntries"), QStringLiteral("Time index entries"), qint64(reader.indexEntries()));
    QJsonValue accuracyFile;
    if (const auto* sbet = dynamic_cast<const datamodel::SbetFile*>(&reader); sbet && sbet->accuracyFile())
        accuracyFile = QString::fromStdString(sbet->accuracyFile()->fileName());
    fields.add(QStringLiteral("accuracyFile"), QStringLiteral("Accuracy file"), accuracyFile);

    datamodel::ImuRecord record;
    reader.getRecord(0, record);
    fields.add(QStringLiteral("firstRecord"), QStringLiteral("First record"),
               trajectoryRecordFields(record, positions, reader.hasStdDevs()));
    reader.getRecord(reader.numSets() - 1, record);
    fields.add(QStringLiteral("lastRecord"), QStringLiteral("Last record"),
               trajectoryRecordFields(record, positions, reader.hasStdDevs()));

    if (named == FileKind::Sbet && file.format() == TrajectoryFile::Format::Sol)
        addWarning(inspection.messages, subject, "named like an SBET file, but its records are SOL records");
    if (file.format() == TrajectoryFile::Format::Sbet && accuracyFile.isNull())
        addWarning(inspection.messages, subject,
                   "no accuracy file " + datamodel::SbetFile::accuracyFileName(subject)
                       + ": the records carry no standard deviations");
    if (trailingBytes > 0)
        addWarning(inspection.messages, subject,
                   "the file ends in a partial record of " + std::to_string(trailingBytes) + " bytes");
    if (!reader.isOrdered())
        addWarning(inspection.messages, subject, "the record times do not increase throughout the file");
    return inspection;
}

} // namespace dataprep
