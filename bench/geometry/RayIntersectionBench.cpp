// Image rays against the terrain: a 25 m grid over 6 x 3 km with 60 m of
// relief in sine waves, rays of a push-broom camera 1500 m above it across
// a 60 degree swath, with the attitude wobbling as in turbulence. Reports
// rays per second; also mountains (1500 m of relief under the same swath)
// and the making of a grid in an LSR system.

#include <platform/dsm/FlatElevationSource.h>
#include <platform/dsm/ProjectedElevationSource.h>
#include <platform/geo/coordSysFactory.h>
#include <platform/geometry/RayToSurfaceIntersection.h>
#include <platform/sensor/IdentitySensorModel.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <random>
#include <stdexcept>
#include <vector>

namespace {

constexpr double sSpacingM = 25.0;
constexpr int sColumns = 241; // 6 km
constexpr int sRows = 121;    // 3 km
constexpr double sFocalMm = 62.5;
constexpr double sPixelMm = 0.0065;
constexpr int sRays = 1 << 14;

dsm::ProjectedElevationSource terrain(double reliefM, double wavelengthM)
{
    std::vector<float> heights;
    for (int k = 0; k < sRows; ++k) {
        for (int i = 0; i < sColumns; ++i) {
            const double x = i * sSpacingM, y = k * sSpacingM;
            const double waves = std::sin(2 * std::numbers::pi * x / wavelengthM)
                + std::cos(2 * std::numbers::pi * y / (0.7 * wavelengthM));
            heights.push_back(float(400.0 + 0.25 * reliefM * waves));
        }
    }
    return dsm::ProjectedElevationSource(0.0, 0.0, sSpacingM, sColumns, sRows, std::move(heights), "bench");
}

/// A nadir CCD line whose outer pixels look `halfSwathDeg` to the sides.
sensor::IdentitySensorModel camera(double halfSwathDeg)
{
    const int pixels = int(2.0 * sFocalMm * std::tan(halfSwathDeg * std::numbers::pi / 180.0) / sPixelMm) + 1;
    return sensor::IdentitySensorModel(sFocalMm, sPixelMm, pixels, {{"PANN00A", 0.0, -0.5 * (pixels - 1) * sPixelMm}});
}

/// Exterior orientations flying east over the middle of the grid at
/// `heightM`, rolling, pitching and yawing by up to 1.4 degrees, each with a
/// pixel anywhere on the line.
struct Rays {
    std::vector<sensor::EOP> eops;
    std::vector<double> pixels;
};

Rays rays(const sensor::IdentitySensorModel& model, double heightM)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Rays rays;
    for (int n = 0; n < sRays; ++n) {
        const double a = 0.5 * 0.05 * (unit(random) - 0.5), b = 0.5 * 0.05 * (unit(random) - 0.5),
                     g = 0.5 * 0.05 * (unit(random) - 0.5);
        const double w = std::sqrt(1.0 - a * a - b * b - g * g);
        sensor::EOP eop;
        eop.q = {float(w), float(a), float(b), float(g)};
        eop.x = 2000.0 + 2000.0 * unit(random);
        eop.y = 1500.0 + 100.0 * (unit(random) - 0.5);
        eop.z = heightM;
        rays.eops.push_back(eop);
        rays.pixels.push_back(unit(random) * (model.pixelsPerLine() - 1));
    }
    return rays;
}

void intersectRays(benchmark::State& state, const dsm::ProjectedElevationSource& surface,
                   const sensor::IdentitySensorModel& model, double heightM)
{
    const geometry::RayToSurfaceIntersection intersection(model, surface, 0.01);
    const Rays batch = rays(model, heightM);
    int misses = 0;
    for (auto _ : state) {
        for (int n = 0; n < sRays; ++n) {
            geo::XYZPoint ground;
            if (intersection.intersect(batch.eops[n], batch.pixels[n], ground)
                != geometry::RayToSurfaceIntersection::Outcome::Hit)
                ++misses;
            benchmark::DoNotOptimize(ground);
        }
    }
    if (misses)
        state.SkipWithError("a ray missed the terrain");
    state.SetItemsProcessed(state.iterations() * sRays);
}

/// 60 m of relief, 1500 m above it, a 60 degree swath.
void BM_RaysRollingTerrain(benchmark::State& state)
{
    static const dsm::ProjectedElevationSource surface = terrain(60.0, 900.0);
    static const sensor::IdentitySensorModel model = camera(30.0);
    intersectRays(state, surface, model, 400.0 + 1500.0);
}
BENCHMARK(BM_RaysRollingTerrain);

/// 1500 m of relief in 2 km waves, 2000 m above the lowest point, a 60
/// degree swath: long stretches of ray between the highest and the lowest
/// terrain, passed block by block.
void BM_RaysMountains(benchmark::State& state)
{
    static const dsm::ProjectedElevationSource surface = terrain(1500.0, 2000.0);
    static const sensor::IdentitySensorModel model = camera(30.0);
    intersectRays(state, surface, model, 400.0 - 750.0 + 2000.0);
}
BENCHMARK(BM_RaysMountains);

/// The grid of a flat surface in an LSR system over 6 x 3 km at 25 m: every
/// node's terrain point found by iteration through PROJ.
void BM_BuildLsrGrid(benchmark::State& state)
{
    const auto lsr = geo::coordSysFactory::getInstance().createLSR84({11.0, 47.0, 0.0});
    dsm::FlatElevationSource flat(400.0);
    std::int64_t nodes = 0;
    for (auto _ : state) {
        const auto grid = dsm::ProjectedElevationSource::build(flat, *lsr, 0.0, 0.0, 6000.0, 3000.0, sSpacingM);
        nodes += std::int64_t(grid->columns()) * grid->rows();
    }
    state.SetItemsProcessed(nodes);
}
BENCHMARK(BM_BuildLsrGrid)->Unit(benchmark::kMillisecond);

} // namespace
