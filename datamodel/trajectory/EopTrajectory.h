#pragma once

#include <datamodel/model/Seconds.h>
#include <datamodel/model/Validatable.h>
#include <datamodel/trajectory/EoqFile.h>
#include <datamodel/trajectory/Trajectory.h>

#include <platform/geo/XYZPoint.h>

#include <QDate>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace geo {
class coordSys;
}
namespace sensor {
class EOPData;
class IdentitySensorModel;
struct EOP;
} // namespace sensor

namespace util {
class ProgressInterface;
}

namespace datamodel {

class ImuTrajectory;
class L0Image;
class ValidationTraverser;

/// The exterior orientation of the camera (its projection centre and
/// attitude) sampled along a take, in the local space-rectangular system
/// (east, north, up) of an anchor near the take. Either read from an EOP
/// file, lazily on first use, or generated from a GNSS/IMU trajectory.
///
/// The rotation chain of the generation is written down in
/// docs/exterior-orientation.md.
///
/// It also carries the trajectory quality measures of its samples (NCS, RPE,
/// PSR; docs/quality-measures.md) and their statistics, kept in the EOQ
/// file beside the EOP file (docs/formats/eoq-file.md). They are read
/// lazily and at most once: the statistics accessors read only the file's
/// header, and a trajectory without a readable EOQ file has the default
/// statistics and no quality measures; the record accessors read the
/// records and throw when there is no EOQ file. setQualities() replaces
/// both in memory; nothing reaches the disk before writeQualities().
class EopTrajectory : public Trajectory, public virtual Validatable {
public:
    /// The quality measures at one EOP sample: GPS time (s of the week),
    /// NCS (1 nominal), RPE and PSR (pixels). 24 bytes, as in the EOQ file.
    using QualityRecord = EoqFile::Record;

    /// The EOP file `fileName`, read on first use; `loadFlag` is handed to
    /// the container as whether it keeps standard deviations.
    EopTrajectory(const std::string& fileName, bool loadFlag);
    /// Generates the samples of [startTime, endTime] at the IMU trajectory's
    /// record interval, starting at startTime (by repeated addition, while
    /// not past endTime): position in the LSR system at `anchor`
    /// (longitude, latitude in radians, height in metres) less `zOffset`;
    /// attitude from the record's roll, pitch and heading, its position and
    /// the camera's `misalignment` (radians); standard deviations from the
    /// record. The absolute time is the GPS week of `flightDate`. Reports
    /// the task "EOP Generation" to `progress` (not owned, may be null).
    /// Throws what reading the IMU trajectory throws.
    EopTrajectory(const ImuTrajectory& imu, Seconds startTime, Seconds endTime, const geo::XYZPoint& anchor,
                  const geo::XYZPoint& misalignment, double zOffset, const QDate& flightDate,
                  util::ProgressInterface* progress);
    /// Copies the file name, the flag and the quality measures as they
    /// stand (records, statistics and whether each was read: what `other`
    /// has not read yet, the copy reads from the EOQ file itself; what it
    /// computed and did not write, the copy keeps). The copy reads its own
    /// samples from the EOP file on first use.
    EopTrajectory(const EopTrajectory& other);
    /// Takes `other`'s samples (`other` reads them again on first use) and
    /// copies the rest, quality measures as the copy constructor does.
    EopTrajectory& operator=(EopTrajectory& other);
    ~EopTrajectory() override;

    int numSets() const override;
    /// The container's frequency value: the interval between samples, s.
    double frequency() const override;
    bool hasStdDevs() const override;
    /// Throws "Error reading from EOP." when the sample does not exist.
    void stdDevAtIndex(int index, float& x, float& y, float& z, float& omega, float& phi,
                       float& kappa) const override;
    /// Throws "Error reading from EOP." outside the samples.
    void stdDevAtGPS(Seconds gpsTime, float& x, float& y, float& z, float& omega, float& phi,
                     float& kappa) const override;
    /// Throws "Error reading from EOP." when the sample does not exist.
    void setStdDevs(int index, float x, float y, float z, float omega, float phi, float kappa) override;
    void setDefaultStdDevs(float x, float y, float z, float omega, float phi, float kappa) override;

