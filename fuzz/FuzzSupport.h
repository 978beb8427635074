#pragma once

// Helpers shared by the fuzz targets: the library reads files, so each input
// is written to a scratch file in a per-process folder first.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace fuzzsupport {

/// A per-process scratch folder, created on first use.
inline const std::string& scratchDirectory()
{
    static const std::string directory = [] {
        char pattern[] = "/tmp/datamodel-fuzz-XXXXXX";
        const char* made = mkdtemp(pattern);
        return std::string(made ? made : "/tmp");
    }();
    return directory;
}

/// Writes the input to `name` in the scratch folder and returns its path.
inline std::string writeInput(const std::string& name, const std::uint8_t* data, std::size_t size)
{
    const std::string path = scratchDirectory() + "/" + name;
    if (std::FILE* file = std::fopen(path.c_str(), "wb")) {
        if (size)
            std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    return path;
}

} // namespace fuzzsupport
