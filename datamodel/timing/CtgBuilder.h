#pragma once

#include <datamodel/model/Seconds.h>

#include <cstddef>
#include <string>
#include <vector>

namespace datamodel {

class TmFile;

/// Makes and checks the CTG files of many bands one after another, as a
/// session preparation does. The memory for a band's CT values and GPS
/// times is kept from band to band, so a long run neither allocates nor
/// touches fresh pages per band. The conversion is CameraTime's
/// (CameraTime::convertCtToGps), the file layout the timing model's.
class CtgBuilder {
public:
    /// A band's scan-line count and the GPS times of its first and last line.
    struct Band {
        std::size_t lines = 0;
        Seconds first;
        Seconds last;
    };

    /// Reads the CT file `ctFile`, converts it through `tm` and writes the
    /// CTG file `ctgFile` whole or not at all. Throws the CT reader's, the
    /// time-mark file's and the writer's messages ("Can't write CTG file: "
    /// + path + " (" + the system's reason + ")").
    Band write(const std::string& ctFile, TmFile& tm, const std::string& ctgFile);

    /// Reads the existing CTG file `ctgFile` and checks that it can be the
    /// band's: one time per scan line of `ctFile` and every time a finite
    /// number. Throws "CTG file has <n> scan lines, its band <m>: " + path,
    /// "CTG file holds a time that is not a finite number at scan line <k>:
    /// " + path, and the readers' own messages.
    Band check(const std::string& ctgFile, const std::string& ctFile);

private:
    std::vector<double> m_ctSec;
    std::vector<Seconds> m_gps;
};

} // namespace datamodel
