#pragma once

#include <datamodel/model/Seconds.h>

namespace datamodel {

/// What the GNSS/IMU trajectories and the EOP trajectories have in common:
/// a number of samples at a typical interval, and per-sample standard
/// deviations handed out in the order x (east), y (north), z, omega, phi,
/// kappa (metres, then radians).
class Trajectory {
public:
    virtual ~Trajectory() = default;

    /// The number of samples.
    virtual int numSets() const = 0;
    /// The typical interval between samples in seconds (not a rate, despite the name).
    virtual double frequency() const = 0;
    /// Whether the samples carry standard deviations.
    virtual bool hasStdDevs() const = 0;
    /// The standard deviations of sample `index`.
    virtual void stdDevAtIndex(int index, float& x, float& y, float& z, float& omega, float& phi,
                               float& kappa) const = 0;
    /// The standard deviations at a GPS time (seconds of the week).
    virtual void stdDevAtGPS(Seconds gpsTime, float& x, float& y, float& z, float& omega, float& phi,
                             float& kappa) const = 0;
    /// Sets the standard deviations of sample `index`.
    virtual void setStdDevs(int index, float x, float y, float z, float omega, float phi, float kappa) = 0;
    /// Sets the standard deviations of every sample.
    virtual void setDefaultStdDevs(float x, float y, float z, float omega, float phi, float kappa) = 0;

protected:
    Trajectory() = default;
    Trajectory(const Trajectory&) = default;
    Trajectory& operator=(const Trajectory&) = default;
};

} // namespace datamodel
