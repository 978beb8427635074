// The session preparation on flights written by the flight simulator: which
// CTG files it writes, checks, rewrites and refuses, what the report says and
// where, and that a failure never leaves a partial file behind.

#include "TestSupport.h"

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/session/SessionPreparation.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/TmFile.h>

#include <platform/raster/CtFile.h>

#include <platform/util/AtomicFile.h>

#include <flightsim/FlightSimulator.h>
#include <flightsim/SimulationConfig.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cmath>
#include <sys/stat.h>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using datamodel::CtgStatus;
using datamodel::PreparationReport;
using datamodel::SessionPreparation;

namespace {

class SessionPreparationTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        auto config = flightsim::SimulationConfig::preset(flightsim::SimulationConfig::Preset::Tiny);
        config.takes = 2;
        config.seed = 5;
        ASSERT_TRUE(m_dir.isValid());
        flightsim::FlightSimulator(config).run(session());
    }

    QString session() const { return m_dir.path() + QStringLiteral("/session"); }
    // The preparation of the files, without the data-preparation checks
    // (which the validation tests cover on flights with every fault).
    static SessionPreparation::Options filesOnly()
    {
        SessionPreparation::Options options;
        options.validate = false;
        options.writeEop = false;
        return options;
    }
    std::string sessionPath() const { return session().toStdString(); }

    static const datamodel::BandPreparation& band(const PreparationReport& report, std::size_t take, std::size_t band)
    {
        return report.takes.at(take).bands.at(band);
    }

    static std::string messages(const PreparationReport& report)
    {
        std::string text;
        for (const auto& message : report.messages)
            text += std::string(datamodel::toString(message.severity)) + " [" + message.subject + "] " + message.text
                + "\n";
        return text;
    }

    // Files the preparation left in the raw folder that are not the session's own.
    QStringList leftovers() const
    {
        QStringList found;
        QDirIterator files(session() + QStringLiteral("/raw"), {QStringLiteral("*.part")},
                           QDir::Files | QDir::Hidden);
        while (files.hasNext())
            found << files.next();
        return found;
    }

    QTemporaryDir m_dir;
};

TEST_F(SessionPreparationTest, WritesEveryCtgOnceWithTheTimesOfTheCameraTimeModel)
{
    const PreparationReport first = SessionPreparation(filesOnly()).run(sessionPath());
    ASSERT_FALSE(first.hasErrors()) << messages(first);
    const std::size_t bands = first.ctgCount(CtgStatus::Written);
    EXPECT_GT(bands, 0u);
    EXPECT_EQ(first.ctgCount(CtgStatus::Present), 0u);
    EXPECT_TRUE(first.timeMarks.has_value());
    ASSERT_TRUE(first.sensor.has_value());

    // Every band's CTG holds what the camera-time model builds from CT and
    // time marks, and the take's range spans its bands.
    datamodel::RecordingSession opened(sessionPath());
    const std::vector<datamodel::Take*> takes = opened.takes();
    ASSERT_EQ(takes.size(), first.takes.size());
    for (std::size_t t = 0; t < takes.size(); ++t) {
        const auto& item = first.takes[t];
        EXPECT_EQ(item.name, takes[t]->name());
        EXPECT_FALSE(item.coveredBy.empty()) << item.name;
        for (std::size_t b = 0; b < takes[t]->imagesL0().size(); ++b) {
            const datamodel::L0Image& image = *takes[t]->imagesL0()[b];
            const auto& result = band(first, t, b);
            // Line by line through the time marks, as a reader of the CT file would.
            datamodel::TmFile marks(first.timeMarks->file);
            const raster::CtFile ct(image.ctFilename());
            marks.load(datamodel::TmFile::CT_TYPE, datamodel::seconds(ct.values().front()),
                       datamodel::seconds(ct.values().back()));
            const auto written = datamodel::CameraTime::fromCtgFile(result.ctgFile);
            ASSERT_EQ(written->size(), ct.size()) << result.ctgFile;
            for (std::size_t line = 0; line < ct.size(); ++line)
                ASSERT_EQ(written->values()[line], marks.gpsAtCT(datamodel::seconds(ct.values()[line]))) << line;
            EXPECT_EQ(result.lines, written->size());
            EXPECT_EQ(*result.gpsStartSec, written->values().front().value());
            EXPECT_LE(*item.gpsStartSec, *result.gpsStartSec);
            EXPECT_GE(*item.gpsEndSec, *result.gpsEndSec);
        }
    }

    const PreparationReport second = SessionPreparation(filesOnly()).run(sessionPath());
    EXPECT_FALSE(second.hasErrors()) << messages(second);
    EXPECT_EQ(second.ctgCount(CtgStatus::Present), bands);
    EXPECT_EQ(second.ctgCount(CtgStatus::Written), 0u);
    EXPECT_EQ(second.takes.front().gpsStartSec, first.takes.front().gpsStartSec);
    EXPECT_TRUE(leftovers().isEmpty());
}

