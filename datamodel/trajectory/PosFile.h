#pragma once

#include <datamodel/model/Seconds.h>
#include <datamodel/trajectory/ImuRecord.h>

#include <QFile>

#include <array>
#include <cstddef>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

namespace datamodel {

/// The common base of the binary trajectory readers (SBET, its smrmsg
/// accuracy file, SOL): fixed-size records back to back from offset 0, read
/// by record index or by GPS time.
///
/// Times are GPS seconds of the week. A file whose first record time is
/// greater than its last crossed a GPS week boundary (a rollover): inside
/// such a file every time below the start time is first shifted by one week
/// (+604800 s) before it is compared or interpolated.
///
/// Files are never loaded whole. The reader maps the file into memory when
/// it can (and seeks and reads single records when it cannot); its own
/// memory is a sparse time index of one entry per 12000 records, which a
/// lookup refines by a short walk over the neighbouring records. A file
/// whose sampled times do not increase is indexed record by record instead
/// (isOrdered() is then false).
///
/// A reader is valid from construction (opened, checked and indexed) until
/// destruction; close() only closes the file. Not copyable.
class PosFile {
public:
    /// Opens `fileName` read only. Throws std::runtime_error
    /// "Could not open " + file name.
    explicit PosFile(const std::string& fileName);
    virtual ~PosFile();
    PosFile(const PosFile&) = delete;
    PosFile& operator=(const PosFile&) = delete;

    /// Reads and converts record `index`. Throws the reader's "index out of
    /// bounds", "seek error" and "failed to read" messages.
    virtual void readRecord(int index, ImuRecord& record) = 0;
    /// Reads and converts the record at the current position and moves on to
    /// the next one. Throws the reader's "failed to read" message.
    virtual void readNextRecord(ImuRecord& record) = 0;

    /// Opens the file again after close(); true when it is (already) open.
    bool open();
    /// Closes the file; reading then fails until open() is called.
    void close();
    bool isOpen() const;
    std::string fileName() const { return m_fileName; }
    /// The number of complete records (a trailing partial record is ignored).
    int numSets() const { return m_numSets; }
    bool hasStdDevs() const { return m_hasStdDevs; }
    /// False when the sampled record times did not increase and every record
    /// was indexed.
    bool isOrdered() const { return m_ordered; }
    /// The number of entries of the time index.
    std::size_t indexEntries() const { return m_index.size(); }
    /// The size of one record in bytes.
    int recordBytes() const { return m_recordBytes; }
    /// The bytes after the last complete record (a file cut short while it
    /// was written); they are not part of the trajectory.
    int trailingBytes() const { return m_trailingBytes; }

    /// The time of the first record.
    Seconds startTime() const { return seconds(m_startTime); }
    /// The time of the last record.
    Seconds endTime() const { return seconds(m_endTime); }
    void setStartStopTime(Seconds start, Seconds stop);
    /// Whether the file crosses a GPS week boundary (start time > end time).
    bool hasGpsRollover() const { return m_startTime > m_endTime; }

    /// Record `index`. Throws "Index out of bounds." outside [0, numSets - 1].
    void getRecord(int index, ImuRecord& record);
    /// The record at a GPS time: the record itself when one lies within
    /// 1e-6 s of it, else the interpolation of the two records around it,
    /// whose time is the requested one (see interpolate()). Throws
    /// "GPS time is out side of recording time for the trajectory." outside
    /// [start, end], "gps time is out of range" or "Index out of bounds." when
    /// an unordered file has no records around the time.
    void getRecord(Seconds gpsTime, ImuRecord& record);
    /// The index of the last record at or before `gpsTime` (`before`) or of
    /// the first at or after it, clamped to [0, numSets - 1]; a record within
    /// 1e-6 s is taken as it is. Throws as getRecord(Seconds, ImuRecord&).
    int getNearestIndex(Seconds gpsTime, bool before);
    /// `t` shifted by +604800 s when the file has a rollover and `t` is
    /// below the start time; else `t`.
    Seconds gpstime(Seconds t) const { return seconds(adjusted(t.value())); }
    /// Whether `t` (rollover-adjusted) lies in [start, end], both included.
    bool isTimeInsideFile(Seconds t) const;
    /// Whether 0 <= t < 604800.
    static bool isValidGpsTime(Seconds t);

    /// The typical record interval in seconds: the mean of the middle half
    /// of the sorted intervals between up to 250 consecutive records in the
    /// middle of the file. Not a number when the file has a single record.
    double frequency();

    /// Time, roll and pitch of one record, as stored (times not adjusted).
    struct Attitude {
        double time = 0.0;
        double roll = 0.0;
        double pitch = 0.0;
    };
    /// Reads time, roll and pitch of records first .. first + count - 1
    /// into `out` without converting whole records (for checks that stream
    /// through many records). Throws "Index out of bounds." for records
    /// outside the file and the reader's read error.
    void readAttitudes(int first, int count, Attitude* out);

