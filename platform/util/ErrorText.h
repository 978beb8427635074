#pragma once

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

} // namespace util