TEST_F(SessionPreparationTest, DamagedCtgFilesAreRewrittenAndUnwritableOnesFailAlone)
{
    ASSERT_FALSE(SessionPreparation(filesOnly()).run(sessionPath()).hasErrors());
    const PreparationReport clean = SessionPreparation(filesOnly()).run(sessionPath());
    const std::string truncated = band(clean, 0, 0).ctgFile;
    const std::string notANumber = band(clean, 0, 1).ctgFile;
    const std::string blocked = band(clean, 1, 0).ctgFile;
    {
        QFile file(QString::fromStdString(truncated));
        ASSERT_TRUE(file.resize(file.size() - 8));
        QFile nan(QString::fromStdString(notANumber));
        ASSERT_TRUE(nan.open(QIODevice::ReadWrite));
        const double value = std::numeric_limits<double>::quiet_NaN();
        nan.seek(16);
        nan.write(reinterpret_cast<const char*>(&value), 8);
    }
    // A folder where a CTG file belongs can be neither read nor replaced.
    ASSERT_TRUE(QFile::remove(QString::fromStdString(blocked)));
    ASSERT_TRUE(QDir().mkdir(QString::fromStdString(blocked)));

    const PreparationReport report = SessionPreparation(filesOnly()).run(sessionPath());
    EXPECT_EQ(band(report, 0, 0).ctg, CtgStatus::Written);
    EXPECT_EQ(band(report, 0, 1).ctg, CtgStatus::Written);
    EXPECT_EQ(band(report, 1, 0).ctg, CtgStatus::Failed);
    EXPECT_EQ(band(report, 1, 1).ctg, CtgStatus::Present);
    EXPECT_EQ(report.ctgCount(CtgStatus::Failed), 1u);
    ASSERT_EQ(report.messages.size(), 4u) << messages(report);
    EXPECT_EQ(report.messages[0].severity, datamodel::PreparationMessage::Severity::Warning);
    EXPECT_EQ(report.messages[0].subject, "take " + report.takes[0].name + ", band " + band(report, 0, 0).band);
    EXPECT_NE(report.messages[0].text.find("scan lines"), std::string::npos) << report.messages[0].text;
    EXPECT_NE(report.messages[1].text.find("not a finite number at scan line 2: " + notANumber), std::string::npos)
        << report.messages[1].text;
    EXPECT_EQ(report.messages[2].text, "Can't open CTG file: " + blocked + ": a folder, not a file; the file is written again");
    EXPECT_EQ(report.messages[3].severity, datamodel::PreparationMessage::Severity::Error);
    EXPECT_EQ(report.messages[3].text, "Can't write CTG file: " + blocked + " (Is a directory)");
    EXPECT_TRUE(leftovers().isEmpty()) << leftovers().join(QLatin1Char(' ')).toStdString();

    // The rewritten files are whole again.
    const PreparationReport again = SessionPreparation(filesOnly()).run(sessionPath());
    EXPECT_EQ(band(again, 0, 0).ctg, CtgStatus::Present);
    EXPECT_EQ(band(again, 0, 1).ctg, CtgStatus::Present);
}

