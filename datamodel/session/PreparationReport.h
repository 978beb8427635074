#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace datamodel {

/// One finding of a session preparation, with what it concerns.
struct PreparationMessage {
    enum class Severity { Information, Warning, Error };

    Severity severity = Severity::Error;
    /// What the message is about: a file path, "take L001", "take L001 band
    /// PANN00A" or the session directory.
    std::string subject;
    /// The message itself, with every nested reason appended ("outer: inner").
    std::string text;
    /// The take and the band the finding belongs to; empty when it belongs
    /// to the session (or to a take as a whole, for the band).
    std::string take;
    std::string band;
};

/// The camera of the session.
struct SensorSummary {
    std::string id;
    std::string type;
    int calibrationVersion = 0;
    std::string cameraFile;
};

/// The session's time-mark file.
struct TimeMarkSummary {
    std::string file;
    int records = 0;
    bool gpsRollover = false;
};

/// One GNSS/IMU trajectory file of the session.
struct TrajectorySummary {
    /// File name as the session lists it, and the full path.
    std::string name;
    std::string path;
    /// "SOL" or "SBET": the reader that took the file; empty when none did.
    std::string format;
    /// Filled when the file could be opened; `error` says why not otherwise.
    bool opened = false;
    int records = 0;
    double recordIntervalSec = 0.0;
    bool hasStdDevs = false;
    std::optional<double> gpsStartSec;
    std::optional<double> gpsEndSec;
    std::string error;
};

/// What became of one band's CTG file.
enum class CtgStatus {
    /// Not looked at (no time-mark file, or CTG writing not asked for).
    NotChecked,
    /// Written by this run.
    Written,
    /// Already on disk and left as it was.
    Present,
    /// Could not be written; the band's `error` says why.
    Failed,
};

/// One level-0 band of a take.
struct BandPreparation {
    std::string band;
    std::string ctFile;
    std::string ctgFile;
    CtgStatus ctg = CtgStatus::NotChecked;
    /// Scan lines, when the band's times were read or written.
    std::optional<std::size_t> lines;
    /// GPS time of the first and last scan line, s of the GPS week.
    std::optional<double> gpsStartSec;
    std::optional<double> gpsEndSec;
    std::string error;
};

/// The exterior orientation generated for a take.
struct EopSummary {
    /// The trajectory file it was generated from, as the session lists it.
    std::string trajectory;
    /// The EOP file written; empty when not written.
    std::string file;
    int samples = 0;
    /// The interval between samples, s.
    double intervalSec = 0.0;
};

/// The trajectory quality computed for a take (docs/quality-measures.md).
struct QualitySummary {
    /// The band near nadir it was computed from.
    std::string band;
    /// The terrain: the DEM file, or empty for a flat surface at `flatHeightM`.
    std::string dem;
    double flatHeightM = 0.0;
    /// The EOQ file written; empty when not written.
    std::string file;
    int samples = 0;
    float minNcs = 1.0f, maxNcs = 1.0f, rmsNcs = 0.0f;
    float minRpe = 0.0f, maxRpe = 0.0f, rmsRpe = 0.0f;
    float maxPsr = 0.0f, rmsPsr = 0.0f;
};

/// One take (flight line) of the session.
struct TakePreparation {
    std::string name;
    std::optional<int> lineNumber;
    std::vector<BandPreparation> bands;
    std::vector<std::string> darkTakes;
    /// The take's GPS time range over all its bands, s of the GPS week.
    std::optional<double> gpsStartSec;
    std::optional<double> gpsEndSec;
    /// Names of the trajectories that hold every scan line.
    std::vector<std::string> coveredBy;
    /// The EOPs generated for the take, when they were.
    std::optional<EopSummary> eop;
    /// Its trajectory quality, when it was computed.
    std::optional<QualitySummary> quality;
};

/// Everything a session preparation found and did.
struct PreparationReport {
    /// The session folder as given and as opened (canonical).
    std::string input;
    std::string sessionDirectory;
    std::string sessionName;
    std::optional<SensorSummary> sensor;
    std::optional<TimeMarkSummary> timeMarks;
    std::vector<TrajectorySummary> trajectories;
    std::vector<TakePreparation> takes;
    std::vector<PreparationMessage> messages;

    /// CTG files by status over every band of every take.
    std::size_t ctgCount(CtgStatus status) const;
    std::size_t messageCount(PreparationMessage::Severity severity) const;
    /// The messages grouped: the session's first, then per take (in the
    /// order of `takes`, others after them) the take's own and then per band
    /// (in the take's band order); within each group errors, then warnings,
    /// then information, each in the order found.
    std::vector<PreparationMessage> groupedMessages() const;
    bool hasErrors() const { return messageCount(PreparationMessage::Severity::Error) > 0; }

    /// Appends a message, unless it is there already: of the same severity,
    /// take and band, one with the same subject and text, or one that tells
    /// the text with a reason appended ("text: reason", of any subject). A
    /// message without a subject is about the session (its directory
    /// becomes the subject) and matches the same text of any subject.
    void add(PreparationMessage::Severity severity, std::string subject, std::string text);
    void add(PreparationMessage message);
    void error(std::string subject, std::string text);
    void warning(std::string subject, std::string text);
    void information(std::string subject, std::string text);
};

/// "written", "present", "failed" or "not checked".
const char* toString(CtgStatus status);
/// "information", "warning" or "error".
const char* toString(PreparationMessage::Severity severity);

} // namespace datamodel
