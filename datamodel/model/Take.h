#pragma once

#include <datamodel/model/Cacheable.h>
#include <datamodel/model/ImageCollection.h>
#include <datamodel/model/Serializable.h>
#include <datamodel/model/Validatable.h>
#include <datamodel/session/RecordingSession.h>

#include <platform/geo/XYPoint.h>

#include <QDateTime>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QFileInfo;

namespace util {
class ProgressInterface;
}

namespace datamodel {

class Block;
class EopTrajectory;
class ImuTrajectory;
class InfoFile;
class L0Image;
class L2Image;
class TakeManager;

/// One recorded flight line (strip) of a take manager: the level-0 images of
/// its bands, optional level-2 images, its dark takes, its trajectory source
/// and EOP files, and its start and stop information. It owns its images;
/// dark takes added from outside are listed, not owned (those it reads from
/// a strip element itself it owns).
class Take : public ImageCollection, public Serializable, public virtual Validatable, public virtual Cacheable {
public:
    /// Time, position (longitude, latitude in degrees) and height (m) of the
    /// start or the stop of the line.
    struct StartStopInformation {
        QDateTime time;
        geo::XYPoint position;
        float heightM = 0.0f;
    };

    /// The line number of a take that has none.
    static constexpr std::uint32_t sUnsetLineNumber = 0xFFFFFFFFu;

    /// An empty take of `manager`, filled by read() or by the caller; the
    /// manager owns it once it is added there.
    explicit Take(TakeManager& manager);
    /// A take of `session` made of one level-0 image per info file, in the
    /// order given (the info files are copied). Throws "No info files given
    /// to Take constructor" for an empty vector. Start and stop come from
    /// the first info file, with `meanFlyingHeightM` as their heights.
    Take(RecordingSession& session, const std::string& name, const std::vector<InfoFile*>& infoFiles,
         float meanTerrainHeightM, float meanFlyingHeightM, const std::string& sensorId,
         const std::string& sensorType, int sensorVersion);
    /// Deletes every level-0 and level-2 image (null entries are skipped)
    /// and the dark takes it read itself.
    ~Take() override;
    Take(const Take&) = delete;
    Take& operator=(const Take&) = delete;

    // Names
    /// The name set, else the strip name derived from the level-0 image file
    /// names. Throws "Cannot derive strip name." and "While trying to derive
    /// strip name, found conflicting values: " + a + " vs. " + b.
    std::string name() const override;
    virtual void setName(const std::string& name);
    const std::string& label() const { return m_lineLabel; }
    void setLabel(const std::string& label) { m_lineLabel = label; }
    /// sUnsetLineNumber when unset.
    std::uint32_t lineNumber() const { return m_lineNumber; }
    /// The position (0-based) of the take among the image takes of the
    /// session's flight data, in recording order, found by its line number
    /// (taken from the first image's info file when unset) and cached.
    /// Throws when the take has no line number or the flight data cannot tell.
    int index() const;
    void setLineNumber(std::uint32_t lineNumber) { m_lineNumber = lineNumber; }

    // Owner
    TakeManager& manager() { return *m_manager; }
    const TakeManager& manager() const { return *m_manager; }
    /// Throws "Take is not connected to a session" when the manager is not one.
    RecordingSession& session() const;
    /// Throws "Take is not connected to a block" when the manager is not one.
    Block& block() const;

    // Images
    std::vector<L0Image*> imagesL0() const override { return m_imagesL0; }
    std::vector<L2Image*> imagesL2() const override { return m_imagesL2; }
    /// A take holds no nested collections.
    std::vector<ImageCollection*> collections() const override { return {}; }
    /// Band names of the level-0 images, in image order, each once.
    std::vector<std::string> availableBands() const override;
    /// The bands sharing the first six characters of the reference band: the
    /// first level-0 band of the B line (seventh character 'B') within 5
    /// degrees of nadir. Empty when there is no such band.
    std::vector<std::string> availableHiResBands() const;
    /// Keeps only the level-0 images of the given bands. Throws "Need at
    /// least one band to keep." and "Band " + band + " not found in take " +
    /// name before anything is removed.
    void removeBandsExcept(const std::vector<std::string>& bands);
    /// Always throws: a take holds no nested collections.
    void remove(ImageCollection* collection) override;
    /// Takes the image out (level-0 images are searched first) and deletes
    /// it. Throws "Trying to remove an Image not in this Take." otherwise.
    void remove(Image* image) override;
    /// Appends the image; the take takes ownership.
    void addImage(L0Image* image);
    void addImage(L2Image* image);

    // Dark takes
    /// Lists `take` as a dark take of this one (not owned).
    void addDarkTake(Take* take);
    const std::vector<Take*>& darkTakes() const { return m_darkTakes; }
    /// Stops listing `take` as a dark take (when it is about to be deleted).
    void removeDarkTake(const Take* take);

