#pragma once

#include <datamodel/model/ImageCollection.h>
#include <datamodel/model/TakeManager.h>
#include <datamodel/model/Validatable.h>

#include <QDate>
#include <QStringList>

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace flightdata {
class SessionInterface;
}

namespace datamodel {

class ImuTrajectory;
class Issue;
class Sensor;
class TmFile;

/// One flight's recorded data set in a session directory. The session owns
/// its takes and the ground points in its map.
class RecordingSession : public TakeManager, public ImageCollection, public virtual Validatable {
public:
    /// Names one GNSS/IMU trajectory file of the session: the file name
    /// without directory and its modification time. Its string form is the
    /// time in decimal seconds, ";" and the name ("1234567890;flight.sbet").
    class ImuTrajectoryId {
    public:
        /// The time value of an id whose time is not known.
        static constexpr std::uint32_t sUnsetTime = 0xFFFFFFFFu;

        ImuTrajectoryId(const std::string& name, std::uint32_t timeSec);
        /// From the string form. Throws "Can't construct ImuTrajectoryId;
        /// string is invalid: \"<text>\"." without a ";" and "Can't convert
        /// to timestamp: " + the part before it when that is not a number.
        explicit ImuTrajectoryId(const std::string& text);

        const std::string& name() const { return m_name; }
        /// Modification time, seconds since 1970-01-01 UTC.
        std::uint32_t time() const { return m_timeSec; }

        bool operator==(const ImuTrajectoryId& other) const;
        /// Orders by name, then time.
        bool operator<(const ImuTrajectoryId& other) const;
        operator std::string() const { return toString(); }
        std::string toString() const;
        /// "<name> modified on <local date and time>", with "REALTIME: " in
        /// front for a real-time trajectory.
        std::string description() const;
        /// The name alone.
        std::string brief() const { return m_name; }
        /// Whether the name ends in "rnv" (any case): a real-time trajectory.
        bool isRealtime() const;

    private:
        std::string m_name;
        std::uint32_t m_timeSec;
    };

    /// Key of the session naming pattern in the installation's settings.
    static const char* const sSessionNamingRegKey; // "DataprepSessionNaming"
    /// Key of the file naming pattern in the installation's settings.
    static const char* const sFileNamingRegKey; // "DataprepFileNaming"

    /// Opens the session at `path`: a session directory. Throws "Can't find
    /// path provided for RecordingSession: " + path when it does not exist,
    /// "Cannot find directory: " + path when it is not a directory, and says
    /// that raw mass-memory recordings (.raw, .raw.xml) are not supported
    /// yet. With `buildTakesNow` the takes are built at once.
    explicit RecordingSession(const std::string& path, bool buildTakesNow = false);

    /// How a session opens.
    struct OpenOptions {
        /// Build the takes at once.
        bool buildTakesNow = false;
        /// Throw when the file naming pattern cannot be loaded (a missing
        /// schema, a session data file the schema rejects), as the
        /// constructor above does; otherwise the session opens without the
        /// pattern and fileNamePatternError() says why.
        bool throwOnPatternError = true;
        /// Leave out the band info files that disagree with the others on
        /// the camera identifier or type, instead of refusing to list the
        /// takes; infoFileFailures() holds why.
        bool leaveOutDisagreeingInfoFiles = false;
    };
    RecordingSession(const std::string& path, const OpenOptions& options);

    /// A file the session found in one of its folders but left out, and why.
    struct SkippedFile {
        std::string path;
        std::string reason;
    };
    /// Deletes every take (null entries are skipped) and every ground point.
    ~RecordingSession() override;

    /// The takes, built on first use from the session's strip files, flight
    /// data or band info files (unless takes were added with addTake).
    /// Info files that disagree on the camera throw the inconsistency with
    /// a util::InvalidFileError nested, naming the file that differs from
    /// most of them.
    std::vector<Take*> takes() const override;
    /// The take and band names in the name of a band's info file
    /// ("L002PANF28A.info": "L002", "PANF28A"); false when it has none.
    static bool takeAndBandOfInfoFile(const std::string& path, std::string& take, std::string& band);
    /// Every take of a session lives in the session directory.
    std::string directory(const Take& take) const override;
    /// The name made from the session naming pattern, or the session
    /// directory's own name when there is no pattern or no take.
    std::string name() const override;

