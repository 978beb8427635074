// A take built from a simulated flight's band info files, with its dark take,
// is written as a strip file and read back into a fresh session: everything
// the strip file carries must come back equal.

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/IntegrationTime.h>
#include <datamodel/timing/TdiData.h>

#include <flightsim/FlightSimulator.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <memory>
#include <vector>

using namespace datamodel;

namespace {

std::vector<std::unique_ptr<InfoFile>> infoFilesOf(const QString& session, const QString& strip)
{
    std::vector<std::unique_ptr<InfoFile>> infos;
    const QDir raw(session + QStringLiteral("/raw"));
    for (const QString& name : raw.entryList({strip + QStringLiteral("*.info")}, QDir::Files, QDir::Name))
        infos.push_back(std::make_unique<InfoFile>(raw.filePath(name).toStdString(), InfoFile::STRIPNAMEREGEX));
    return infos;
}

Take* takeFromInfoFiles(RecordingSession& session, const QString& strip, int calibrationVersion)
{
    const auto infos = infoFilesOf(QString::fromStdString(session.directory()), strip);
    std::vector<InfoFile*> pointers;
    for (const auto& info : infos)
        pointers.push_back(info.get());
    auto* take = new Take(session, "", pointers, 500.0f, 2000.0f, infos.front()->sensorId(),
                          infos.front()->sensorType(), calibrationVersion);
    session.addTake(take);
    return take;
}

void expectSameImages(const Take& written, const Take& read)
{
    ASSERT_EQ(read.imagesL0().size(), written.imagesL0().size());
    for (std::size_t i = 0; i < written.imagesL0().size(); ++i) {
        const L0Image& a = *written.imagesL0()[i];
        const L0Image& b = *read.imagesL0()[i];
        SCOPED_TRACE(a.bandName());
        EXPECT_EQ(b.bandName(), a.bandName());
        EXPECT_EQ(b.index(), i);
        EXPECT_EQ(b.filename(), a.filename());
        EXPECT_EQ(b.ctFilename(), a.ctFilename());
        EXPECT_EQ(b.ctgFilename(), a.ctgFilename());
        EXPECT_EQ(b.fptFilename(), a.fptFilename());
        EXPECT_EQ(b.infoFileName(), a.infoFileName());
        EXPECT_EQ(b.swathWidth(), a.swathWidth());
        EXPECT_EQ(b.sampleOffset(), a.sampleOffset());
        EXPECT_NEAR(b.integrationTime().value().value(), a.integrationTime().value().value(), 5e-7);
        EXPECT_EQ(b.tdiData().value(), a.tdiData().value());
        EXPECT_EQ(b.lookAngle(), a.lookAngle());
    }
}

} // namespace

TEST(SimulatedStrip, TakeWithDarkTakeReadsBackFromItsStripFile)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString sessionPath = dir.path() + QStringLiteral("/session");
    flightsim::SimulationConfig config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
    config.linesPerTake = 400;
    config.darkTakes = 1;
    flightsim::FlightSimulator(config).run(sessionPath);

    RecordingSession session(sessionPath.toStdString());
    Take* take = takeFromInfoFiles(session, QStringLiteral("L001"), 3);
    Take* dark = takeFromInfoFiles(session, QStringLiteral("DK001"), 3);
    take->addDarkTake(dark);
    take->setImuTrajectorySource(RecordingSession::ImuTrajectoryId("flight.sbet", 1778747400u));
    take->setEopTrajectory("/elsewhere/L001.eop");
    ASSERT_GE(take->imagesL0().size(), 2u);
    ASSERT_EQ(take->name(), "L001");
    ASSERT_EQ(dark->name(), "DK001");

    take->writeStpFile();
    EXPECT_EQ(take->stpFilename(), session.directory() + "/raw/L001.stp");
    EXPECT_TRUE(take->stpFileExists());

    RecordingSession reopened(sessionPath.toStdString());
    auto* read = new Take(reopened);
    reopened.addTake(read);
    read->parseStpFile(take->stpFilename());

    EXPECT_EQ(read->name(), take->name());
    EXPECT_EQ(read->label(), take->label());
    EXPECT_EQ(read->lineNumber(), take->lineNumber());
    EXPECT_EQ(read->sensorId(), take->sensorId());
    EXPECT_EQ(read->sensorType(), take->sensorType());
    EXPECT_EQ(read->sensorVersion(), 3);
    EXPECT_FLOAT_EQ(read->meanTerrainHeight(), 500.0f);
    EXPECT_EQ(read->eopFilename(), "L001.eop");
    ASSERT_NE(read->imuTrajectorySource(), nullptr);
    EXPECT_EQ(read->imuTrajectorySource()->toString(), "1778747400;flight.sbet");
    EXPECT_EQ(read->rawDataLocation(), session.directory());
    EXPECT_EQ(read->imagesLocation(), session.directory() + "/images");
    EXPECT_EQ(read->availableBands(), take->availableBands());

    // Times to the second; positions to the 6 significant digits the file keeps.
    EXPECT_EQ(read->startTime(), take->startTime());
    EXPECT_EQ(read->stopTime(), take->stopTime());
    EXPECT_EQ(read->startTime().timeSpec(), Qt::UTC);
    EXPECT_NEAR(read->startPosition().x, take->startPosition().x, 1e-4);
    EXPECT_NEAR(read->startPosition().y, take->startPosition().y, 1e-4);
    EXPECT_NEAR(read->stopPosition().x, take->stopPosition().x, 1e-4);
    EXPECT_NEAR(read->stopPosition().y, take->stopPosition().y, 1e-4);
    EXPECT_FLOAT_EQ(read->startHeight(), take->startHeight());
    expectSameImages(*take, *read);

    ASSERT_EQ(read->darkTakes().size(), 1u);
    const Take& readDark = *read->darkTakes().front();
    EXPECT_EQ(readDark.name(), "DK001");
    expectSameImages(*dark, readDark);

    // Written again, the read take gives the same file.
    QFile original(QString::fromStdString(take->stpFilename()));
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    const QByteArray first = original.readAll();
    original.close();
    read->writeStpFile();
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    EXPECT_EQ(original.readAll(), first);
}
