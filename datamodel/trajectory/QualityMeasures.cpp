#include <datamodel/trajectory/QualityMeasures_p.h>

#include <platform/sensor/EOPData.h>
#include <platform/util/ProgressInterface.h>

#include <Eigen/Geometry>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <omp.h>

namespace datamodel {

namespace {

/// A scan line's projection centre and the ground under its first, centre
/// and last pixel.
struct Footprint {
    double time = std::numeric_limits<double>::quiet_NaN();
    Eigen::Vector3d centre;
    std::array<Eigen::Vector3d, 3> ground;
};

struct LineValues {
    double ncs = 1.0, rpe = 0.0, psr = 0.0;
};

/// The signed area of a polygon in the x, y plane, counter-clockwise
/// positive, taken relative to its first corner.
template <std::size_t N>
double signedArea(const std::array<const Eigen::Vector3d*, N>& ring)
{
    double twice = 0.0;
    for (std::size_t k = 1; k + 1 < N; ++k) {
        const Eigen::Vector3d p = *ring[k] - *ring[0], q = *ring[k + 1] - *ring[0];
        twice += p.x() * q.y() - q.x() * p.y();
    }
    return 0.5 * twice;
}

} // namespace

QualityMeasures::QualityMeasures(const sensor::EOPData& eops, const std::vector<double>& lineTimes,
                                 const Camera& camera)
    : m_eops(eops)
    , m_lineTimes(lineTimes)
    , m_camera(camera)
{
}

std::vector<QualityMeasures::Sample> QualityMeasures::compute(const GroundFactory& makeGround,
                                                              util::ProgressInterface* progress) const
{
    const int count = m_eops.size();
    std::vector<Sample> samples(static_cast<std::size_t>(std::max(0, count)));
    if (count <= 0)
        return samples;

    std::vector<double> sampleTimes(samples.size());
    sensor::EOP eop;
    for (int k = 0; k < count; ++k) {
        if (m_eops.atIndex(k, eop) != 0)
            throw std::runtime_error("Failed to get record.");
        if (k > 0 && eop.time < sampleTimes[std::size_t(k) - 1])
            throw std::runtime_error("GPS time goes backwards in EOP.");
        sampleTimes[std::size_t(k)] = eop.time;
        samples[std::size_t(k)].time = eop.time;
    }
    const double firstTime = sampleTimes.front(), lastTime = sampleTimes.back();

    // The flight direction on the map: from the first projection centre to
    // the last, or the camera's forward axis when they coincide.
    sensor::EOP first, last;
    m_eops.atIndex(0, first);
    m_eops.atIndex(count - 1, last);
    Eigen::Vector2d direction(last.x - first.x, last.y - first.y);
    if (direction.norm() < 1e-6) {
        const Eigen::Quaterniond q(first.q[0], first.q[1], first.q[2], first.q[3]);
        const Eigen::Vector3d forward = q.conjugate() * Eigen::Vector3d::UnitX();
        direction = Eigen::Vector2d(forward.x(), forward.y());
    }
    if (direction.norm() < 1e-12)
        direction = Eigen::Vector2d::UnitX();
    direction.normalize();

    // The lines of each sample: those from its time to the next sample's
    // (the last sample: to the end); lines before the first sample have no
    // orientation and are left out.
    const std::size_t lines = m_lineTimes.size();
    const double meanPeriod = lines >= 2 ? (m_lineTimes.back() - m_lineTimes.front()) / double(lines - 1)
                                         : (count >= 2 ? (lastTime - firstTime) / (count - 1) : 0.0);
    std::vector<std::size_t> offsets(samples.size() + 1, 0);
    std::vector<int> sampleOfLine(lines, -1);
    for (std::size_t i = 0; i < lines; ++i) {
        const double t = m_lineTimes[i];
        if (!(t >= firstTime))
            continue;
        const auto k = int(std::upper_bound(sampleTimes.begin(), sampleTimes.end(), t) - sampleTimes.begin()) - 1;
        sampleOfLine[i] = k;
        ++offsets[std::size_t(k) + 1];
    }
    for (std::size_t k = 1; k < offsets.size(); ++k)
        offsets[k] += offsets[k - 1];
    std::vector<std::size_t> order(offsets.back());
    {
        std::vector<std::size_t> next(offsets.begin(), offsets.end() - 1);
        for (std::size_t i = 0; i < lines; ++i)
            if (sampleOfLine[i] >= 0)
                order[next[std::size_t(sampleOfLine[i])]++] = i;
    }

    const double pixelRatio = m_camera.pixelSizeMm / m_camera.focalLengthMm;
    const std::array<double, 3> pixels{0.0, 0.5 * (m_camera.pixels - 1), double(m_camera.pixels - 1)};

    util::ProgressTask task(progress, "Trajectory Quality", 0, count);
    std::atomic<long long> done{0};
    int failedSample = count;
    std::string failure;

#pragma omp parallel
    {
        const Ground ground = makeGround();
        sensor::EOP at;
        const auto footprint = [&](double time, Footprint& f) {
            if (f.time == time)
                return;
            if (m_eops.atGPS(util::seconds(time), at) != 0)
                throw std::runtime_error("EOPData::atGPS() failed.");
            f.centre = Eigen::Vector3d(at.x, at.y, at.z);
            for (std::size_t p = 0; p < 3; ++p)
                f.ground[p] = ground(at, pixels[p]);
            f.time = time;
        };
        // The measures of a line exposed at `time` for `period`; the pair of
        // times moves back to end with the EOPs where they end.
        Footprint from, to;
        const auto measure = [&](double time, double period) {
            LineValues v;
            if (!(period > 0.0) || !std::isfinite(period))
                period = meanPeriod;
            double a = time, b = time + period;
            if (b > lastTime) { // the EOPs end: the last period they hold
                b = lastTime;
                a = lastTime - period;
            }
            if (!(period > 0.0) || a < firstTime)
                return v; // one instant: no motion to measure
            footprint(a, from);
            footprint(b, to);
            const Eigen::Vector2d move = (to.centre - from.centre).head<2>();
            const double nominal = move.dot(direction);
            const auto& g0 = from.ground;
            const auto& g1 = to.ground;
            const std::array<const Eigen::Vector3d*, 6> ring{&g0[0], &g0[1], &g0[2], &g1[2], &g1[1], &g1[0]};
            const double area = signedArea(ring);
            const Eigen::Vector2d across = (g0[2] - g0[0]).head<2>();
            const bool lastLeft = direction.x() * across.y() - direction.y() * across.x() > 0.0;
            const double length = (g0[1] - g0[0]).head<2>().norm() + (g0[2] - g0[1]).head<2>().norm();
            if (std::abs(nominal) > 1e-9 && length > 0.0)
                v.ncs = (lastLeft ? -area : area) / (length * nominal);
            const double pixel = (g0[1] - from.centre).norm() * pixelRatio;
            const Eigen::Vector2d slide = (g1[1] - g0[1]).head<2>();
            if (pixel > 0.0) {
                v.rpe = (slide.dot(direction) - nominal) / pixel;
                v.psr = (slide - move).norm() / pixel;
            }
            // Keep the pair for the next line, whose start is this one's end.
            std::swap(from, to);
            return v;
        };

#pragma omp for schedule(dynamic, 32)
        for (int k = 0; k < count; ++k) {
            try {
                Sample& sample = samples[std::size_t(k)];
                const std::size_t begin = offsets[std::size_t(k)], end = offsets[std::size_t(k) + 1];
                bool any = false;
                LineValues kept;
                for (std::size_t j = begin; j < end; ++j) {
                    const std::size_t i = order[j];
                    const double period = i + 1 < lines ? m_lineTimes[i + 1] - m_lineTimes[i]
                                                        : (i > 0 ? m_lineTimes[i] - m_lineTimes[i - 1] : meanPeriod);
                    const LineValues v = measure(m_lineTimes[i], period);
                    if (!any) {
                        kept = v;
                        any = true;
                        continue;
                    }
                    if (std::abs(v.ncs) > std::abs(kept.ncs))
                        kept.ncs = v.ncs;
                    if (std::abs(v.rpe) > std::abs(kept.rpe))
                        kept.rpe = v.rpe;
                    kept.psr = std::max(kept.psr, v.psr);
                }
                if (!any)
                    kept = measure(sampleTimes[std::size_t(k)], meanPeriod);
                sample.ncs = float(kept.ncs);
                sample.rpe = float(kept.rpe);
                sample.psr = float(kept.psr);
            } catch (const std::exception& e) {
#pragma omp critical(qualityFailure)
                if (k < failedSample) {
                    failedSample = k;
                    failure = e.what();
                }
            }
            const long long finished = ++done;
            if (omp_get_thread_num() == 0 && finished % 256 == 0)
                task.report(finished);
        }
    }
    if (failedSample < count) {
        char at[32];
        std::snprintf(at, sizeof at, "%.6f", sampleTimes[std::size_t(failedSample)]);
        throw std::runtime_error("Trajectory quality at GPS time " + std::string(at) + ": " + failure);
    }
    task.report(count);
    return samples;
}

} // namespace datamodel
