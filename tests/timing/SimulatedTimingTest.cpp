// The GPS time of every scan line of simulated flights, against the
// simulator's truth: clean flights, a GPS week rollover, time-mark gaps and
// jitter, and the eight-line saw-tooth.

#include "TestSupport.h"

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/SawToothFixer.h>
#include <datamodel/timing/TimeAdaptor_p.h>
#include <datamodel/timing/TmFile.h>

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <cmath>
#include <cstring>
#include <map>
#include <set>

using namespace datamodel;
using flightsim::Fault;

namespace {

constexpr double sMicrosecond = 1e-6;

QByteArray readAll(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("test: cannot read " + path.toStdString());
    return file.readAll();
}

// A simulated session with its takes built from the band info files,
// grouped by strip name.
class SimulatedSession {
public:
    explicit SimulatedSession(flightsim::SimulationConfig config)
    {
        config.seed = 7;
        const QString directory = m_temporary.path() + QStringLiteral("/session");
        flightsim::FlightSimulator(config).run(directory);
        m_truth = QJsonDocument::fromJson(readAll(directory + QStringLiteral("/truth.json"))).object();
        m_session = std::make_unique<RecordingSession>(directory.toStdString());

        const QDir raw(directory + QStringLiteral("/raw"));
        std::map<std::string, std::vector<InfoFile>> byStrip;
        for (const QString& name : raw.entryList({QStringLiteral("*.info")}, QDir::Files, QDir::Name)) {
            InfoFile info(raw.filePath(name).toStdString(), InfoFile::STRIPNAMEREGEX);
            byStrip[info.stripName()].push_back(info);
        }
        for (auto& [strip, infos] : byStrip) {
            std::vector<InfoFile*> pointers;
            for (InfoFile& info : infos)
                pointers.push_back(&info);
            auto* take = new Take(*m_session, strip, pointers, 500.0f, 2000.0f, infos.front().sensorId(),
                                  infos.front().sensorType(), 1);
            m_session->addTake(take);
            m_takes[strip] = take;
        }
    }

    RecordingSession& session() { return *m_session; }
    const QJsonObject& truth() const { return m_truth; }
    Take& take(const QString& label) { return *m_takes.at(label.toStdString()); }
    /// Every take of the truth file, image takes first.
    std::vector<QJsonObject> truthTakes() const
    {
        std::vector<QJsonObject> takes;
        for (const char* key : {"takes", "darkTakes"})
            for (const QJsonValue take : m_truth[QLatin1String(key)].toArray())
                takes.push_back(take.toObject());
        return takes;
    }
    L0Image& image(const QJsonObject& truthTake, const QJsonValue& band)
    {
        for (L0Image* image : take(truthTake[QStringLiteral("label")].toString()).imagesL0())
            if (image->bandName() == band[QStringLiteral("name")].toString().toStdString())
                return *image;
        throw std::runtime_error("test: no image for a band of the truth file");
    }
    std::vector<QJsonObject> faults(const QString& name) const
    {
        std::vector<QJsonObject> found;
        for (const QJsonValue fault : m_truth[QStringLiteral("faults")].toArray())
            if (fault[QStringLiteral("name")].toString() == name)
                found.push_back(fault.toObject());
        return found;
    }

private:
    QTemporaryDir m_temporary;
    QJsonObject m_truth;
    std::unique_ptr<RecordingSession> m_session;
    std::map<std::string, Take*> m_takes;
};

flightsim::SimulationConfig tiny(int lines = 800)
{
    flightsim::SimulationConfig config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
    config.linesPerTake = lines;
    config.darkTakes = 1;
    return config;
}

/// The true GPS time of line `i` of a take; a later week shows as +604800 s.
double trueGps(const QJsonObject& take, std::size_t i)
{
    return take[QStringLiteral("firstLineGpsSec")].toDouble() + double(i) / take[QStringLiteral("lineRateHz")].toDouble();
}

/// The difference of two GPS times of the same instant, whatever week each counts in.
double withinWeek(double difference)
{
    return std::remainder(difference, TmFile::sWeekSec);
}

/// How many lines of the band are further than 1 µs from the truth.
std::size_t linesOff(const std::vector<Seconds>& times, const QJsonObject& take)
{
    std::size_t off = 0;
    for (std::size_t i = 0; i < times.size(); ++i)
        if (!(std::abs(withinWeek(times[i].value() - trueGps(take, i))) <= sMicrosecond))
            ++off;
    return off;
}

} // namespace

TEST(SimulatedTiming, EveryScanLineAgreesWithTheTruthAndTheCtgFilesReadBack)
{
    SimulatedSession flight(tiny());
    int bands = 0;
    for (const QJsonObject& take : flight.truthTakes()) {
        for (const QJsonValue band : take[QStringLiteral("bands")].toArray()) {
            L0Image& image = flight.image(take, band);
            SCOPED_TRACE(image.ctFilename());
            CameraTime& times = image.cameraTime();
            ASSERT_EQ(times.size(), std::size_t(take[QStringLiteral("lines")].toInt()));
            EXPECT_EQ(linesOff(times.values(), take), 0u);
            EXPECT_FALSE(times.isNonUniformCT());

            times.createFromCtTmFiles();
            ASSERT_TRUE(times.ctgFileCreated());
            const std::vector<Seconds> built = times.values();
            // The CTG file alone now gives the same times, bit for bit.
            image.uncache();
            ASSERT_TRUE(QFile::remove(QString::fromStdString(image.ctFilename())));
            EXPECT_EQ(image.cameraTime().values(), built);
            ++bands;
        }
    }
    EXPECT_EQ(bands, 4); // two bands of the take and of its dark take

    double min = 0.0, max = 0.0;
    const QJsonObject first = flight.truthTakes().front();
    flight.take(first[QStringLiteral("label")].toString()).minMaxGpsTimes(min, max);
    EXPECT_NEAR(min, trueGps(first, 0), sMicrosecond);
    EXPECT_NEAR(max, first[QStringLiteral("lastLineGpsSec")].toDouble(), sMicrosecond);
}

