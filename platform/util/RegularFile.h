#pragma once

#include <string>

class QString;

class QFile;

namespace util {

/// Opens `file` for reading when its path names a regular file (links
/// followed). A folder, a FIFO, a socket or a device is refused without
/// being opened, so that a reader never blocks on a pipe nor reads a stream
/// that never ends. Returns false when the file is refused or cannot be
/// opened, and then sets `reason` (when given) to why: "no such file", "a
/// link to <target>, which does not exist", "a folder, not a file", "a pipe,
/// not a file", the system's reason of a failed open, ... The caller says
/// which file.
bool openRegularFile(QFile& file, std::string* reason = nullptr);

/// Why `path` is not a readable regular file (links followed): "no such
/// file", "a link to <target>, which does not exist", "a folder, not a
/// file", "a pipe, not a file", ... Empty when it is one. With
/// `checkReadable` false, an unreadable regular file counts as one.
std::string notRegularReason(const QString& path, bool checkReadable = false);

/// Throws std::runtime_error `message`, with a nested std::runtime_error
/// `reason` when that is not empty (see fullMessage()): what() stays the
/// message, the reason travels with it.
[[noreturn]] void throwWithReason(const std::string& message, const std::string& reason);

} // namespace util