    // Sensor
    const std::string& sensorId() const { return m_sensorId; }
    void setSensorId(const std::string& id) { m_sensorId = id; }
    const std::string& sensorType() const { return m_sensorType; }
    void setSensorType(const std::string& type) { m_sensorType = type; }
    /// The calibration version; -1 when unknown.
    int sensorVersion() const { return m_calibrationVersion; }
    void setSensorVersion(int version) { m_calibrationVersion = version; }

    // Trajectories
    /// The trajectory the take's EOPs come from; null when none is assigned.
    const RecordingSession::ImuTrajectoryId* imuTrajectorySource() const { return m_trajectorySource.get(); }
    void setImuTrajectorySource(const RecordingSession::ImuTrajectoryId& id);
    /// The original EOP file (bare file name, in the raw folder); empty when none.
    const std::string& eopFilename() const { return m_eopFilename; }
    /// Takes `path`'s file name as the original EOP file.
    void setEopTrajectory(const std::string& path);
    /// The adjusted EOP file (bare file name, ending ".eop.adj"); empty when none.
    const std::string& adjustedEopFilename() const { return m_adjustedEopFilename; }
    /// Takes `path`'s file name as the adjusted EOP file.
    void setAdjustedEopTrajectory(const std::string& path);
    bool hasAdjustedEopTrajectory() const { return !m_adjustedEopFilename.empty(); }
    /// The take's GNSS/IMU trajectory, opened from its source on first use.
    /// Throws "No IMU Trajectory for take " + name when no source is
    /// assigned, and what opening the file throws.
    ImuTrajectory& imuTrajectory();
    /// Generates the take's original EOPs from the trajectory `id` over the
    /// GPS time range of its scan lines, anchored at `anchorDeg` (longitude,
    /// latitude in degrees, height 0) or, when null, at
    /// computeAnchorPoint(&id, true); with the camera's misalignment, the
    /// mount's nominal z offset and the session's flight date. Throws "No
    /// images; can't generate EOPs." for a take without level-0 images, and
    /// what the time range, the trajectory and the generation throw (the
    /// take is then unchanged).
    void setImuTrajectory(const RecordingSession::ImuTrajectoryId& id, const geo::XYPoint* anchorDeg = nullptr,
                          util::ProgressInterface* progress = nullptr);
    /// The take's EOPs: those generated or loaded as the original when no
    /// adjusted EOP file is named; else the adjusted ones; else the original
    /// EOP file's.
    EopTrajectory& eopTrajectory();
    /// The generated EOPs, or the original EOP file's, read on first use.
    /// Throws "No EOP trajectory for " + name when there are none.
    EopTrajectory& originalEopTrajectory();
    /// The adjusted EOP file's, read on first use. Throws "There is no
    /// adjusted EOP trajectory for " + name when none is named.
    EopTrajectory& adjustedEopTrajectory();
    /// Where the take begins: the trajectory `id` (the take's own source
    /// when null, else the session's first trajectory) at the first scan
    /// line of the first level-0 image; longitude and latitude in degrees
    /// when `degrees`, else radians. Throws "Can't find an anchor point;
    /// there are no IMU trajectories." and "No images; can't determine start
    /// position.".
    geo::XYPoint computeAnchorPoint(const RecordingSession::ImuTrajectoryId* id, bool degrees) const;
    /// Writes the generated EOPs next to the strip file (raw/<take>.eop),
    /// whole or not at all, names it as the take's original EOP file and
    /// returns its path. Throws "No EOP to write." when none were
    /// generated, "Failed to create: " + folder.
    std::string writeEopFile();
    /// The GPS time range of the take's scan lines, s: the widest range of
    /// the level-0 images' camera times (an image whose times fail is
    /// skipped). Throws "Cannot compute min/max times for the image lines."
    /// when no image gives a range.
    void minMaxGpsTimes(double& min, double& max) const;

    // Position and time
    bool hasStartInformation() const { return m_start.has_value(); }
    bool hasStopInformation() const { return m_stop.has_value(); }
    /// Throws "No start/stop position information for take." when unset (all four accessors).
    geo::XYPoint startPosition() const;
    geo::XYPoint stopPosition() const;
    float startHeight() const;
    float stopHeight() const;
    QDateTime startTime() const;
    QDateTime stopTime() const;
    /// Checks the start and stop positions before they are used: throws
    /// "No start/stop position information for take." when either is unset
    /// and "Crossed the dateline: " + name when the line runs across the
    /// 180th meridian (its start and stop longitudes lie more than 180
    /// degrees apart).
    void initializePositionInfo() const;
    void setStartTimePosHeight(const QDateTime& time, const geo::XYPoint& position, float heightM);
    void setStopTimePosHeight(const QDateTime& time, const geo::XYPoint& position, float heightM);
    float meanTerrainHeight() const { return m_meanTerrainHeightM; }
    void setMeanTerrainHeight(float heightM) { m_meanTerrainHeightM = heightM; }
    float meanFlyingHeight() const { return m_meanFlyingHeightM; }
    void setMeanFlyingHeight(float heightM) { m_meanFlyingHeightM = heightM; }

