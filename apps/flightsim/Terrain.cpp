#include <flightsim/Terrain.h>
#include <flightsim/Random.h>

#include <QJsonArray>

#include <cmath>
#include <numbers>

namespace flightsim {

Terrain::Terrain(double meanHeightM, double reliefM, std::uint64_t seed)
    : m_meanHeightM(meanHeightM)
    , m_reliefM(reliefM)
{
    Random random(streamSeed(seed, RandomStream::Terrain));
    constexpr double sAmplitudes[3] = {0.5, 0.3, 0.2};
    for (int i = 0; i < 3; ++i) {
        const double wavelengthM = random.uniform(1500.0, 6000.0);
        const double direction = random.uniform(0.0, 2.0 * std::numbers::pi);
        const double k = 2.0 * std::numbers::pi / wavelengthM;
        m_waves[i] = {sAmplitudes[i], k * std::cos(direction), k * std::sin(direction),
                      random.uniform(0.0, 2.0 * std::numbers::pi)};
    }
}

double Terrain::heightAt(double xM, double yM) const
{
    double sum = 0.0;
    for (const Wave& wave : m_waves)
        sum += wave.amplitude * std::sin(wave.kx * xM + wave.ky * yM + wave.phaseRad);
    return m_meanHeightM + m_reliefM * sum;
}

QJsonObject Terrain::toJson() const
{
    QJsonArray waves;
    for (const Wave& wave : m_waves)
        waves.append(QJsonObject{{QStringLiteral("amplitudeM"), wave.amplitude * m_reliefM},
                                 {QStringLiteral("kxRadPerM"), wave.kx},
                                 {QStringLiteral("kyRadPerM"), wave.ky},
                                 {QStringLiteral("phaseRad"), wave.phaseRad}});
    return QJsonObject{{QStringLiteral("meanHeightM"), m_meanHeightM},
                       {QStringLiteral("reliefM"), m_reliefM},
                       {QStringLiteral("model"),
                        QStringLiteral("meanHeightM + sum of amplitudeM * sin(kxRadPerM * x + kyRadPerM * y + phaseRad) "
                                       "over the flight plane (x along the lines, y to their left, metres)")},
                       {QStringLiteral("waves"), waves}};
}

} // namespace flightsim
