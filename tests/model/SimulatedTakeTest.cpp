// Takes and level-0 images of a simulated session answer from the session's
// flight data and camera description: index, file names, look angles and
// recorded integration times.

#include "TestSupport.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/IntegrationTimeZelV1.h>

#include <flightsim/FlightSimulator.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

using namespace datamodel;

namespace {

class SimulatedTake : public ::testing::Test {
protected:
    void simulate(const QString& generation)
    {
        flightsim::SimulationConfig config =
            flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
        config.takes = 2;
        config.linesPerTake = 200;
        config.bands = {QStringLiteral("PANN00A"), QStringLiteral("PANN00B"), QStringLiteral("REDN00A")};
        config.sensorGeneration = generation;
        config.integrationTimeMs = 1.1;
        flightsim::FlightSimulator(config).run(path());
        session = std::make_unique<RecordingSession>(path().toStdString());
    }
    QString path() const { return dir.path() + QStringLiteral("/session"); }

    Take& take(const std::string& name)
    {
        for (Take* t : session->takes())
            if (t->name() == name)
                return *t;
        throw std::runtime_error("no take " + name);
    }
    L0Image& image(Take& t, const std::string& band)
    {
        for (L0Image* i : t.imagesL0())
            if (i->bandName() == band)
                return *i;
        throw std::runtime_error("no band " + band);
    }

    testsupport::ScopedEnv root{"KAVIX_ROOT", QByteArray("/nonexistent-installation")};
    QTemporaryDir dir;
    std::unique_ptr<RecordingSession> session;
};

} // namespace

TEST_F(SimulatedTake, IndexCountsImageTakesOfTheFlightData)
{
    simulate(QStringLiteral("ZELM8"));
    EXPECT_EQ(take("L001").index(), 0);
    EXPECT_EQ(take("L002").index(), 1);
}

TEST_F(SimulatedTake, LookAnglesComeFromTheCameraDescription)
{
    simulate(QStringLiteral("ZELM8"));
    // The staggered B line sits two pixels forward of the A line: a small
    // positive angle that the band code's digits cannot express.
    const double angleB = image(take("L001"), "PANN00B").lookAngle();
    EXPECT_GT(angleB, 0.001);
    EXPECT_LT(angleB, 0.1);
    EXPECT_NEAR(image(take("L001"), "PANN00A").lookAngle(), 0.0, 1e-9);
}

TEST_F(SimulatedTake, RecordedIntegrationTimeFromTheFlightData)
{
    simulate(QStringLiteral("ZELM8"));
    IntegrationTimeZelV1 unknown(seconds(-1.0));
    unknown.init(image(take("L002"), "REDN00A"));
    EXPECT_NEAR(unknown.value().value(), 0.0011, 1e-9);

    // Flight data that cannot answer leave the value alone.
    RecordingSession bare(path().toStdString());
    auto* orphan = new Take(bare);
    bare.addTake(orphan);
    IntegrationTimeZelV1 kept(seconds(0.002));
    InfoFile info(session->directory() + "/raw/L001REDN00A.info", InfoFile::STRIPNAMEREGEX);
    orphan->addImage(new L0Image(*orphan, 0, info, "x.lri", "", "", ""));
    orphan->setLineNumber(77);
    kept.init(*orphan->imagesL0().front());
    EXPECT_NEAR(kept.value().value(), 0.002, 1e-9);
}

TEST_F(SimulatedTake, FileNamesFollowTheSessionPatternAndGeneration)
{
    simulate(QStringLiteral("ZELM8"));
    L0Image& red = image(take("L001"), "REDN00A");
    session->setFileNamingPattern("<Pattern>$LINENAME$$BAND$</Pattern>");
    red.resetFilename();
    EXPECT_EQ(red.filename(), session->directory() + "/images/L001REDN00A.lri");

    // Without a pattern the static name: label, serial, start, band.
    session->setFileNamingPattern("");
    red.resetFilename();
    const std::string expected = L0Image::staticName("L001", take("L001").startTime(), 2004, "REDN00A");
    EXPECT_EQ(red.filename(), session->directory() + "/images/" + expected + ".lri");
}

TEST_F(SimulatedTake, NewerGenerationRecordsLovFiles)
{
    simulate(QStringLiteral("ZELM9"));
    L0Image& pan = image(take("L001"), "PANN00A");
    session->setFileNamingPattern("$LINENAME$$BAND$");
    pan.resetFilename();
    EXPECT_EQ(pan.filename(), session->directory() + "/images/L001PANN00A.lov");
}
