#pragma once

#include <datamodel/model/Seconds.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace datamodel {

/// The time-mark file of a recording session: once a second the GNSS
/// receiver sends a time mark and the camera latches its own clock (CT), and
/// the file keeps these (GPS time, CT) pairs for the whole flight. TmFile
/// reads the file, repairs a GPS week rollover, estimates the nominal spacing
/// of the marks and converts CT values to GPS time and back by linear
/// interpolation between neighbouring marks.
///
/// The file is binary, little-endian, without header: 16-byte records from
/// offset 0, each the GPS time of the mark (double, seconds of the GPS week)
/// and the CT clock reading at the mark (double, seconds). Trailing bytes
/// beyond the last whole record are ignored.
///
/// Calling order: construct (the file is read at once), load() the CT range
/// actually needed, then any number of gpsAtCT() / ctAtGPS() calls. The
/// queries other than load() and ctAtGPS() are const and may run from several
/// threads at once; load() must not run while conversions are in progress.
class TmFile {
public:
    /// One time mark, laid out as in the file: GPS time first, CT second.
    struct TmRecord {
        double gpsTime; ///< GPS time of the mark, s of the week (counted on past a repaired rollover)
        double ctTime;  ///< camera clock at the mark, s
    };
    using Records = std::vector<TmRecord>;
    using iterator = Records::iterator;

    /// The time scale of load(): camera time or GPS time.
    static const int CT_TYPE = 0;
    static const int GPS_TYPE = 1;

    /// The length of a GPS week, s.
    static const double sWeekSec;
    /// Largest departure of a step between marks from the nominal period
    /// that the regularity walk accepts, s (for CT and GPS alike).
    static const double sRegularityToleranceSec;
    /// The most records a file may hold: a week of marks at 16 per second.
    /// A larger file (a sparse or foreign file) is refused before it is read.
    static const std::int64_t sMaxRecords;

    /// What the look at the neighbourhood of an irregular step found.
    struct StepDiagnosis {
        /// The marks before and after the pair are regular: one mark is off.
        bool isolatedMark = false;
        /// The GPS span of the neighbourhood holds this many periods more
        /// than it has steps (0 to 9): marks are missing. -1 when no whole
        /// number fits; 0 when the GPS spacing is regular and CT is not.
        int missingMarks = -1;
    };

    /// Reads the whole file, estimates the periods and repairs a rollover.
    /// Throws std::runtime_error "Failed to open TM file: " + path,
    /// "TM file: " + path + " has zero size" (fewer than 16 bytes) and
    /// "IO Error reading .tm file:" + path, and "TM file: " + path + " holds
    /// N records, more than a week of time marks (at most M)" for a file
    /// above sMaxRecords. An irregular file still loads.
    explicit TmFile(const std::string& path);

    /// Refuses a file whose records cannot be time marks, whatever the
    /// validators would say about their regularity: fewer than two records,
    /// a time that is not a finite number, a GPS time outside the week (or
    /// the week after a repaired rollover), a negative camera time, a mark
    /// whose GPS step and camera-time step disagree by more than a second
    /// (and 1 %), or GPS or camera times that do not advance. Throws std::runtime_error naming the
    /// file and the first offending record (counted from 0).
    void checkPlausible() const;

    /// The path given to the constructor.
    const std::string& name() const { return m_name; }
    /// The number of records.
    int numLoadedSets() const { return int(m_records.size()); }
    /// GPS time of record `i` (absolute index, not checked).
    Seconds gpsAtIndex(unsigned i) const { return seconds(m_records[i].gpsTime); }
    /// CT of record `i` (absolute index, not checked).
    Seconds ctAtIndex(unsigned i) const { return seconds(m_records[i].ctTime); }
    /// All records, after the rollover repair.
    const Records& records() const { return m_records; }
    /// Robust mean spacing of consecutive CT values, s; not a number for a
    /// one-record file.
    Seconds ctPeriod() const { return seconds(m_ctPeriod); }
    /// Robust mean spacing of consecutive GPS times, s.
    Seconds gpsPeriod() const { return seconds(m_gpsPeriod); }
    /// The first record of the interval chosen by load(); 0 after construction.
    int startIndex() const { return m_startIndex; }

