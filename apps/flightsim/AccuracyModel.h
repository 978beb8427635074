#pragma once

#include <cstdint>
#include <vector>

namespace flightsim {

/// The standard deviations that the post-processing would report for the
/// trajectory. They are drawn at knots (one per accuracy record) from slow
/// sine waves with seeded phases and are linear between knots, so that the
/// SOL file's per-record values are exactly what a reader interpolates from
/// the smrmsg file.
class AccuracyModel {
public:
    struct Sigmas {
        double northM = 0.0, eastM = 0.0, downM = 0.0;
        double velocityNorthMps = 0.0, velocityEastMps = 0.0, velocityDownMps = 0.0;
        double rollArcmin = 0.0, pitchArcmin = 0.0, headingArcmin = 0.0;
    };

    /// Knots every `intervalSec` from 0 up to `durationSec`, and one at
    /// `durationSec` itself.
    AccuracyModel(double durationSec, double intervalSec, std::uint64_t seed);

    /// The deviations at flight time `tSec` (linear between knots, clamped).
    Sigmas at(double tSec) const;
    double intervalSec() const { return m_intervalSec; }

private:
    Sigmas knotValue(double tSec) const;

    double m_intervalSec;
    double m_phases[9];
    std::vector<double> m_knotSec;
    std::vector<Sigmas> m_knots;
};

} // namespace flightsim