    /// y0 + (x - x0) (y1 - y0) / (x1 - x0): y0 when x0 = x1 or x0 = x, y1 when x1 = x.
    static double linear(double y0, double y1, double x0, double x1, double x);
    /// Interpolates the angle between (x0, a0) and (x1, a1) at x along the
    /// shorter way round (see UnwrapAngle) and returns it in (-h, h], h being
    /// pi (`radians`) or 180. Returns a0 or a1 unchanged when x is x0 or x1
    /// (and x0 != x1).
    static double linearInterpolateAngle(double x0, double a0, double x1, double a1, double x, bool radians);
    /// Brings both angles into (-h, h] and then, when they lie more than
    /// half a turn apart, moves the negative one(s) up by a full turn so
    /// that linear interpolation between them takes the shorter way.
    static void UnwrapAngle(double& a, double& b, bool radians);
    /// Interpolates records a and b at out.time (all three times
    /// rollover-adjusted): latitude, height, roll, pitch and the standard
    /// deviations linearly, longitude and heading as angles. Roll and pitch
    /// are deliberately linear: they never come near half a turn.
    void interpolate(const ImuRecord& a, const ImuRecord& b, ImuRecord& out) const;

    // What a trajectory record can hold; the readers refuse a file whose
    // records sampled at opening hold anything else.

    /// What is wrong with a position (empty when nothing): latitude within
    /// [-pi/2, pi/2] rad, longitude within [-pi, pi] rad, ellipsoidal height
    /// within [sMinHeightM, sMaxHeightM].
    static std::string positionProblem(double latitudeRad, double longitudeRad, double heightM);
    /// What is wrong with an attitude angle (empty when nothing): within
    /// [-limit, limit] rad (sTiltLimitRad for roll and pitch, sHeadingLimitRad
    /// for headings, which some files carry unwrapped).
    static std::string angleProblem(const char* name, double angleRad, double limitRad);
    static constexpr double sTiltLimitRad = std::numbers::pi;
    static constexpr double sHeadingLimitRad = 2000.0 * std::numbers::pi;
    /// What is wrong with a standard deviation (empty when nothing): finite,
    /// not negative and at most sMaxStdDev in its unit.
    static std::string stdDevProblem(const char* name, double value, const char* unit);
    /// Heights an aircraft's trajectory can have, m.
    static constexpr double sMinHeightM = -1000.0;
    static constexpr double sMaxHeightM = 100000.0;
    /// The largest standard deviation taken for one, in the file's unit.
    static constexpr double sMaxStdDev = 1.0e6;
    /// Records at the start of a file whose times must rise, each at most an
    /// hour after the one before it.
    static constexpr int sRisingRecords = 16;

    /// Records per time-index entry of a file whose times increase.
    static constexpr int sIndexStep = 12000;
    static constexpr double sSecondsPerWeek = 604800.0;

protected:
    // The operations declared `inline` below are the lookups' hot path. They
    // are defined in the private header PosFile_p.h (not installed), which
    // the readers' sources include, so that every reader inlines them.

    /// Where a reader's records keep the fields that the base reads without
    /// converting a whole record, and the reader's own error texts.
    struct RecordLayout {
        int recordBytes = 0;
        int timeOffset = 0;
        int rollOffset = 0;
        int pitchOffset = 0;
        const char* indexError = "";
        const char* seekError = "";
        const char* readError = "";
    };
    /// What makes a record valid for the opening checks.
    using RecordTest = bool (*)(const unsigned char* record, double time);
    /// What a record's fields can be: empty when they are plausible, else
    /// what is wrong with them ("latitude 3.2 rad is outside ...").
    using RecordCheck = std::string (*)(const unsigned char* record);

    /// Sets the record layout; called by the derived constructor before
    /// checkFile().
    void setLayout(const RecordLayout& layout);
    /// The opening checks: the first record (and, with `testLastRecord`, the
    /// last complete record) must be readable and pass `test`; sets the start
    /// and end time and the record count and builds the time index. Throws
    /// "Failed to read first record from file.", "First record is not
    /// valid.", "Failed to move to last record.", "Failed to read last
    /// record." or "Last record is not valid.".
    ///
    /// Then the records must look like a trajectory, which costs a few
    /// dozen record reads whatever the file's length: the first records
    /// (the last one only with `testLastRecord`) must rise in time, at most
    /// an hour from record to record and crossing the end of the GPS week at
    /// most once, and the first, the last (with
    /// `testLastRecord`) and every sIndexStep-th record must hold a GPS time
    /// of the week and pass `check`. Throws "Record <n> is not valid: " and
    /// what is wrong.
    void checkFile(RecordTest test, bool testLastRecord, RecordCheck check);

