#pragma once

#include <Eigen/Core>

#include <functional>
#include <string>
#include <vector>

namespace sensor {
class EOPData;
struct EOP;
} // namespace sensor
namespace util {
class ProgressInterface;
}

namespace datamodel {

/// NCS, RPE and PSR of the scan lines of one band, reduced to the EOP
/// samples they fall between, as docs/quality-measures.md defines them.
/// The samples are worked on in parallel (OpenMP), each thread with its own
/// ground intersection; every sample's result depends on nothing but its
/// own lines, so the results are the same on any number of threads.
class QualityMeasures {
public:
    /// What the measures need of the camera.
    struct Camera {
        int pixels = 0;            ///< CCD pixels of the band's line
        double pixelSizeMm = 0.0;
        double focalLengthMm = 0.0;
    };
    /// The measures of one EOP sample.
    struct Sample {
        double time = 0.0;
        float ncs = 1.0f;
        float rpe = 0.0f;
        float psr = 0.0f;
    };
    /// Where the image ray of CCD pixel `pixel`, from the projection centre
    /// of `eop` along its attitude, meets the terrain (mapping frame).
    /// Throws std::runtime_error when it does not.
    using Ground = std::function<Eigen::Vector3d(const sensor::EOP& eop, double pixel)>;
    /// Makes one Ground per thread.
    using GroundFactory = std::function<Ground()>;

    /// `eops` must be loaded and rising; `lineTimes` are the band's scan
    /// line GPS times in line order.
    QualityMeasures(const sensor::EOPData& eops, const std::vector<double>& lineTimes, const Camera& camera);

    /// One sample per EOP sample, in order. Reports the task
    /// "Trajectory Quality" to `progress` (may be null) from the calling
    /// thread. Throws std::runtime_error for a ray that misses the terrain
    /// (the first in sample order, with its time).
    std::vector<Sample> compute(const GroundFactory& makeGround, util::ProgressInterface* progress) const;

private:
    const sensor::EOPData& m_eops;
    const std::vector<double>& m_lineTimes;
    Camera m_camera;
};

} // namespace datamodel