    /// The canonical path the session was opened from.
    const std::string& sessionPath() const { return m_sessionPath; }
    const std::string& directory() const { return m_directory; }
    /// Where derived files go; the session directory unless set.
    const std::string& outputDirectory() const { return m_outputDirectory; }
    /// Whether the session reads a raw mass-memory recording (never, so far).
    bool isFromRaw() const { return false; }
    bool isFromMM() const { return false; }
    /// Throws "This RecordingSession not from a .raw file." (raw recordings
    /// are not read yet).
    int splitSessionNumber() const;

    /// Appends `take`; the session takes ownership.
    void addTake(Take* take);
    /// Forgets the takes and builds them again.
    void updateTakes(bool checkElevation);
    /// The take of that name: an existing one, else one read from the strip
    /// file of that base name in the raw folder. Throws "Can't find Take: " + name.
    Take* buildSpecificTake(const std::string& takeName);
    /// Attaches the dark takes the flight data list to the takes they were
    /// recorded for (sensor head "QX310" only; flight-data errors end it silently).
    void handleDarkTakes();
    /// Sets the calibration version on the sensor and on every take.
    void setSensorVersion(int version);
    /// Creates the session layout under `outDir`/<name> and makes it the
    /// output directory. Throws "Failed to create: " or "Failed to access: ".
    void setOutputDirectory(const std::string& outDir);

    /// The session's camera, made from the takes' sensor identifier and type,
    /// with the calibration of the flight data's camera file when there is
    /// one. Throws "Inconsistent sensor IDs" / "Inconsistent sensor types".
    const Sensor& sensor() const;
    std::string sensorId() const;
    std::string sensorType() const;
    /// The one GNSS/IMU folder of the session (see the session layout).
    std::string findGpsImuDirectory() const;
    /// The session's time-mark file, found once and kept: gps-imu/<name>/raw/
    /// and gps-imu/<name>/extract/ <name>.tm, then the one "*.tm" and then
    /// the one "tm*.dat" file of the GNSS/IMU folder's extract/ folder.
    /// Throws "Can't find a TM file for session " + name() + "\nList of
    /// messages while trying to access it:\n" + the failed attempts, newest
    /// first; a failure leaves nothing cached, so the next call searches again.
    TmFile& tmFile() const;
    /// The GNSS/IMU trajectory files in proc/ (then real-time ones in
    /// extract/), found once and cached.
    std::vector<ImuTrajectoryId*> imuTrajectories() const;
    /// Appends an id to the trajectory list; the session owns it.
    ImuTrajectoryId* addTrajectoryId(ImuTrajectoryId* id);
    /// Opens the trajectory file of `id` (in extract/ for a real-time one,
    /// else in proc/); the caller owns it. Throws "IMU Trajectory no longer
    /// exists: " + the id's string form when the id is not in the list.
    std::unique_ptr<ImuTrajectory> createImuTrajectory(const ImuTrajectoryId& id) const;
    /// The path of the trajectory file of `id`: in extract/ for a real-time
    /// one, else in proc/ of the GNSS/IMU folder. Throws what
    /// findGpsImuDirectory() throws.
    std::string imuTrajectoryPath(const ImuTrajectoryId& id) const;
    /// The date of the flight, from the flight data or the first take's info file.
    QDate flightDate() const;
    /// The recorder's flight data, read once from the mm folder. Throws
    /// "Can't find flight data XML; expected it in: " + path + "/mm/".
    std::shared_ptr<flightdata::SessionInterface> flightDataSession() const;
    /// The distinct issues of all level-0 images (none are recorded yet).
    std::vector<Issue*> issues() const { return {}; }