    /// Sample `index`. Throws "Failed to get record.".
    void getRecord(int index, sensor::EOP& sample) const;
    /// Replaces sample `index`. Throws "Failed to set EOP record.".
    void setRecord(int index, sensor::EOP& sample);
    /// The sample at a time, interpolated. Throws "EOPData::atGPS() failed.".
    void atGPS(Seconds gpsTime, sensor::EOP& sample) const;

    /// The GPS week's start the sample times count from, s since the GPS epoch.
    std::uint32_t absTime() const;
    /// Longitude, latitude (radians) and height (m) of the LSR system's origin.
    geo::XYZPoint anchorPoint() const;
    std::string appSource() const;
    std::string posSource() const;
    std::string tmSource() const;

    /// The container's file name when it is loaded and named, else the name
    /// given; throws "EOPData not loaded." when there is neither.
    std::string filename() const;
    void setFileName(const std::string& fileName);
    /// Writes the samples to `fileName` (whole or not at all).
    void write(const std::string& fileName);

    void traverse(ValidationTraverser& traverser) override;

    // Trajectory quality (NCS, RPE, PSR per sample) and the EOQ file.

    /// The EOQ file: the EOP file's name (filename(); "EOPData not loaded."
    /// without one) up to its first ".eop", followed by ".eoq"
    /// ("take.eop" and "take.eop.adj" both give "take.eoq"). Only the last
    /// path component is searched, so that a folder named "*.eop" does not
    /// count. Throws "Invalid EOQ file name: " + name + ". EOQ file name
    /// cannot be derived!" when it holds no ".eop".
    std::string eoqFileName() const;

    /// The statistics' defaults: RPE 0 to 0, NCS 1 to 1, PSR 0, all RMS
    /// values 0, no quality measures, no records announced.
    void assignEoqStatsDefaults();
    /// Reads the EOQ file's header once, if no statistics are there yet; a
    /// file that cannot be read (missing, refused, no file name) gives the
    /// defaults without a word. Statistics are read from then on.
    void readEoqStats() const;
    /// Reads header and records from the EOQ file, unless the statistics
    /// are there and the records are either not wanted or there too.
    /// Throws "Failed to open EOQ file: " + name, "Header/data mismatch in
    /// EOQ file: " + name and what EoqFile::read() throws; on failure
    /// nothing changes.
    void readQualities(bool wantRecords) const;

    /// Computes the trajectory quality (docs/quality-measures.md) from the
    /// scan lines of `band` and the camera `model` (whose band it selects),
    /// on the terrain that dsm::ProjectedElevationSourceFactory::instance
    /// hands out for the take's region, intersecting rays to `accuracy`
    /// metres, and replaces the records and statistics (setQualities()).
    /// Reports the task "Trajectory Quality" to `progress` (may be null).
    /// Throws "Mapping system is not set to LSR (trajectory quality assumes
    /// LSR)!", "Band is not close to nadir and derived trajectory quality
    /// would not be meaningful!", "GPS time goes backwards in EOP.",
    /// "Failed to get record.", and what reading the band's times and the
    /// terrain throws; a ray that misses the terrain names its time.
    void computeQualities(L0Image& band, sensor::IdentitySensorModel& model, float accuracy,
                          util::ProgressInterface* progress);
    /// The mapping system of the samples: the LSR system at the anchor.
    std::unique_ptr<geo::coordSys> mappingSystem() const;

    /// Replaces the records with `records` (one per EOP sample, in time
    /// order), computes their statistics (EoqFile::Statistics::of: in
    /// single precision; the defaults without records) and marks both as
    /// read. The trajectory has quality measures when there is a record.
    void setQualities(std::vector<QualityRecord> records);

