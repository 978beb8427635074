#pragma once

#include <QString>

#include <exception>
#include <string>

namespace util {

/// The text of `error` followed by the texts of the exceptions nested in it
/// (std::throw_with_nested), outermost first, joined by ": ".
std::string fullMessage(const std::exception& error);

/// Called inside a catch block: rethrows the exception being handled so that
/// it says which file it is about. A std::runtime_error whose full message
/// does not name `path` yet is thrown again with the same what() and the
/// location ("in " + `what` + " " + `path`) as its innermost nested reason;
/// any other exception is rethrown unchanged. The reader's own texts thus
/// stay word for word, and fullMessage() names the file.
[[noreturn]] void rethrowNaming(const std::string& what, const std::string& path);

/// How many characters of a file's text a message quotes at most.
inline constexpr int sMaxQuotedChars = 200;

/// Text taken from an input file, fit to be put into a message: the first
/// sMaxQuotedChars characters, followed by "..." when the text is longer. A
/// character is never cut in two.
std::string excerpt(const QString& text);
/// The same for UTF-8 text.
std::string excerpt(const std::string& text);

} // namespace util
