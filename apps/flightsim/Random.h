#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>

namespace flightsim {

/// Deterministic random numbers. The bits come from std::mt19937_64, whose
/// output sequence the C++ standard fixes; uniform and normal values are made
/// here (53-bit uniform, Box–Muller normal) instead of with the std::
/// distributions, whose algorithms differ between standard libraries. A seed
/// therefore gives the same flight with any standard library; only the last
/// bits of std::log, std::sin and std::cos may differ between maths libraries.
class Random {
public:
    explicit Random(std::uint64_t seed)
        : m_engine(seed)
    {
    }

    /// The seed of the independent stream `stream` of `seed` (SplitMix64).
    /// Each feature draws from its own stream, so switching one fault on does
    /// not change the numbers that another feature draws.
    static std::uint64_t streamSeed(std::uint64_t seed, std::uint64_t stream)
    {
        std::uint64_t z = seed + 0x9E3779B97F4A7C15ull * (stream + 1);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }

    /// Uniform in [0, 1).
    double uniform() { return double(m_engine() >> 11) * 0x1.0p-53; }
    /// Uniform in [low, high).
    double uniform(double low, double high) { return low + (high - low) * uniform(); }

    /// Standard normal; Box–Muller, the second value of each pair is kept for
    /// the next call.
    double normal()
    {
        if (m_hasSpare) {
            m_hasSpare = false;
            return m_spare;
        }
        const double u1 = 1.0 - uniform(); // (0, 1], so the logarithm is finite
        const double u2 = uniform();
        const double radius = std::sqrt(-2.0 * std::log(u1));
        const double angle = 2.0 * std::numbers::pi * u2;
        m_spare = radius * std::sin(angle);
        m_hasSpare = true;
        return radius * std::cos(angle);
    }

private:
    std::mt19937_64 m_engine;
    double m_spare = 0.0;
    bool m_hasSpare = false;
};

/// The random streams of a simulation (see Random::streamSeed).
enum class RandomStream : std::uint64_t {
    Turbulence = 1,
    Gusts = 2,
    HeavyTurbulence = 3,
    Terrain = 4,
    Wander = 5,
    TimeMarkJitter = 6,
    Pixels = 7,
    Accuracy = 8,
};

inline std::uint64_t streamSeed(std::uint64_t seed, RandomStream stream)
{
    return Random::streamSeed(seed, static_cast<std::uint64_t>(stream));
}

} // namespace flightsim
