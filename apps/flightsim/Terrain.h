#pragma once

#include <QJsonObject>

#include <cstdint>

namespace flightsim {

/// The simulated terrain: the mean height plus three long sine waves in the
/// flight plane (wavelengths 1.5 to 6 km, directions and phases from the
/// seed) whose amplitudes add up to the relief, so every height lies within
/// mean +/- relief. Heights are ellipsoidal; there is no geoid.
class Terrain {
public:
    Terrain(double meanHeightM, double reliefM, std::uint64_t seed);

    /// Ellipsoidal height (m) at the plane point (x, y).
    double heightAt(double xM, double yM) const;
    double meanHeightM() const { return m_meanHeightM; }
    double reliefM() const { return m_reliefM; }
    /// The parameters, for the truth file.
    QJsonObject toJson() const;

private:
    struct Wave {
        double amplitude;     // fraction of the relief
        double kx, ky;        // wave vector, rad/m
        double phaseRad;
    };
    double m_meanHeightM;
    double m_reliefM;
    Wave m_waves[3];
};

} // namespace flightsim