TEST(SimulatedTiming, AfterAWeekRolloverTimeRunsOnPastTheEndOfTheWeek)
{
    flightsim::SimulationConfig config = tiny(400);
    config.takes = 3;
    config.lineSpacingM = 400.0;
    config.faults.add(Fault::WeekRollover);
    SimulatedSession flight(config);
    EXPECT_TRUE(flight.session().tmFile().hasGpsRollover());

    for (const QJsonObject& take : flight.truthTakes())
        for (const QJsonValue band : take[QStringLiteral("bands")].toArray())
            EXPECT_EQ(linesOff(flight.image(take, band).cameraTime().values(), take), 0u)
                << take[QStringLiteral("label")].toString().toStdString();

    // The take across the boundary counts on without a jump.
    double min = 0.0, max = 0.0;
    flight.take(QStringLiteral("L002")).minMaxGpsTimes(min, max);
    EXPECT_LT(min, TmFile::sWeekSec);
    EXPECT_GT(max, TmFile::sWeekSec);
    EXPECT_NEAR(max - min, 399.0 / 800.0, sMicrosecond);
}

TEST(SimulatedTiming, ATimeMarkGapLoadsIrregularAndStillConverts)
{
    flightsim::SimulationConfig config = tiny();
    config.faults.add(Fault::TmGap);
    SimulatedSession flight(config);
    TmFile& tm = flight.session().tmFile();
    EXPECT_FALSE(tm.analyzeAndFix());
    const int after = flight.faults(QStringLiteral("tm-gap")).front()[QStringLiteral("recordAfterGap")].toInt();
    EXPECT_EQ(tm.diagnoseStep(std::size_t(after)).missingMarks, 3);

    // The camera clock runs linearly, so interpolating over the gap is exact.
    for (const QJsonObject& take : flight.truthTakes())
        for (const QJsonValue band : take[QStringLiteral("bands")].toArray())
            EXPECT_EQ(linesOff(flight.image(take, band).cameraTime().values(), take), 0u);
}

TEST(SimulatedTiming, JitteredTimeMarksLoadAsRecordedAndMoveTheLinesTheyBracket)
{
    flightsim::SimulationConfig config = tiny(4000);
    config.faults.add(Fault::TmJitter);
    SimulatedSession flight(config);
    TmFile& tm = flight.session().tmFile();
    EXPECT_FALSE(tm.analyzeAndFix());

    const QByteArray bytes = readAll(QFileInfo(QString::fromStdString(tm.name())).absoluteFilePath());
    ASSERT_EQ(bytes.size(), qsizetype(16 * tm.records().size()));
    EXPECT_EQ(std::memcmp(bytes.constData(), tm.records().data(), std::size_t(bytes.size())), 0)
        << "irregular marks are never repaired";

    std::set<std::size_t> jittered;
    for (const QJsonValue record : flight.faults(QStringLiteral("tm-jitter")).front()[QStringLiteral("records")].toArray())
        jittered.insert(std::size_t(record[QStringLiteral("record")].toInt()));
    const QJsonObject take = flight.truthTakes().front();
    const QJsonValue band = take[QStringLiteral("bands")].toArray().first();
    L0Image& image = flight.image(take, band);
    const CameraTime::TimeAdaptor ct(image);
    const std::vector<Seconds>& times = image.cameraTime().values();
    std::size_t moved = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        std::size_t mark = 0;
        while (tm.records()[mark + 1].ctTime <= ct.value(i).value())
            ++mark;
        const double offSec = std::abs(times[i].value() - trueGps(take, i));
        if (jittered.count(mark) || jittered.count(mark + 1)) {
            moved += offSec > sMicrosecond;
        } else {
            ASSERT_LE(offSec, sMicrosecond) << "line " << i;
        }
    }
    EXPECT_GT(moved, 0u);
}

TEST(SimulatedTiming, TheSawToothIsRepairedAndCleanBandsAreLeftAlone)
{
    flightsim::SimulationConfig config = tiny(400);
    config.darkTakes = 0;
    config.faults.add(Fault::SawTooth);
    SimulatedSession flight(config);
    const QJsonObject take = flight.truthTakes().front();
    const QString faultyBand = flight.faults(QStringLiteral("saw-tooth")).front()[QStringLiteral("band")].toString();

    for (const QJsonValue band : take[QStringLiteral("bands")].toArray()) {
        L0Image& image = flight.image(take, band);
        SCOPED_TRACE(image.bandName());
        image.cameraTime().createFromCtTmFiles();
        const QString ctg = QString::fromStdString(image.ctgFilename());
        const QByteArray before = readAll(ctg);
        image.uncache();

        CameraTime& times = image.cameraTime();
        SawToothFixer fixer(&times);
        const bool faulty = band[QStringLiteral("name")].toString() == faultyBand;
        EXPECT_EQ(fixer.hasSawTooth(times.values()), faulty);
        EXPECT_EQ(linesOff(times.values(), take) > 0, faulty);
        fixer();

        if (faulty) {
            image.uncache();
            EXPECT_EQ(linesOff(image.cameraTime().values(), take), 0u) << "the rewritten CTG file holds true times";
            EXPECT_NE(readAll(ctg), before);
        } else {
            EXPECT_EQ(readAll(ctg), before);
        }
    }
}
