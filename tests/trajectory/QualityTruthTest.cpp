// The trajectory quality of simulated flights: calm air is nominal on every
// take; heavy turbulence is judged an error on its take only and agrees,
// sample by sample, with the simulator's own computation of the measures;
// the results do not depend on the number of threads.

#include <datamodel/session/PreparationReport.h>
#include <datamodel/session/SessionPreparation.h>
#include <datamodel/trajectory/EopTrajectory.h>

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <cmath>
#include <cstring>
#include <string>

#include <omp.h>

namespace {

using datamodel::PreparationMessage;

struct Flight {
    QString directory;
    QJsonObject truth;
};

Flight simulate(const QTemporaryDir& dir, const QString& name, double turbulence, bool heavy)
{
    auto config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Small);
    config.linesPerTake = 4000;
    config.turbulence = turbulence;
    config.darkTakes = 0;
    if (heavy)
        config.faults.add(flightsim::Fault::HeavyTurbulence);
    Flight flight{dir.path() + QLatin1Char('/') + name, {}};
    flightsim::FlightSimulator(config).run(flight.directory);
    QFile file(flight.directory + QStringLiteral("/truth.json"));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("test setup: no truth file");
    flight.truth = QJsonDocument::fromJson(file.readAll()).object();
    return flight;
}

datamodel::PreparationReport quality(const Flight& flight)
{
    datamodel::SessionPreparation::Options options;
    options.validate = false;
    return datamodel::SessionPreparation(options).run(flight.directory.toStdString());
}

/// Warnings and errors about a take's quality.
int judgements(const datamodel::PreparationReport& report, const std::string& take)
{
    int count = 0;
    for (const PreparationMessage& m : report.messages)
        if (m.take == take && m.severity != PreparationMessage::Severity::Information)
            ++count;
    return count;
}

TEST(TrajectoryQuality, CalmAirIsNominalOnEveryTake)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const datamodel::PreparationReport report = quality(simulate(dir, QStringLiteral("calm"), 0.0, false));
    ASSERT_EQ(report.takes.size(), 3u);
    for (const datamodel::TakePreparation& take : report.takes) {
        ASSERT_TRUE(take.quality) << take.name;
        EXPECT_EQ(take.quality->band, "PANN00A");
        EXPECT_NEAR(take.quality->minNcs, 1.0, 0.01) << take.name;
        EXPECT_NEAR(take.quality->maxNcs, 1.0, 0.01) << take.name;
        EXPECT_LT(std::max(std::abs(take.quality->minRpe), std::abs(take.quality->maxRpe)), 0.01) << take.name;
        EXPECT_LT(take.quality->maxPsr, 0.01) << take.name;
        EXPECT_EQ(judgements(report, take.name), 0) << take.name;
    }
}

TEST(TrajectoryQuality, HeavyTurbulenceAgreesWithTheTruthAndIsAnErrorOnItsTakeOnly)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const Flight flight = simulate(dir, QStringLiteral("heavy"), 1.0, true);
    const datamodel::PreparationReport report = quality(flight);
    QJsonObject truth;
    std::string faultTake;
    for (const QJsonValue take : flight.truth[QStringLiteral("takes")].toArray())
        if (take[QStringLiteral("quality")].isObject()) {
            truth = take[QStringLiteral("quality")].toObject();
            faultTake = take[QStringLiteral("label")].toString().toStdString();
        }
    ASSERT_FALSE(faultTake.empty());
    for (const datamodel::TakePreparation& take : report.takes) {
        ASSERT_TRUE(take.quality) << take.name;
        if (take.name != faultTake) {
            EXPECT_EQ(judgements(report, take.name), 0) << take.name; // normal turbulence
            continue;
        }
        bool heavy = false;
        for (const PreparationMessage& m : report.messages)
            heavy |= m.take == take.name && m.severity == PreparationMessage::Severity::Error
                && m.text == "Heavy turbulence detected: Very fast forward and/or backward coverage.";
        EXPECT_TRUE(heavy);
        EXPECT_EQ(take.quality->band, truth[QStringLiteral("band")].toString().toStdString());

        // Sample by sample, averaged over blocks of 20 samples (0.1 s): the
        // library interpolates its EOP samples, which fall between the
        // trajectory's records, and intersects a DEM; the simulator
        // interpolates its records, whose rates jump from one to the next
        // under heavy turbulence, and meets its terrain function. Over a
        // tenth of a second they agree to a few hundredths where the
        // measures swing by several units.
        datamodel::EopTrajectory eop(take.quality->file.substr(0, take.quality->file.size() - 4) + ".eop", true);
        const QJsonArray samples = truth[QStringLiteral("samples")].toArray();
        ASSERT_EQ(eop.numQualitySets(), samples.size());
        constexpr int sBlock = 20;
        double worst[3] = {0.0, 0.0, 0.0};
        for (int first = 0; first + sBlock <= eop.numQualitySets(); first += sBlock) {
            double ours[3] = {0.0, 0.0, 0.0}, theirs[3] = {0.0, 0.0, 0.0};
            for (int i = first; i < first + sBlock; ++i) {
                const QJsonArray s = samples[i].toArray();
                ours[0] += eop.ncsAtQualityIndex(i) / sBlock, theirs[0] += s[1].toDouble() / sBlock;
                ours[1] += eop.rpeAtQualityIndex(i) / sBlock, theirs[1] += s[2].toDouble() / sBlock;
                ours[2] += eop.psrAtQualityIndex(i) / sBlock, theirs[2] += s[3].toDouble() / sBlock;
            }
            for (int m = 0; m < 3; ++m)
                worst[m] = std::max(worst[m], std::abs(ours[m] - theirs[m]) / (1.0 + std::abs(theirs[m])));
        }
        EXPECT_LT(worst[0], 0.05) << "NCS";
        EXPECT_LT(worst[1], 0.05) << "RPE";
        EXPECT_LT(worst[2], 0.05) << "PSR";
        // The extremes may fall on neighbouring samples; the RMS values are steadier.
        const auto near = [&truth](double value, const char* key, double fraction) {
            const double expected = truth[QLatin1String(key)].toDouble();
            EXPECT_NEAR(value, expected, fraction * (1.0 + std::abs(expected))) << key;
        };
        near(take.quality->minNcs, "minNcs", 0.1);
        near(take.quality->maxPsr, "maxPsr", 0.1);
        near(take.quality->rmsNcs, "rmsNcs", 0.03);
        near(take.quality->rmsRpe, "rmsRpe", 0.03);
        near(take.quality->rmsPsr, "rmsPsr", 0.03);

        // One thread or two: the same bytes.
        QFile written(QString::fromStdString(take.quality->file));
        ASSERT_TRUE(written.open(QIODevice::ReadOnly));
        const QByteArray twoThreads = written.readAll();
        written.close();
        const int threads = omp_get_max_threads();
        omp_set_num_threads(1);
        quality(flight);
        omp_set_num_threads(threads);
        ASSERT_TRUE(written.open(QIODevice::ReadOnly));
        EXPECT_EQ(written.readAll(), twoThreads);
    }
}

} // namespace
