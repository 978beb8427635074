#pragma once

#include <datamodel/trajectory/PosFile.h>

#include <array>
#include <memory>
#include <string>

namespace datamodel {

/// Reader of an SBET trajectory file: 136-byte records of seventeen
/// little-endian doubles, no header. The accuracy of the records comes from
/// the companion smrmsg file, found by replacing the first "sbet" of the
/// file name with "smrmsg"; without a usable smrmsg file the records carry
/// no standard deviations (hasStdDevs() false).
class SbetFile final : public PosFile {
public:
    /// The record on disk.
    struct SbetStruct {
        double time;            ///< GPS seconds of the week
        double latitude;        ///< rad
        double longitude;       ///< rad
        double height;          ///< ellipsoidal, m
        double velocityX;       ///< wander frame, m/s
        double velocityY;
        double velocityZ;
        double roll;            ///< rad
        double pitch;           ///< rad
        double platformHeading; ///< rad; true heading = platform heading - wander angle
        double wanderAngle;     ///< rad
        double accelerationX;   ///< wander frame, m/s^2
        double accelerationY;
        double accelerationZ;
        double angularRateX;    ///< body axes, rad/s
        double angularRateY;
        double angularRateZ;
    };
    static_assert(sizeof(SbetStruct) == 136);

    /// Reader of the smrmsg accuracy file: 80-byte records of ten
    /// little-endian doubles (time; north, east and down position standard
    /// deviations in metres; three velocity deviations; roll, pitch and
    /// heading deviations in arc minutes). The records hold only the time and
    /// the deviations, the attitude ones converted to radians.
    class SmrmsFile final : public PosFile {
    public:
        /// Opens and checks the file as PosFile and SbetFile do, except that
        /// the time of the last record is not tested. Throws the messages of
        /// PosFile and of the checks.
        explicit SmrmsFile(const std::string& fileName);
        ~SmrmsFile() override;

        /// Throws "Index out of bounds.", "Seek error." or "Failed to read from file.".
        void readRecord(int index, ImuRecord& record) override;
        /// Throws "Failed to read from file.".
        void readNextRecord(ImuRecord& record) override;
        /// The standard deviations at a GPS time (rollover-adjusted by the
        /// caller), the time first clamped into the file's time range: those
        /// of the record at that time or interpolated between the records
        /// around it, as getRecord() finds them.
        void accuracyAt(Seconds gpsTime, std::array<float, 6>& stdDev);
        /// Finds the records around a time (clamped as accuracyAt() does)
        /// ahead of the accuracyAt() calls for the trajectory records around
        /// it, which then mostly find them already read.
        void anticipate(double adjustedTime) noexcept override;

    private:
        // SbetFile looks up its records' accuracy with accuracyAtInline().
        friend class SbetFile;

        // The operations declared `inline` are defined in the private header
        // SbetFile_p.h (not installed).
        /// accuracyAt(), inlined into the SBET reader's record reading.
        inline void accuracyAtInline(Seconds gpsTime, std::array<float, 6>& stdDev);
        /// The (clamped, adjusted) time at which accuracyAt() looks up `gpsTime`.
        inline double lookupTime(double t) const;
        /// accuracyAt() for a time outside the span.
        void lookUp(double t, std::array<float, 6>& stdDev);
        struct Span;
        /// Reads the time and the deviations of the record at the reading
        /// position, which moves on to the next record.
        void readNextAccuracy(double& time, std::array<float, 6>& stdDev);
        /// Whether the (adjusted) time lies in the span.
        inline bool inSpan(double t) const;
        /// Empties the span (its records are left as they are).
        inline void forgetSpan();
        /// Reads the record of `bracket` and, unless exact, the next one
        /// into `records` (times as stored).
        void readBracket(const Bracket& bracket, Span& records);
        /// Makes `span`, read from record `first` and the next one (times
        /// as stored), the span when it can be one.
        void rememberSpan(int first, Span& span);

        /// Two neighbouring records (times adjusted) and the times
        /// [from, to] between them for which a lookup is known to end
        /// between these two records without taking either as the record at
        /// that time: the walk of every such time starts at one of the two.
        /// Empty when from > to. Neighbouring trajectory records (200 a
        /// second) mostly lie between the same two accuracy records (one a
        /// second).
        struct Span {
            double from = 1.0;
            double to = 0.0;
            double firstTime = 0.0;
            double secondTime = 0.0;
            std::array<float, 6> first{};
            std::array<float, 6> second{};
        };
        Span m_span;
    };

    /// Opens the SBET file and its accuracy file. Throws "Could not open " +
    /// path, path + " is not a Sbet file." when the file name holds no
    /// "sbet", and the messages of the opening checks (PosFile).
    explicit SbetFile(const std::string& fileName);
    ~SbetFile() override;

    /// Throws "Index out of bounds.", "Seek error." or "Failed to read from file.".
    void readRecord(int index, ImuRecord& record) override;
    /// Throws "Failed to read from file." (and what the accuracy file throws).
    void readNextRecord(ImuRecord& record) override;

    /// Lets the accuracy file look up the time before the records are read.
    void anticipate(double adjustedTime) noexcept override;

    /// The accuracy file, or null when there is none.
    const SmrmsFile* accuracyFile() const { return m_smrms.get(); }
    /// Why there is no accuracy file: what opening it threw ("Could not
    /// open <path>" when it is missing); empty when there is one.
    const std::string& accuracyFileError() const { return m_accuracyError; }
    /// The name of the accuracy file that belongs to an SBET file name:
    /// the first "sbet" of the name (after the last '/' or '\') replaced
    /// with "smrmsg"; empty when the name holds no "sbet".
    static std::string accuracyFileName(const std::string& sbetFileName);

private:
    std::unique_ptr<SmrmsFile> m_smrms;
    std::string m_accuracyError;
};

} // namespace datamodel
