// Feeds arbitrary bytes to the time-mark reader and converts with what it
// read. A batch conversion must give bit for bit what single conversions
// give, and fail with the same error; the expected errors are
// std::runtime_error and std::out_of_range. Any other exception, a crash, a
// hang or a sanitizer finding is a bug.

#include "FuzzSupport.h"

#include <datamodel/timing/TmFile.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using datamodel::Seconds;
using datamodel::TmFile;

// The text of the error of one call; empty when it succeeds.
template <typename F>
std::string failure(F&& f)
{
    try {
        f();
    } catch (const std::out_of_range& e) {
        return std::string("range: ") + e.what();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return {};
}

void compareBatchWithSingles(const TmFile& tm, const std::vector<double>& ct)
{
    std::vector<Seconds> batch(ct.size());
    const std::string batchFailure = failure([&] { tm.gpsAtCT(ct, batch); });
    std::vector<Seconds> single(ct.size());
    const std::string singleFailure = failure([&] {
        for (std::size_t k = 0; k < ct.size(); ++k)
            single[k] = tm.gpsAtCT(datamodel::seconds(ct[k]));
    });
    if (batchFailure != singleFailure)
        std::abort(); // the two conversions disagree about an error
    if (batchFailure.empty() && !ct.empty() && std::memcmp(batch.data(), single.data(), 8 * ct.size()) != 0)
        std::abort(); // the batch is not bit for bit the single conversions
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzzsupport::writeInput("tm_fuzz.dat", data, size);
    try {
        TmFile tm(path);
        const int n = tm.numLoadedSets();
        (void)tm.hasGpsRollover();
        (void)tm.analyzeAndFix();
        for (int i = 1; i < n && i < 8; ++i)
            (void)tm.diagnoseStep(std::size_t(i));

        // Camera times at, between and around the marks, as a band would ask.
        std::vector<double> ct;
        for (int i = 0; i < n; ++i) {
            ct.push_back(tm.ctAtIndex(unsigned(i)).value());
            if (i + 1 < n)
                ct.push_back(0.5 * (tm.ctAtIndex(unsigned(i)).value() + tm.ctAtIndex(unsigned(i + 1)).value()));
        }
        const Seconds first = tm.ctAtIndex(0);
        const Seconds last = tm.ctAtIndex(unsigned(n - 1));
        (void)failure([&] { tm.load(TmFile::CT_TYPE, first, last); });
        (void)failure([&] { tm.load(TmFile::GPS_TYPE, tm.gpsAtIndex(0), tm.gpsAtIndex(unsigned(n - 1))); });
        (void)failure([&] { tm.load(TmFile::CT_TYPE, datamodel::seconds(ct[ct.size() / 2]), last); });
        compareBatchWithSingles(tm, ct);
        std::sort(ct.begin(), ct.end());
        ct.erase(std::remove_if(ct.begin(), ct.end(), [&](double v) { return !(v >= first.value() && v < last.value()); }),
                 ct.end());
        compareBatchWithSingles(tm, ct);
        for (int i = 0; i < n && i < 16; ++i)
            (void)failure([&] { tm.ctAtGPS(tm.gpsAtIndex(unsigned(i)) + datamodel::seconds(0.25)); });
        (void)tm.hasCtTime(first);
        (void)tm.hasGpsTime(tm.gpsAtIndex(0));
    } catch (const std::runtime_error&) {
    }
    return 0;
}
