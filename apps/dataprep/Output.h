#pragma once

#include "Fields.h"

#include <datamodel/session/PreparationReport.h>

#include <QJsonValue>
#include <QString>

#include <optional>

#include <string>
#include <vector>

namespace dataprep {

/// The version of the JSON schema shared by every command (docs/json.md).
/// Added keys keep it; a key renamed or removed, or a type changed, raises it.
constexpr int sJsonSchemaVersion = 1;

/// The version of the library and its programs (the CMake project version).
const char* datamodelVersion();

/// A finding of a command: severity, what it concerns (a file, a take, a
/// band, a GPS time) and the text.
using Message = datamodel::PreparationMessage;
using Messages = std::vector<Message>;

void addError(Messages& messages, std::string subject, std::string text);
void addWarning(Messages& messages, std::string subject, std::string text);
void addInformation(Messages& messages, std::string subject, std::string text);
bool hasErrors(const Messages& messages);

/// Prints the JSON document of a command on stdout: schemaVersion,
/// datamodelVersion, command and input, the payload's entries, then the
/// messages.
void printJson(const char* command, const QJsonValue& input, const Fields& payload, const Messages& messages);

/// The messages of a text report: errors and warnings on stderr, one per
/// line ("error: <subject>: <text>"), information on stdout ("note: ...").
/// JSON carries them in `messages` instead.
void printMessages(const Messages& messages);

/// Printable seconds with `decimals` decimals and the unit ("376223.800000 s"),
/// or "-" when absent.
QString secondsText(const std::optional<double>& valueSec, int decimals = 6);

} // namespace dataprep
