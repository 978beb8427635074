#pragma once

#include <exception>
#include <string>

namespace util {

/// The text of `error` followed by the texts of the exceptions nested in it
/// (std::throw_with_nested), outermost first, joined by ": ".
std::string fullMessage(const std::exception& error);

} // namespace util