TEST_F(SessionPreparationTest, ReportsWhereInsteadOfThrowing)
{
    // The raw folder instead of the session folder.
    const PreparationReport raw = SessionPreparation(filesOnly()).run(sessionPath() + "/raw");
    ASSERT_EQ(raw.messages.size(), 1u);
    EXPECT_NE(raw.messages[0].text.find("prepare the session folder " + QDir(session()).absolutePath().toStdString()),
              std::string::npos)
        << raw.messages[0].text;

    const PreparationReport missing = SessionPreparation(filesOnly()).run(sessionPath() + "/nothing");
    ASSERT_EQ(missing.messages.size(), 1u);
    EXPECT_EQ(missing.messages[0].text, "Can't find path provided for RecordingSession: " + sessionPath() + "/nothing");

    // Takes asked for by name; an unknown one is an error of the report.
    SessionPreparation::Options options = filesOnly();
    options.takes = {"L002", "L009"};
    options.checkCoverage = false;
    const PreparationReport some = SessionPreparation(options).run(sessionPath());
    ASSERT_EQ(some.takes.size(), 1u);
    EXPECT_EQ(some.takes[0].name, "L002");
    EXPECT_TRUE(some.takes[0].coveredBy.empty());
    EXPECT_TRUE(some.trajectories.empty());
    ASSERT_EQ(some.messages.size(), 1u) << messages(some);
    EXPECT_EQ(some.messages[0].text, "No take L009 in " + some.sessionDirectory);

    // Without time marks nothing can be written; the one message says why.
    QDirIterator marks(session() + QStringLiteral("/gps-imu"), {QStringLiteral("tm*.dat")}, QDir::Files,
                       QDirIterator::Subdirectories);
    ASSERT_TRUE(marks.hasNext());
    ASSERT_TRUE(QFile::remove(marks.next()));
    SessionPreparation::Options only = filesOnly();
    only.checkCoverage = false;
    const PreparationReport noMarks = SessionPreparation(only).run(sessionPath());
    EXPECT_GT(noMarks.ctgCount(CtgStatus::NotChecked), 0u);
    EXPECT_EQ(noMarks.ctgCount(CtgStatus::Written) + noMarks.ctgCount(CtgStatus::Failed), 0u);
    ASSERT_EQ(noMarks.messages.size(), 1u) << messages(noMarks);
    EXPECT_EQ(noMarks.messages[0].text.rfind("Can't find a TM file for session ", 0), 0u);
}

TEST_F(SessionPreparationTest, WhatCannotBeUsedIsReportedAndTheRestPrepared)
{
    // A dangling link among the band files is left out with a warning that
    // names it.
    const QString raw = session() + QStringLiteral("/raw/");
    ASSERT_TRUE(QFile::link(raw + QStringLiteral("gone"), raw + QStringLiteral("L009PANN00A.info")));
    // A session data file without its schema costs the naming pattern only.
    QTemporaryDir emptyRoot;
    testsupport::ScopedEnv root("KAVIX_ROOT", emptyRoot.path().toUtf8());
    QFile data(raw + QStringLiteral("sessionData.xml"));
    ASSERT_TRUE(data.open(QIODevice::WriteOnly));
    data.write("<SessionData version=\"1.0\"><FileNamingPattern><x/></FileNamingPattern></SessionData>");
    data.close();

    const PreparationReport report = SessionPreparation(filesOnly()).run(sessionPath());
    EXPECT_EQ(report.ctgCount(CtgStatus::Written), 4u) << messages(report);
    ASSERT_EQ(report.messages.size(), 2u) << messages(report);
    EXPECT_EQ(report.messages[0].subject, data.fileName().toStdString());
    EXPECT_EQ(report.messages[0].text, "Missing installation file " + emptyRoot.path().toStdString()
                                           + "/etc/schemas/sessionData.xsd; the session is prepared without its file "
                                             "naming pattern");
    EXPECT_EQ(report.messages[1].subject, (raw + QStringLiteral("L009PANN00A.info")).toStdString());
    EXPECT_EQ(report.messages[1].text, "Left out of the session: a link to " + (raw + QStringLiteral("gone")).toStdString()
                                           + ", which does not exist");

    // Marks that cannot be time marks write no CTG file; a camera file that
    // is there but refused is an error, not a missing calibration.
    QFile camera(session() + QStringLiteral("/mm/Camera.xml"));
    ASSERT_TRUE(camera.open(QIODevice::ReadOnly));
    const QByteArray cameraXml = camera.readAll().replace("<CalibrationVersion>1<", "<CalibrationVersion>-1<");
    camera.close();
    ASSERT_TRUE(camera.open(QIODevice::WriteOnly | QIODevice::Truncate));
    camera.write(cameraXml);
    camera.close();
    QFile marks(QString::fromStdString(report.timeMarks->file));
    ASSERT_TRUE(marks.open(QIODevice::WriteOnly));
    marks.write(QByteArray(16 * 50, '\0'));
    marks.close();
    for (const auto& take : report.takes)
        for (const auto& written : take.bands)
            ASSERT_TRUE(QFile::remove(QString::fromStdString(written.ctgFile)));
    const PreparationReport zeros = SessionPreparation(filesOnly()).run(sessionPath());
    EXPECT_EQ(zeros.ctgCount(CtgStatus::Written), 0u);
    EXPECT_NE(messages(zeros).find("Time-mark file " + report.timeMarks->file
                                   + ": the GPS times of the marks do not advance (period 0 s)"),
              std::string::npos)
        << messages(zeros);
    EXPECT_NE(messages(zeros).find("error [" + camera.fileName().toStdString() + "] Invalid camera file "),
              std::string::npos)
        << messages(zeros);
}

