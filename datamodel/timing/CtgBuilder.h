#pragma once

#include <datamodel/model/Seconds.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace util {
class AtomicFile;
}

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

    CtgBuilder();
    /// Removes the temporary files of staged files not committed.
    ~CtgBuilder();
    CtgBuilder(const CtgBuilder&) = delete;
    CtgBuilder& operator=(const CtgBuilder&) = delete;

    /// Reads the CT file `ctFile`, converts it through `tm` and writes the
    /// CTG file `ctgFile` whole or not at all. Throws the CT reader's, the
    /// time-mark file's and the writer's messages ("Can't write CTG file: "
    /// + path + " (" + the system's reason + ")"). Files staged before are
    /// committed with it.
    Band write(const std::string& ctFile, TmFile& tm, const std::string& ctgFile);

    /// As write(), but the CTG file is left in its temporary file until
    /// commit(), which makes many files durable far faster than one by one.
    /// Until then the target is as it was.
    Band stage(const std::string& ctFile, TmFile& tm, const std::string& ctgFile);
    /// Makes every staged file durable and moves it into place. Returns one
    /// entry per staged file, in staging order: null when committed, else
    /// the failure ("Can't write CTG file: " + path + " (" + reason + ")").
    std::vector<std::exception_ptr> commit();

    /// Reads the existing CTG file `ctgFile` and checks that it can be the
    /// band's: one time per scan line of `ctFile`, every time a finite
    /// number within the GPS week (or the next, after a rollover), and, with
    /// the time marks `tm`, the times of sampled scan lines (the first, the
    /// last and sCheckedLines between) as the conversion of `ctFile` gives
    /// them. Throws "CTG file has <n> scan lines, its band <m>: " + path,
    /// "CTG file holds a time that is not a finite number at scan line <k>:
    /// " + path, "CTG file holds <x> s at scan line <k>, outside the GPS
    /// week: " + path, "CTG file holds <x> s at scan line <k> where the CT
    /// file and the time marks give <y> s: " + path, and the readers' own
    /// messages.
    Band check(const std::string& ctgFile, const std::string& ctFile, TmFile* tm = nullptr);

    /// The GPS times of the band last written, staged or checked (until the
    /// next band).
    const std::vector<Seconds>& times() const { return m_gps; }

    /// How many scan lines between the first and the last check() compares
    /// with the conversion.
    static constexpr std::size_t sCheckedLines = 15;

private:
    std::vector<double> m_ctSec;
    std::vector<Seconds> m_gps;
    std::vector<std::unique_ptr<util::AtomicFile>> m_staged;
};

} // namespace datamodel
