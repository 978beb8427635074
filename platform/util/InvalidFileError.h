#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace util {

/// A file that could be read but whose content its reader refuses: not
/// well-formed, nested too deep, or holding values its format does not
/// allow. The text names the file and what is wrong with it. A caller that
/// carries on without an optional file can tell this from a file that is
/// simply not there (a plain std::runtime_error) and report it.
class InvalidFileError : public std::runtime_error {
public:
    InvalidFileError(std::string path, const std::string& message)
        : std::runtime_error(message)
        , m_path(std::move(path))
    {
    }
    /// The refused file, as the reader was given it.
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace util
