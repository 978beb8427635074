#include <datamodel/timing/CtgBuilder.h>

#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TimeFormat_p.h>
#include <datamodel/timing/TmFile.h>

#include <platform/raster/CtFile.h>
#include <platform/sensor/CameraTime.h>
#include <platform/util/AtomicFile.h>
#include <platform/util/RegularFile.h>

#include <QFileInfo>

#include <cmath>
#include <cstdint>
#include <exception>
#include <stdexcept>

namespace datamodel {

CtgBuilder::CtgBuilder() = default;

// Staged files that were never committed are removed with their AtomicFile.
CtgBuilder::~CtgBuilder() = default;

CtgBuilder::Band CtgBuilder::write(const std::string& ctFile, TmFile& tm, const std::string& ctgFile)
{
    const Band band = stage(ctFile, tm, ctgFile);
    for (const std::exception_ptr& failure : commit())
        if (failure)
            std::rethrow_exception(failure);
    return band;
}

CtgBuilder::Band CtgBuilder::stage(const std::string& ctFile, TmFile& tm, const std::string& ctgFile)
{
    raster::CtFile::read(ctFile, m_ctSec);
    const std::string failure = "Cannot convert the camera times of " + ctFile + " with the time marks of " + tm.name();
    try {
        CameraTime::convertCtToGps(m_ctSec, ctFile, tm, m_gps);
    } catch (const std::out_of_range&) {
        // The search's vector access: said in the user's terms.
        util::throwWithReason(failure, "the marks expected around a camera time lie outside the time-mark file");
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(failure));
    }
    auto file = std::make_unique<util::AtomicFile>(ctgFile, "CTG file");
    file->open();
    sensor::CameraTime::writeCtg(*file, m_gps);
    m_staged.push_back(std::move(file));
    return {m_gps.size(), m_gps.front(), m_gps.back()};
}

std::vector<std::exception_ptr> CtgBuilder::commit()
{
    std::vector<util::AtomicFile*> files;
    for (const auto& file : m_staged)
        files.push_back(file.get());
    std::vector<std::exception_ptr> failures = util::AtomicFile::commitAll(files);
    m_staged.clear();
    return failures;
}

CtgBuilder::Band CtgBuilder::check(const std::string& ctgFile, const std::string& ctFile, TmFile* tm)
{
    const std::size_t bandLines = raster::CtFile::lineCount(ctFile);
    auto wrongLength = [&](const std::string& held) {
        return std::runtime_error("CTG file has " + held + " scan lines, its band " + std::to_string(bandLines)
                                  + ": " + ctgFile);
    };
    // The size is compared before anything is read: a file of the wrong
    // length (a sparse or foreign file) costs no reading.
    const QFileInfo info(QString::fromStdString(ctgFile));
    if (info.isFile() && info.size() % 8 == 0 && std::uint64_t(info.size()) / 8 != bandLines)
        throw wrongLength(std::to_string(info.size() / 8));
    sensor::CameraTime::readCtgFile(ctgFile, m_gps);
    if (m_gps.size() != bandLines)
        throw wrongLength(std::to_string(m_gps.size()));
    const double weekEndSec = 2.0 * TmFile::sWeekSec; // a rollover runs on into the next week
    for (std::size_t line = 0; line < m_gps.size(); ++line) {
        const double t = m_gps[line].value();
        if (!std::isfinite(t))
            throw std::runtime_error("CTG file holds a time that is not a finite number at scan line "
                                     + std::to_string(line) + ": " + ctgFile);
        if (t < 0.0 || t >= weekEndSec)
            throw std::runtime_error("CTG file holds " + generalText(t, 12) + " s at scan line " + std::to_string(line)
                                     + ", outside the GPS week: " + ctgFile);
    }
    if (m_gps.empty())
        return {};

    // Sampled lines against the conversion that writing the file makes.
    if (tm) {
        raster::CtFile::read(ctFile, m_ctSec);
        tm->load(TmFile::CT_TYPE, seconds(m_ctSec.front()), seconds(m_ctSec.back()));
        const std::size_t last = m_gps.size() - 1;
        for (std::size_t k = 0; k <= sCheckedLines + 1; ++k) {
            const std::size_t line = last * k / (sCheckedLines + 1);
            const double expected = tm->gpsAtCT(seconds(m_ctSec[line])).value();
            const double held = m_gps[line].value();
            if (!(std::abs(held - expected) <= 1e-6))
                throw std::runtime_error("CTG file holds " + generalText(held, 12) + " s at scan line "
                                         + std::to_string(line) + " where the CT file and the time marks give "
                                         + generalText(expected, 12) + " s: " + ctgFile);
        }
    }
    return {m_gps.size(), m_gps.front(), m_gps.back()};
}

} // namespace datamodel
