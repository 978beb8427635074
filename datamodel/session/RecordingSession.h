#pragma once

#include <datamodel/model/ImageCollection.h>
#include <datamodel/model/TakeManager.h>
#include <datamodel/model/Validatable.h>

#include <cstdint>
#include <string>
#include <vector>

namespace datamodel {

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

    /// Opens the session directory `path`. Throws "Can't find path provided
    /// for RecordingSession: " + path when it does not exist and "Cannot find
    /// directory: " + path when it is not a directory.
    explicit RecordingSession(const std::string& path);
    /// Deletes every take (null entries are skipped) and every ground point.
    ~RecordingSession() override;

    std::vector<Take*> takes() const override { return m_takes; }
    /// Every take of a session lives in the session directory.
    std::string directory(const Take& take) const override;
    /// The name of the session directory.
    std::string name() const override;

    /// The canonical path the session was opened from.
    const std::string& sessionPath() const { return m_sessionPath; }
    const std::string& directory() const { return m_directory; }

    /// Appends `take`; the session takes ownership.
    void addTake(Take* take);

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
    std::string m_sessionPath;
    std::vector<Take*> m_takes;
    std::string m_directory;
};

} // namespace datamodel
