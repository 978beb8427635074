#include "Output.h"

#include <cmath>
#include <cstdio>

#ifndef DATAMODEL_VERSION
#error "DATAMODEL_VERSION (the project version) must be defined by the build"
#endif

namespace dataprep {

namespace {

void add(Messages& messages, Message::Severity severity, std::string subject, std::string text)
{
    messages.push_back(Message{severity, std::move(subject), std::move(text), {}, {}});
}

} // namespace

const char* datamodelVersion()
{
    return DATAMODEL_VERSION;
}

void addError(Messages& messages, std::string subject, std::string text)
{
    add(messages, Message::Severity::Error, std::move(subject), std::move(text));
}

void addWarning(Messages& messages, std::string subject, std::string text)
{
    add(messages, Message::Severity::Warning, std::move(subject), std::move(text));
}

void addInformation(Messages& messages, std::string subject, std::string text)
{
    add(messages, Message::Severity::Information, std::move(subject), std::move(text));
}

bool hasErrors(const Messages& messages)
{
    for (const Message& message : messages)
        if (message.severity == Message::Severity::Error)
            return true;
    return false;
}

void printJson(const char* command, const QJsonValue& input, const Fields& payload, const Messages& messages)
{
    std::vector<Fields> list;
    for (const Message& message : messages) {
        Fields item;
        item.add(QStringLiteral("severity"), QString::fromLatin1(datamodel::toString(message.severity)));
        item.add(QStringLiteral("subject"), text(message.subject));
        item.add(QStringLiteral("text"), text(message.text));
        item.add(QStringLiteral("take"), message.take.empty() ? QJsonValue() : QJsonValue(text(message.take)));
        item.add(QStringLiteral("band"), message.band.empty() ? QJsonValue() : QJsonValue(text(message.band)));
        list.push_back(std::move(item));
    }
    Fields document;
    document.add(QStringLiteral("schemaVersion"), sJsonSchemaVersion);
    document.add(QStringLiteral("datamodelVersion"), QString::fromLatin1(datamodelVersion()));
    document.add(QStringLiteral("command"), QString::fromLatin1(command));
    document.add(QStringLiteral("input"), input);
    document.append(payload);
    document.add(QStringLiteral("messages"), QString(), std::move(list));
    const QByteArray bytes = document.toJson();
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stdout);
}

void printMessages(const Messages& messages)
{
    for (const Message& message : messages) {
        if (message.severity == Message::Severity::Information)
            std::printf("note: %s: %s\n", message.subject.c_str(), message.text.c_str());
        else
            std::fprintf(stderr, "%s: %s: %s\n", datamodel::toString(message.severity), message.subject.c_str(),
                         message.text.c_str());
    }
}

QString secondsText(const std::optional<double>& valueSec, int decimals)
{
    if (!valueSec || !std::isfinite(*valueSec))
        return QStringLiteral("-");
    return QString::number(*valueSec, 'f', decimals) + QStringLiteral(" s");
}

} // namespace dataprep