    // Files
    /// The directory the level-0 image files of the take lie in; empty when unknown.
    const std::string& imagesLocation() const { return m_imagesLocation; }
    /// The take's raw-data directory; empty when it lives in its manager's directory.
    const std::string& rawDataLocation() const { return m_rawDataLocation; }
    void setRawDataLocation(const std::string& directory) { m_rawDataLocation = directory; }
    /// The absolute path of a session file: the first that exists of the
    /// manager's directory + "/raw/" + name, the raw-data location + "/raw/"
    /// + name and the manager's directory + "/images/" + name; when none
    /// exists, the first of them.
    std::string locateFileInSession(const std::string& name) const;

    // Strip file
    /// The strip file's path; empty until findStpFile() or setStpFilename().
    const std::string& stpFilename() const { return m_stpFilename; }
    void setStpFilename(const std::string& path) { m_stpFilename = path; }
    /// The strip file's path: the "raw" folder of the manager's directory
    /// (created when missing; "Failed to create: " + path) + name + ".stp".
    std::string findStpFile();
    /// Whether the strip file exists: the one set or found, else the one
    /// findStpFile() would name.
    bool stpFileExists() const;
    /// Writes the take as a strip file (whole or not at all). Throws "No such
    /// path: ", "Couldn't open file \"<path>\"." and the element's messages.
    void writeStpFile();
    /// Throws "Couldn't delete: " + path.
    void deleteStpFile();
    /// Reads the take from a strip file. Throws "error opening strip file:"
    /// + path, "error parsing xml file:" + path + ": " + the parser's text,
    /// and the element's messages.
    void parseStpFile(const std::string& path);

    // Serialization
    void write(Serializer& serializer) const override;
    /// Writes the take into `element` (named "Strip" by the caller), with
    /// the calibration.
    void write(QDomElement& element, QDomDocument& document) const override;
    void write(QDomElement& element, QDomDocument& document, bool withCalibration) const;
    void read(Serializer& serializer) override;
    /// Fills the take from a "Strip" element that came from `stripFile`; a
    /// nested dark take is read with `topLevel` false (no calibration required).
    void read(const QDomElement& element, const QFileInfo& stripFile, bool topLevel);

    /// Releases the cached data of the take (not its images').
    void uncache() override;
    /// Calls the manager's traverse(Take&).
    void traverse(CacheManager& manager) override;
    /// Calls the traverser's validate(Take&).
    void traverse(ValidationTraverser& traverser) override;

private:
    const StartStopInformation& startInfo() const;
    /// `trajectory` at the first scan line of the first level-0 image
    /// (there must be one): longitude and latitude, degrees or radians.
    geo::XYPoint startOn(const ImuTrajectory& trajectory, bool degrees) const;
    const StartStopInformation& stopInfo() const;

    std::string m_stpFilename;
    mutable std::string m_name;
    mutable bool m_nameSet = false;
    std::string m_rawDataLocation;
    std::string m_eopFilename;
    std::string m_adjustedEopFilename;
    std::string m_sensorId;
    std::string m_sensorType;
    int m_calibrationVersion = -1;
    mutable std::uint32_t m_lineNumber = sUnsetLineNumber;
    mutable int m_index = -1;
    std::string m_lineLabel;
    std::vector<L2Image*> m_imagesL2;
    std::unique_ptr<RecordingSession::ImuTrajectoryId> m_trajectorySource;
    std::unique_ptr<ImuTrajectory> m_imuTrajectory;
    std::unique_ptr<EopTrajectory> m_originalEop;
    bool m_eopGenerated = false;
    std::unique_ptr<EopTrajectory> m_adjustedEop;
    std::string m_imagesLocation;
    std::vector<L0Image*> m_imagesL0;
    std::vector<Take*> m_darkTakes;
    std::vector<std::unique_ptr<Take>> m_ownedDarkTakes;
    TakeManager* m_manager;
    std::optional<StartStopInformation> m_start;
    std::optional<StartStopInformation> m_stop;
    float m_meanTerrainHeightM = 0.0f;
    float m_meanFlyingHeightM = 0.0f;
    mutable std::vector<std::string> m_availableBands;
};

} // namespace datamodel
