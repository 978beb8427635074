#include "InspectCommand.h"

#include "EopFileInspection.h"
#include "EoqFileInspection.h"
#include "FileKind.h"
#include "InfoFileInspection.h"
#include "ScanLineDataInspection.h"
#include "StripFileInspection.h"
#include "TimingFileInspection.h"
#include "TrajectoryFileInspection.h"

#include <QFileInfo>

#include <cstdio>
#include <stdexcept>

namespace dataprep {

namespace {

// The kind a file is inspected as: the one its name says, unless its
// content proves otherwise; the content alone when the name says nothing.
FileKind::Kind kindToInspect(const QString& path, Messages& messages)
{
    const std::string name = path.toStdString();
    const FileKind::Kind named = FileKind::fromName(path);
    const FileKind::Kind content = FileKind::fromContent(path);
    if (named == FileKind::Unknown) {
        if (content == FileKind::Unknown || content == FileKind::Xml)
            throw std::runtime_error("Cannot tell what kind of file " + name
                                     + " is: neither its name nor its content is one of a band info, strip, "
                                       "integration-time, TDI, time-mark, CT, CTG, SBET, smrmsg, SOL, EOP or EOQ "
                                       "file");
        addInformation(messages, name, std::string("recognised by its content as ") + FileKind::description(content));
        return content;
    }
    // A SOL file named like an SBET file is read as the library reads it:
    // by its content (the trajectory inspection warns about the name).
    const bool compatible = content == FileKind::Unknown || content == named
        || (named == FileKind::BandInfo && content == FileKind::Xml) || (named == FileKind::Sbet && content == FileKind::Sol);
    if (!compatible)
        throw std::runtime_error(name + " is " + FileKind::description(content) + ", not "
                                 + FileKind::description(named));
    if (const std::string reason = FileKind::implausibility(path, named); !reason.empty())
        throw std::runtime_error(reason);
    return named;
}

Inspection inspect(const QString& path, FileKind::Kind kind)
{
    switch (kind) {
    case FileKind::BandInfo:
        return inspectInfoFile(path);
    case FileKind::Strip:
        return inspectStripFile(path);
    case FileKind::IntegrationTime:
        return inspectScanLineDataFile(path, true);
    case FileKind::Tdi:
        return inspectScanLineDataFile(path, false);
    case FileKind::TimeMarks:
        return inspectTimeMarkFile(path);
    case FileKind::Ct:
        return inspectCtFile(path);
    case FileKind::Ctg:
        return inspectCtgFile(path);
    case FileKind::Sbet:
    case FileKind::Smrmsg:
    case FileKind::Sol:
        return inspectTrajectoryFile(path, kind);
    case FileKind::Eop:
        return inspectEopFile(path);
    case FileKind::Eoq:
        return inspectEoqFile(path);
    case FileKind::Xml:
    case FileKind::Unknown:
        break;
    }
    throw std::logic_error("no inspection for this kind of file");
}

} // namespace

QString InspectCommand::synopsis() const
{
    return QStringLiteral("<file> [--json]");
}

QString InspectCommand::description() const
{
    return QStringLiteral(
        "Prints every field of a file the library reads. Understood files:\n"
        "  *.info        band info file\n"
        "  *.stp         strip file (a take with its images, positions and dark takes)\n"
        "  *.it, *.tdi   per-scan-line integration times and TDI stages\n"
        "  *.tm, tm*.dat time-mark file: marks, periods, first and last mark, GPS week\n"
        "                rollover, regularity and the irregular steps\n"
        "  *.ct          camera time of every scan line: lines, first and last, steps\n"
        "  *.ctg         GPS time of every scan line: lines, first and last, steps,\n"
        "                stretches of steady line period\n"
        "  *.sbet, sbet*.out, smrmsg*.out, *.sol\n"
        "                trajectory files: records, time range, GPS week rollover,\n"
        "                order, record interval, first and last record\n"
        "  *.eop, *.eop.adj\n"
        "                EOP file: anchor, sample interval, sources, first and last sample\n"
        "  *.eoq         EOQ file: trajectory quality records and their statistics\n"
        "                (NCS, RPE, PSR)\n"
        "\n"
        "The name says what a file should be and the content is checked against it\n"
        "where it carries a mark (the CT, EOP and EOQ signatures, the SOL sync bytes,\n"
        "the XML root): a CT file renamed .ctg is refused as not a CTG file. A file\n"
        "whose name says nothing is recognised by its content where it can be. A\n"
        "trajectory file is opened as the library opens it, as SOL and then as SBET;\n"
        "when both fail, both reasons are given.\n"
        "\n"
        "Findings (irregular time marks, a partial last record, ...) are warnings:\n"
        "on stderr, or in \"messages\" with --json. Exit code 1 when the file cannot\n"
        "be read as what it should be.");
}

std::vector<Argument> InspectCommand::arguments() const
{
    return {{QStringLiteral("file"), QStringLiteral("The file to inspect.")}};
}

int InspectCommand::run(const Invocation& invocation)
{
    const QString path = invocation.arguments.first();
    if (!QFileInfo::exists(path))
        throw std::runtime_error("File not found: " + path.toStdString());
    Messages messages;
    const FileKind::Kind kind = kindToInspect(path, messages);
    Inspection inspection = inspect(path, kind);
    messages.insert(messages.end(), inspection.messages.begin(), inspection.messages.end());

    if (invocation.json) {
        Fields payload;
        payload.add(QStringLiteral("kind"), inspection.kind);
        payload.add(inspection.kind, QString(), std::move(inspection.fields));
        printJson(name(), path, payload, messages);
    } else {
        std::printf("%s: %s\n", qPrintable(path), qPrintable(inspection.title));
        inspection.fields.print(stdout, 2);
        printMessages(messages);
    }
    return hasErrors(messages) ? 1 : 0;
}

} // namespace dataprep