TEST_F(SessionPreparationTest, PipesInPlaceOfInputsAreRefusedNotWaitedFor)
{
    // A reader that opened a FIFO would wait for a writer forever.
    auto pipe = [](const std::string& path) {
        QFile::remove(QString::fromStdString(path));
        ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0) << path;
    };
    const PreparationReport clean = SessionPreparation(filesOnly()).run(sessionPath());
    ASSERT_FALSE(clean.hasErrors()) << messages(clean);
    pipe(band(clean, 0, 0).ctgFile);
    pipe(band(clean, 0, 1).ctgFile);
    QFile::remove(QString::fromStdString(band(clean, 0, 1).ctgFile));
    pipe(band(clean, 0, 1).ctFile);

    // A pipe where a CTG file belongs is reported and replaced.
    const PreparationReport report = SessionPreparation(filesOnly()).run(sessionPath());
    EXPECT_EQ(band(report, 0, 0).ctg, CtgStatus::Written) << messages(report);
    EXPECT_EQ(report.messages.at(0).text,
              "Can't open CTG file: " + band(clean, 0, 0).ctgFile + ": a pipe, not a file; the file is written again");
    EXPECT_TRUE(QFileInfo(QString::fromStdString(band(clean, 0, 0).ctgFile)).isFile());
    EXPECT_EQ(band(report, 0, 1).ctg, CtgStatus::Failed);
    EXPECT_EQ(band(report, 0, 1).error, "Can't open CT file: " + band(clean, 0, 1).ctFile + ": a pipe, not a file");

    pipe(report.timeMarks->file);
    const PreparationReport noMarks = SessionPreparation(filesOnly()).run(sessionPath());
    EXPECT_FALSE(noMarks.timeMarks.has_value());
    EXPECT_NE(messages(noMarks).find("Failed to open TM file: " + report.timeMarks->file), std::string::npos)
        << messages(noMarks);
}

TEST_F(SessionPreparationTest, TrajectoryFilesThatCannotBeUsedAreNamedWithTheReason)
{
    auto proc = [this](const char* pattern) {
        QDirIterator it(session() + QStringLiteral("/gps-imu"), {QString::fromLatin1(pattern)}, QDir::Files,
                        QDirIterator::Subdirectories);
        return it.hasNext() ? it.next().toStdString() : std::string();
    };
    const std::string sbet = proc("sbet*.out");
    const std::string smrmsg = proc("smrmsg*.out");
    const std::string sol = proc("*.sol");
    ASSERT_FALSE(sbet.empty() || smrmsg.empty() || sol.empty());
    auto overwrite = [](const std::string& path, qint64 offset, double value) {
        QFile file(QString::fromStdString(path));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(offset));
        ASSERT_EQ(file.write(reinterpret_cast<const char*>(&value), sizeof value), qint64(sizeof value));
    };

    // A broken accuracy file leaves the SBET file without standard
    // deviations: a warning, naming the accuracy file and why.
    overwrite(smrmsg, 0, -1.0);
    const PreparationReport noAccuracy = SessionPreparation(filesOnly()).run(sessionPath());
    EXPECT_FALSE(noAccuracy.hasErrors()) << messages(noAccuracy);
    ASSERT_EQ(noAccuracy.messages.size(), 1u) << messages(noAccuracy);
    EXPECT_EQ(noAccuracy.messages[0].subject, smrmsg);
    // The session's description of the file: its name and when it was written.
    const std::string& text = noAccuracy.messages[0].text;
    EXPECT_EQ(text.rfind("Standard deviations are defaults for "
                             + QFileInfo(QString::fromStdString(sbet)).fileName().toStdString() + " modified on ",
                         0),
              0u)
        << text;
    EXPECT_TRUE(text.ends_with(": the accuracy file " + smrmsg + " cannot be used: First record is not valid.")) << text;

    // A SOL file whose records hold no flight is an error that says why
    // each reader refused it; a folder in an SBET file's place is named.
    overwrite(sol, 42, 5e185);
    ASSERT_TRUE(QFile::remove(QString::fromStdString(sbet)) && QDir().mkdir(QString::fromStdString(sbet)));
    const PreparationReport broken = SessionPreparation(filesOnly()).run(sessionPath());
    const std::string all = messages(broken);
    EXPECT_NE(all.find("error [" + sol + "] " + sol + " is neither a SOL nor an SBET file (SOL reader: Record 0 is not valid: "
                       "latitude 5e+185 rad is outside [-pi/2, pi/2].; SBET reader: " + sol + " is not a Sbet file.)"),
              std::string::npos)
        << all;
    EXPECT_NE(all.find("warning [" + sbet + "] Left out of the session: a folder, not a file"), std::string::npos)
        << all;
}

