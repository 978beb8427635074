#include "SessionCheck.h"

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <platform/util/ProgressInterface.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace dataprep {

namespace {

// Checks every info file it meets and reports failures to the error sink.
class InfoFileCheck final : public datamodel::ValidationTraverser, public datamodel::InfoFile::Validator {
public:
    explicit InfoFileCheck(Error* errors)
        : ValidationTraverser(nullptr, nullptr, errors)
    {
    }

    void validate(datamodel::L0Image& image) override
    {
        datamodel::InfoFile info = image.infoFile();
        traverse(info);
        ValidationTraverser::validate(image);
    }

    void validate(datamodel::InfoFile& file) override
    {
        try {
            datamodel::InfoFile::Validator::validate(file);
        } catch (const std::exception& e) {
            error(e.what());
        }
    }
    using ValidationTraverser::validate;
};

struct Problems final : datamodel::ValidationTraverser::Error {
    std::vector<std::string> messages;
    void error(const std::string& message) override { messages.push_back(message); }
};

QString utc(const QDateTime& time)
{
    return time.isNull() ? QStringLiteral("-") : time.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

} // namespace

int checkSession(const QString& directory, bool json, util::ProgressInterface* progress)
{
    datamodel::RecordingSession session(directory.toStdString());
    const QDir raw(QString::fromStdString(session.directory()) + QStringLiteral("/raw"));
    const QStringList names = raw.entryList({QStringLiteral("*.info"), QStringLiteral("*.INFO")}, QDir::Files,
                                            QDir::Name);

    Problems problems;
    std::map<std::string, std::vector<datamodel::InfoFile>> byStrip;
    {
        util::ProgressTask task(progress, "Reading info files", 0, names.size());
        long long done = 0;
        for (const QString& name : names) {
            const std::string path = raw.absoluteFilePath(name).toStdString();
            try {
                datamodel::InfoFile info(path, datamodel::InfoFile::STRIPNAMEREGEX);
                byStrip[info.stripName()].push_back(info);
            } catch (const std::exception& e) {
                problems.error(e.what());
            }
            task.report(++done);
        }
    }

    for (auto& [strip, infos] : byStrip) {
        std::vector<datamodel::InfoFile*> pointers;
        for (datamodel::InfoFile& info : infos)
            pointers.push_back(&info);
        const datamodel::InfoFile& first = infos.front();
        session.addTake(new datamodel::Take(session, strip, pointers, 0.0f, 0.0f, first.sensorId(),
                                            first.sensorType(), -1));
    }

    InfoFileCheck check(&problems);
    check.traverse(session);

    QJsonArray takesJson;
    if (!json) {
        std::printf("Session  %s\n", session.directory().c_str());
        std::printf("Files    %lld band info files, %zu takes\n\n", static_cast<long long>(names.size()),
                    session.takes().size());
        std::printf("%-8s %5s  %-8s %-20s %9s  %-9s  %s\n", "Take", "Line", "Label", "Start (UTC)", "Duration",
                    "Int. time", "Bands");
    }
    for (const datamodel::Take* take : session.takes()) {
        const datamodel::InfoFile& first = take->imagesL0().front()->infoFile();
        const double durationSec = first.lineStart().isNull() || first.lineStop().isNull()
            ? 0.0
            : first.lineStart().msecsTo(first.lineStop()) / 1000.0;
        QStringList bands;
        for (const std::string& band : take->availableBands())
            bands << QString::fromStdString(band);
        if (json) {
            takesJson.append(QJsonObject{
                {QStringLiteral("name"), QString::fromStdString(take->name())},
                {QStringLiteral("lineNumber"), first.lineNumber()},
                {QStringLiteral("lineLabel"), QString::fromStdString(first.lineLabel())},
                {QStringLiteral("lineStart"), first.lineStart().toUTC().toString(Qt::ISODate)},
                {QStringLiteral("lineStop"), first.lineStop().toUTC().toString(Qt::ISODate)},
                {QStringLiteral("integrationTime"), first.integrationTime().value()},
                {QStringLiteral("bands"), QJsonArray::fromStringList(bands)},
            });
        } else {
            char intTime[32] = "-";
            if (first.hasIntegrationTimeSet())
                std::snprintf(intTime, sizeof intTime, "%.2f ms", first.integrationTime().value() * 1000.0);
            std::printf("%-8s %5d  %-8s %-20s %7.1f s  %-9s  %s\n", take->name().c_str(), first.lineNumber(),
                        first.lineLabel().c_str(), utc(first.lineStart()).toStdString().c_str(), durationSec,
                        intTime, bands.join(QLatin1Char(' ')).toStdString().c_str());
        }
    }

    if (json) {
        QJsonArray errors;
        for (const std::string& message : problems.messages)
            errors.append(QString::fromStdString(message));
        const QJsonObject root{
            {QStringLiteral("session"), QString::fromStdString(session.directory())},
            {QStringLiteral("infoFiles"), static_cast<int>(names.size())},
            {QStringLiteral("takes"), takesJson},
            {QStringLiteral("errors"), errors},
        };
        std::printf("%s", QJsonDocument(root).toJson(QJsonDocument::Indented).constData());
    } else {
        std::printf("\n%s\n", problems.messages.empty() ? "No errors." : "Errors found:");
    }
    for (const std::string& message : problems.messages)
        std::fprintf(stderr, "error: %s\n", message.c_str());
    if (names.isEmpty()) {
        std::fprintf(stderr, "error: no band .info files in %s\n", raw.path().toStdString().c_str());
        return 1;
    }
    return problems.messages.empty() ? 0 : 1;
}

} // namespace dataprep
