#pragma once

#include <datamodel/model/Seconds.h>
#include <datamodel/model/Validatable.h>
#include <datamodel/trajectory/Trajectory.h>

#include <platform/geo/XYZPoint.h>

#include <QDate>

#include <cstdint>
#include <memory>
#include <string>

namespace sensor {
class EOPData;
struct EOP;
} // namespace sensor

namespace util {
class ProgressInterface;
}

namespace datamodel {

class ImuTrajectory;
class ValidationTraverser;

/// The exterior orientation of the camera (its projection centre and
/// attitude) sampled along a take, in the local space-rectangular system
/// (east, north, up) of an anchor near the take. Either read from an EOP
/// file, lazily on first use, or generated from a GNSS/IMU trajectory.
///
/// The rotation chain of the generation is written down in
/// docs/exterior-orientation.md.
class EopTrajectory : public Trajectory, public virtual Validatable {
public:
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
    /// Copies the file name and flag; the copy reads its own samples from
    /// the file on first use.
    EopTrajectory(const EopTrajectory& other);
    /// Takes `other`'s samples (`other` reads them again on first use) and
    /// copies the rest.
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

    /// Days from the GPS epoch's first Sunday used for EOP times
    /// (1999-08-22) to `date`, in whole weeks, times 604800 s.
    static std::uint32_t absoluteTime(const QDate& flightDate);

private:
    /// The container, read from the file on first use.
    sensor::EOPData& data() const;

    std::string m_fileName;
    bool m_loadFlag = true;
    mutable std::unique_ptr<sensor::EOPData> m_data;
};

} // namespace datamodel