TEST_F(SessionPreparationTest, AddedStagesRunAfterTheCtgFilesAndTheirFailuresAreReported)
{
    class Counting : public datamodel::PreparationStage {
    public:
        explicit Counting(bool fail) : m_fail(fail) {}
        std::string name() const override { return "Counting"; }
        void run(datamodel::RecordingSession&, const std::vector<datamodel::Take*>& takes, PreparationReport& report,
                 util::ProgressInterface*) override
        {
            if (m_fail)
                throw std::runtime_error("gave up");
            report.add(datamodel::PreparationMessage::Severity::Information, "stage",
                       std::to_string(takes.size()) + " takes, " + std::to_string(report.ctgCount(CtgStatus::Written))
                           + " written");
        }

    private:
        bool m_fail;
    };
    SessionPreparation preparation(filesOnly());
    preparation.addStage(std::make_unique<Counting>(false));
    preparation.addStage(std::make_unique<Counting>(true));
    const PreparationReport report = preparation.run(sessionPath());
    ASSERT_EQ(report.messages.size(), 2u) << messages(report);
    EXPECT_EQ(report.messages[0].text,
              std::to_string(report.takes.size()) + " takes, " + std::to_string(report.ctgCount(CtgStatus::Written))
                  + " written");
    EXPECT_EQ(report.messages[1].text, "Counting: gave up");
    EXPECT_TRUE(report.hasErrors());
}

TEST(AtomicFile, CommitsWholeFilesOrLeavesTheTargetAsItWas)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const std::string kept = dir.filePath(QStringLiteral("kept")).toStdString();
    util::AtomicFile::writeWhole(kept, "test file", "old", 3);

    // Three files committed together; the one whose target became a folder
    // fails alone and leaves no temporary file.
    std::vector<std::unique_ptr<util::AtomicFile>> files;
    for (const char* name : {"a", "folder", "kept"}) {
        files.push_back(std::make_unique<util::AtomicFile>(dir.filePath(QString::fromLatin1(name)).toStdString(),
                                                           "test file"));
        files.back()->open();
        files.back()->write("new", 3);
    }
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("folder")));
    std::vector<util::AtomicFile*> pointers{files[0].get(), files[1].get(), files[2].get()};
    const auto failures = util::AtomicFile::commitAll(pointers);
    EXPECT_FALSE(failures[0]);
    EXPECT_FALSE(failures[2]);
    ASSERT_TRUE(failures[1]);
    try {
        std::rethrow_exception(failures[1]);
    } catch (const util::FileWriteError& e) {
        EXPECT_EQ(e.step(), util::FileWriteError::Step::Rename);
        EXPECT_EQ(std::string(e.what()), "Can't write test file: " + dir.filePath(QStringLiteral("folder")).toStdString()
                                             + " (Is a directory)");
    }
    QFile file(QString::fromStdString(kept));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("new"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).join(QLatin1Char(' ')), QStringLiteral("a kept"));

    // A write that fails part-way leaves the old file.
    {
        util::AtomicFile abandoned(kept, "test file");
        abandoned.open();
        abandoned.write("half", 4);
    }
    file.seek(0);
    EXPECT_EQ(file.readAll(), QByteArray("new"));
    EXPECT_THROW(util::AtomicFile::writeWhole(dir.filePath(QStringLiteral("no/such/x")).toStdString(), "test file", "x", 1),
                 util::FileWriteError);
    std::string openFailure;
    try {
        util::AtomicFile::writeWhole(dir.filePath(QStringLiteral("folder")).toStdString(), "test file", "x", 1,
                                     "Couldn't open it.");
    } catch (const std::runtime_error& e) {
        openFailure = e.what();
    }
    EXPECT_EQ(openFailure, "Couldn't open it.");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

} // namespace