    /// Writes the EOQ file (eoqFileName()) whole or not at all: the
    /// statistics and the records. Records never read are read from an
    /// existing EOQ file first, so that writing never drops them; without
    /// one, a file without records is written. Throws "Failed to write EOQ
    /// file: " + name and "Error writing EOQ header", the reason nested.
    void writeQualities() const;
    /// Writes the records as text (EoqFile::writeAscii) to the EOQ file's
    /// name with ".eoq" replaced by ".asc", whole or not at all, reading
    /// them first as writeQualities() does. Throws "Failed to write EOQ
    /// ASCII file: " + name, the reason nested.
    void writeQualitiesToASCII() const;

    /// The records: read or set when they are, else the count the EOQ
    /// file's header announces (0 without a file).
    int numQualitySets() const;
    bool hasQualityMeasures() const;

    /// The measure of record `index` (reads the records). Throws when the
    /// index is out of range.
    float ncsAtQualityIndex(int index) const;
    float rpeAtQualityIndex(int index) const;
    float psrAtQualityIndex(int index) const;
    /// The measure of the record qualityIndexAtGps(gpsTime).
    float ncsAtGps(Seconds gpsTime) const;
    float rpeAtGps(Seconds gpsTime) const;
    float psrAtGps(Seconds gpsTime) const;
    /// The record nearest to `gpsTime`; half-way between two records, the
    /// later one. The walk starts at the index proportional to the time
    /// between the first and the last record and steps to the neighbour
    /// until the time lies between two records; a time before the first or
    /// after the last record gives that record. Throws "EOQ times go
    /// backwards" when the walk meets a record earlier than the one before
    /// (or a record time that is not a number); throws too without records
    /// and for a time that is not a number.
    int qualityIndexAtGps(Seconds gpsTime) const;

    /// Statistics over all records (read from the EOQ file's header).
    float minNcs() const;
    float maxNcs() const;
    float minRpe() const;
    float maxRpe() const;
    float maxPsr() const;
    /// sqrt(sum (NCS - 1)^2 / n): against the nominal 1.
    float rmsNcs() const;
    float rmsRpe() const;
    float rmsPsr() const;

    /// Days from the GPS epoch's first Sunday used for EOP times
    /// (1999-08-22) to `date`, in whole weeks, times 604800 s.
    static std::uint32_t absoluteTime(const QDate& flightDate);

private:
    /// The container, read from the file on first use.
    sensor::EOPData& data() const;
    /// Reads the EOQ file's header into the statistics unless they are read.
    void readEoqHeader() const;
    /// The statistics, read first if need be.
    const EoqFile::Statistics& statistics() const;
    /// Record `index`, the records read first. Throws when out of range.
    const QualityRecord& qualityRecord(int index) const;
    /// Reads the records before they are written, if there is a file to
    /// read them from.
    void readQualitiesToWrite(const std::string& eoqName) const;
    /// Takes what an EOQ file's header holds.
    void assignEoq(const EoqFile::Header& header) const;
    /// assignEoqStatsDefaults() for the const readers.
    void assignEoqDefaults() const;

    std::string m_fileName;
    bool m_loadFlag = true;
    mutable std::unique_ptr<sensor::EOPData> m_data;

    // Quality measures. Mutable: the const accessors read them from the EOQ
    // file on first use.
    mutable std::vector<QualityRecord> m_qualities;
    mutable EoqFile::Statistics m_statistics;
    mutable bool m_hasQualityMeasures = false;
    mutable bool m_eoqStatsRead = false;
    mutable bool m_qualitiesRead = false;
    /// The record count the EOQ file's header announces.
    mutable std::int32_t m_eoqNumSets = 0;
    /// The header's reserved field as read.
    mutable std::int32_t m_eoqReserved = 0;
};

} // namespace datamodel