    // Naming patterns
    const std::string& fileNamingPattern() const { return m_fileNamingPattern; }
    void setFileNamingPattern(const std::string& pattern) { m_fileNamingPattern = pattern; }
    const std::string& sessionNamingPattern() const { return m_sessionNamingPattern; }
    /// Sets the pattern and forgets the name made from the previous one.
    void setSessionNamingPattern(const std::string& pattern);
    /// A non-empty name replaces the session's name; an empty one makes the
    /// next name() derive it again.
    void resetName(const std::string& name);
    /// Takes the file naming pattern from the setting
    /// "NamingConfig/DataprepFileNaming", else from raw/sessionData.xml;
    /// true when a pattern was set. Throws for a missing schema or a file
    /// the schema rejects.
    bool loadFileNamePattern();
    /// Why the file naming pattern could not be loaded when the session was
    /// opened without throwing for it; empty otherwise.
    const std::string& fileNamePatternError() const { return m_fileNamePatternError; }
    /// Why the session data file, which is there, gave no file naming
    /// pattern (another version, no or two patterns); empty otherwise.
    const std::string& fileNamePatternIgnored() const { return m_fileNamePatternIgnored; }
    /// The files of the session's folders that takes() and imuTrajectories()
    /// have met but left out (a dangling link, a pipe or folder in a file's
    /// place, an unreadable file), each once, in the order met.
    const std::vector<SkippedFile>& skippedFiles() const { return m_skippedFiles; }
    /// The failures of the info files left out as disagreeing (see
    /// OpenOptions), each as takes() would have thrown it.
    const std::vector<std::exception_ptr>& infoFileFailures() const { return m_infoFileFailures; }
    /// Writes the file naming pattern to raw/sessionData.xml.
    bool saveFileNamePattern();

    /// A session holds no images itself.
    std::vector<L0Image*> imagesL0() const override { return {}; }
    std::vector<L2Image*> imagesL2() const override { return {}; }
    /// The takes.
    std::vector<ImageCollection*> collections() const override;
    /// The band names of all takes, each once, in the order first met.
    std::vector<std::string> availableBands() const override;
    /// Takes `collection` (a take of this session) out and deletes it.
    /// Throws "Not a take." and "Trying to remove a take not in this session.".
    void remove(ImageCollection* collection) override;
    /// Always throws "No images in RecordingSessions.".
    void remove(Image* image) override;

    /// Calls the traverser's validate(RecordingSession&).
    void traverse(ValidationTraverser& traverser) override;

private:
    void initialize(const std::string& path, bool throwOnPatternError);
    /// The regular files of `directory` that match `filters` (readable ones
    /// only with `readableOnly`), by name; the other entries that match are
    /// noted as skipped files.
    QStringList listFiles(const QString& directory, const QStringList& filters, bool readableOnly) const;
    void buildTakes(bool checkElevation) const;
    bool buildTakesFromStripFiles() const;
    bool buildTakesFromFlightData() const;
    void buildTakesFromInfoFiles() const;
    std::string findRawFolder() const;
    std::string searchGpsImuDirectory() const;

    std::string m_sessionPath;
    mutable std::vector<std::unique_ptr<ImuTrajectoryId>> m_imuTrajectoryIds;
    mutable std::vector<Take*> m_takes;
    std::string m_directory;
    std::string m_outputDirectory;
    mutable std::vector<std::string> m_availableBands;
    mutable bool m_takesBuilt = false;
    mutable std::unique_ptr<Sensor> m_sensor;
    mutable std::unique_ptr<TmFile> m_tmFile;
    mutable std::shared_ptr<flightdata::SessionInterface> m_flightData;
    mutable std::string m_name;
    mutable std::string m_gpsImuDirectory;
    std::string m_sessionNamingPattern;
    std::string m_fileNamingPattern;
    std::string m_fileNamePatternError;
    std::string m_fileNamePatternIgnored;
    mutable std::vector<SkippedFile> m_skippedFiles;
    mutable std::vector<std::exception_ptr> m_infoFileFailures;
    bool m_leaveOutDisagreeingInfoFiles = false;
};

} // namespace datamodel