    void setHasStdDevs(bool hasStdDevs) { m_hasStdDevs = hasStdDevs; }

    /// Where a (rollover-adjusted) time lies: `first` is the record within
    /// 1e-6 s of it (`exact`) or the first of the two records around it.
    struct Bracket {
        int first = 0;
        bool exact = false;
    };
    /// Finds the records around `t` by a walk over the record times from a
    /// given estimate (estimateIndex(t)) of a time already known to lie
    /// inside the recording. Throws as getRecord(Seconds, ImuRecord&).
    inline Bracket locateFrom(double t, int i);
    /// Called by getRecord(Seconds, ImuRecord&) with the (adjusted) time
    /// asked for, after the records around it have been asked for from
    /// memory and before they are read; must not throw. A reader whose
    /// records need lookups elsewhere (the accuracy of an SBET record) starts
    /// them here, so that they do not wait for the records.
    virtual void anticipate(double adjustedTime) noexcept { (void)adjustedTime; }
    /// Throws "GPS time is out side of recording time for the trajectory."
    /// unless the (adjusted) time lies in [start, end].
    inline void requireInsideRecording(double adjustedTime) const;

    /// The record index of the first index entry at or after `t`, or an
    /// estimate between the two entries around it. Throws "gps time is out of
    /// range" when no entry lies at or after `t`.
    inline int estimateIndex(Seconds gpsTime) const;
    /// The estimate for a time strictly between index entries (t0, i0) and
    /// (t1, i1): the index at the same fraction of the way. The fraction is
    /// only outside [0, 1] (or not a number) for infinite times in a corrupt
    /// file.
    static inline int estimateBetween(double t0, int i0, double t1, int i1, double t);
    /// Builds the time index from every `step`-th record (see the class comment).
    void mapFileIndex(int step);

    /// Moves the reading position to record `index` (unchecked); false when
    /// the file cannot seek there.
    bool seekRecord(int index);
    /// The bytes of the record at the reading position, which moves on to
    /// the next record; null when a whole record cannot be read. The bytes
    /// stay valid until the next read.
    inline const unsigned char* nextRecordBytes();
    /// Throws the reader's bounds and seek errors unless record `index` can
    /// be read next.
    inline void seekForRead(int index);
    /// out = linear(a, b) at t, given dt = t - ta and span = tb - ta with
    /// neither end equal to t.
    static inline void blendStdDevs(const std::array<float, 6>& a, const std::array<float, 6>& b, double dt,
                                    double span, std::array<float, 6>& out);
    /// Whether estimateIndex() is known to give every (adjusted) time in
    /// [from, to] an estimate in [first, last]. False when it cannot tell
    /// cheaply: the file is not ordered, or the times are not all strictly
    /// between the same two index entries.
    inline bool estimatesWithin(double from, double to, int first, int last) const;
    /// The smallest difference between two times that are not the same instant.
    static constexpr double sSameTimeSec = 1e-6;
    /// `t` + 604800 when the file has a rollover and `t` < start time.
    double adjusted(double t) const { return m_startTime > m_endTime && t < m_startTime ? t + sSecondsPerWeek : t; }

private:
    bool readBytes(qint64 offset, void* buffer, qint64 size);
    const unsigned char* readNextRecordBytes();
    void checkedSeek(int index);
    double readStoredTime(int index);
    /// The position in the index of the first entry at or after `t`.
    inline std::size_t lowerBound(double t) const;
    /// Asks the processor to load records first .. first + count - 1 of a
    /// mapped file into its caches.
    inline void prefetchRecords(int first, int count) const;
    /// locateFrom() past its first two records.
    Bracket walkFrom(double t, int i, double ti);
    [[noreturn]] static void throwIndexOutOfBounds();
    [[noreturn]] static void throwOutsideRecording();
    [[noreturn]] static void throwTimeOutOfRange();
    /// The time of record `index` as stored. Throws the reader's read error.
    inline double storedTime(int index);
    inline double adjustedTime(int index);
    inline void requireIndex(int index) const;
    void mapFile();
    /// The checks of checkFile() past the first and the last record.
    void checkRecords(bool testLastRecord, RecordCheck check);

    QFile m_file;
    double m_startTime = 0.0;
    double m_endTime = 0.0;
    int m_numSets = 0;
    bool m_hasStdDevs = false;
    bool m_ordered = true;
    /// (rollover-adjusted record time, record index), ascending by time.
    std::vector<std::pair<double, int>> m_index;

    std::string m_fileName;
    RecordLayout m_layout;
    int m_recordBytes = 0;
    int m_trailingBytes = 0;
    const unsigned char* m_map = nullptr; ///< the whole file, when mapped
    qint64 m_mapBytes = 0;
    qint64 m_position = 0;                ///< reading position, bytes
    std::vector<unsigned char> m_buffer;  ///< one record, when not mapped
};

} // namespace datamodel