    /// Checks that the file reaches `to` and lets conversions start their
    /// search near `from`. `type` is CT_TYPE or GPS_TYPE. Throws "maximum CT
    /// time in " + path + " is " + last CT in ms with one decimal + "ms",
    /// "maximum GPS time in " + path + " is " + last GPS time (six
    /// significant digits), and " invalid data range" when `from` is at or
    /// after the last mark.
    void load(int type, const Seconds& from, const Seconds& to);

    /// Whether `t` lies within the CT range of the file, both ends included.
    bool hasCtTime(const Seconds& t) const;
    /// Whether `t` lies within the GPS range of the file, both ends included.
    bool hasGpsTime(const Seconds& t) const;

    /// GPS time at camera time `ct`, interpolated between the marks that
    /// bracket it (on an exact hit of a mark, the bracket the search meets
    /// first). Throws "CTTime too small." below the first mark, "CTTime too
    /// big." at or after the last, "Can't find CT time." when the search runs
    /// off the records, and std::out_of_range "invalid vector<T> subscript"
    /// when the predicted index lies outside them.
    Seconds gpsAtCT(const Seconds& ct) const;
    /// Converts a band's CT values at once: `gps[k]` is exactly what
    /// gpsAtCT(ct[k]) gives, and a value that gpsAtCT rejects throws the
    /// same error. Ascending CT values (as a band's are) are converted in one
    /// walk over the marks. Throws std::invalid_argument when the two spans
    /// differ in length.
    void gpsAtCT(std::span<const double> ctSec, std::span<Seconds> gps) const;
    /// Camera time at GPS time `gps`, the mirror of gpsAtCT() without range
    /// messages: the predicted index and every step are only checked against
    /// the records (std::out_of_range "invalid vector<T> subscript"). Throws
    /// "Can't find GPS time." when the marks around `gps` are not in order.
    Seconds ctAtGPS(const Seconds& gps);

    /// Whether a GPS week rollover was repaired, or the records show one.
    bool hasGpsRollover() const;
    /// Repairs a week rollover (once), then walks every step between
    /// consecutive records: true when each lies within 5 ms of the period
    /// for CT and for GPS.
    bool analyzeAndFix();
    /// The repair hook for one irregular step: it looks at the marks around
    /// it (diagnoseStep()) but never changes a record, and returns false.
    bool fixData(const iterator& later, const iterator& earlier);
    /// Looks at the step from record `later` - 1 to record `later`: whether
    /// one mark is off while its neighbours are regular, or how many whole
    /// periods are missing from the GPS span of up to five records on each
    /// side. Throws std::out_of_range when `later` is 0 or past the end.
    StepDiagnosis diagnoseStep(std::size_t later) const;

private:
    void computeFrequencies();
    /// Finds the rollover and shifts the GPS times after it; once only.
    void repairRollover();
    /// Whether GPS time crosses the week's end from `earlier` to `later`.
    bool isRolloverStep(const TmRecord& earlier, const TmRecord& later) const;
    /// Record `i`, bounds-checked like the vector access of the search.
    const TmRecord& recordAt(long long i) const;
    /// The index the search starts at, predicted from the period.
    long long predictedCtIndex(double ct) const;
    long long predictedGpsIndex(double gps) const;
    /// The index i with ctTime[i] <= ct <= ctTime[i + 1] that the search
    /// from the predicted index meets first.
    std::size_t findCtBracket(double ct) const;
    void updateOrdering();

    Records m_records;
    double m_ctPeriod;
    double m_gpsPeriod;
    bool m_gpsRollover;
    std::int32_t m_startIndex;
    std::string m_name;
    // Whether the CT values rise strictly from record to record: the
    // condition under which a batch conversion may walk the marks once.
    bool m_ctStrictlyRising;
};

} // namespace datamodel
