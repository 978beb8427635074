#pragma once

#include <datamodel/model/Seconds.h>
#include <datamodel/model/Validatable.h>
#include <datamodel/trajectory/ImuRecord.h>
#include <datamodel/trajectory/Trajectory.h>

#include <memory>
#include <string>

namespace datamodel {

class PosFile;

/// A GNSS/IMU trajectory: the aircraft's position and attitude over a
/// flight, read from a SOL or an SBET file (with its smrmsg accuracy file).
///
/// The trajectory owns its reader. Copying and assigning hand the reader
/// over: the source is left without one. A trajectory without a reader
/// answers numSets() 0 and hasStdDevs() false and throws
/// "Trajectory file is not open." from every other operation that needs the
/// file.
class ImuTrajectory : public Trajectory, public virtual Validatable {
public:
    /// Opens `fileName` as a SOL file or, when that fails, as an SBET file.
    /// Throws what opening the SBET file throws (PosFile, SbetFile).
    explicit ImuTrajectory(const std::string& fileName);
    /// The trajectory read by `reader` (which must not be null).
    explicit ImuTrajectory(std::unique_ptr<PosFile> reader);
    /// Opens `fileName` as the constructor does, as a SOL file or else as an
    /// SBET file, but says why neither reader took it: throws
    /// std::runtime_error "<path> is neither a SOL nor an SBET file (SOL
    /// reader: <reason>; SBET reader: <reason>)".
    static std::unique_ptr<PosFile> openReader(const std::string& fileName);
    /// Takes the reader of `other`, which is left without one.
    ImuTrajectory(const ImuTrajectory& other);
    /// Destroys this trajectory's reader and takes the reader of `other`,
    /// which is left without one (nothing happens when both are the same).
    ImuTrajectory& operator=(const ImuTrajectory& other);
    ~ImuTrajectory() override;

    /// The number of records; 0 without a reader.
    int numSets() const override;
    /// The typical record interval in seconds (PosFile::frequency()).
    double frequency() const override;
    /// Whether the records carry standard deviations; false without a reader.
    bool hasStdDevs() const override;
    /// The standard deviations of record `index`: x east and y north in
    /// metres, z down, then omega, phi, kappa from roll, pitch and heading,
    /// in radians. Throws "Index out of bounds.".
    void stdDevAtIndex(int index, float& x, float& y, float& z, float& omega, float& phi, float& kappa) const override;
    /// The same from the record interpolated at `gpsTime`.
    void stdDevAtGPS(Seconds gpsTime, float& x, float& y, float& z, float& omega, float& phi,
                     float& kappa) const override;
    /// Does nothing: the deviations of a GNSS/IMU trajectory are the file's.
    void setStdDevs(int index, float x, float y, float z, float omega, float phi, float kappa) override;
    /// Does nothing: the deviations of a GNSS/IMU trajectory are the file's.
    void setDefaultStdDevs(float x, float y, float z, float omega, float phi, float kappa) override;

    /// Whether `gpsTime` lies in the recording time of the file, both ends
    /// included (across a week rollover as the file has it).
    virtual bool containsGpsTime(Seconds gpsTime) const;
    /// Whether the file crosses a GPS week boundary.
    virtual bool hasGpsRollover() const;
    /// The file name the trajectory was opened with.
    virtual std::string fileName() const;

    /// Calls the traverser's validate(ImuTrajectory&).
    void traverse(ValidationTraverser& traverser) override;

    /// Record `index`. Throws "Index out of bounds." and the reader's errors.
    void getPosRecord(int index, ImuRecord& record) const;
    /// The record at `gpsTime`, interpolated between the records around it
    /// (PosFile::getRecord). Throws "GPS time is out side of recording time
    /// for the trajectory." outside the file.
    void getPosRecord(Seconds gpsTime, ImuRecord& record) const;
    /// Counts the pairs of neighbouring records, from the last record at or
    /// before `start` to the first at or after `end`, whose roll or pitch
    /// changes at `limitDegPerSecond` or faster (heading is not checked). A
    /// negative start or end stands for the start or end of the file. Throws
    /// "There were N occurrences of the angular velocity exceeding the limit
    /// of L deg/s" when there is at least one (L with three decimals).
    void checkAngularRates(Seconds start, Seconds end, double limitDegPerSecond) const;
    /// Closes the file; the reader stays.
    void close();
    /// Whether the file's record times increase (the reader's sparse index
    /// could be used).
    bool isMonotonicallyIncreasing() const;

    /// The reader, or null when the trajectory has none.
    const PosFile* reader() const { return m_reader.get(); }

private:
    PosFile& requireReader() const;

    // Mutable because a copy takes the reader out of its const source.
    mutable std::unique_ptr<PosFile> m_reader;
};

} // namespace datamodel
