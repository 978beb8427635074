#pragma once

#include <flightsim/FlightPlan.h>
#include <flightsim/Random.h>
#include <flightsim/SimulationConfig.h>

#include <QJsonObject>

#include <deque>
#include <vector>

namespace flightsim {

/// Turbulence: the departures of roll, pitch, heading and height from the
/// smooth flight. Each is the sum of a second-order Gauss–Markov process
/// (critically damped, so its rate is continuous and the attitude stays
/// smooth from record to record) and of gusts: raised-cosine bumps at random
/// times, about two a minute, of 3 to 6 s in attitude and twice that in
/// height. The height is smoothed once more (a 2 s first-order lag) so that
/// the climb angle, which enters the pitch, changes smoothly too. All of it
/// scales with the turbulence setting. The heavy-turbulence fault adds a much
/// stronger process over the fault take, faded in and out over 3 s.
class AttitudeModel {
public:
    struct Perturbation {
        double rollRad = 0.0;
        double pitchRad = 0.0;
        double headingRad = 0.0;
        double heightM = 0.0;
    };

    AttitudeModel(const SimulationConfig& config, const FlightPlan& plan);

    /// The perturbation at the next record (record 0 first, at the IMU rate).
    Perturbation next();

    bool heavy() const { return m_heavy; }
    double heavyStartSec() const { return m_heavyStartSec; }
    double heavyEndSec() const { return m_heavyEndSec; }
    /// The turbulence parameters, for the truth file.
    QJsonObject toJson() const;
    /// The heavy-turbulence window (flight times) and strength, for the truth file.
    QJsonObject heavyToJson() const;

private:
    struct Process {
        double sigma = 0.0;
        double omega = 0.0;     // rad/s
        double value = 0.0;
        double rate = 0.0;
        void start(Random& random);
        double step(Random& random, double dtSec);
    };
    struct Gust {
        double startSec;
        double durationSec;
        double rollRad;
        double pitchRad;
        double headingRad;
        double heightM;
    };

    double m_dtSec;
    long long m_index = 0;
    Random m_random;
    Random m_heavyRandom;
    Process m_roll, m_pitch, m_heading, m_height;
    Process m_heavyRoll, m_heavyPitch, m_heavyHeading, m_heavyHeight;
    double m_smoothHeightM = 0.0;
    double m_smoothHeavyHeightM = 0.0;
    std::vector<Gust> m_gusts;
    std::size_t m_nextGust = 0;
    std::deque<Gust> m_activeGusts;
    bool m_heavy = false;
    double m_heavyStartSec = 0.0;
    double m_heavyEndSec = 0.0;
    double m_turbulence;
};

} // namespace flightsim
