#include "TestSupport.h"

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/IntegrationTimeZelV1.h>
#include <datamodel/timing/IntegrationTimeZelV2.h>
#include <datamodel/timing/TdiDataZelV1.h>
#include <datamodel/timing/TdiDataZelV2.h>

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>

#include <ctime>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

using namespace datamodel;
using testsupport::thrownMessage;

namespace {

using Names = std::vector<std::string>;

QDateTime utc(int y, int mo, int d, int h, int mi, int s)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s), Qt::UTC);
}

QByteArray readBytes(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly))
        throw std::logic_error("test: cannot read " + path);
    return file.readAll();
}

QDomDocument parseXml(const QByteArray& xml)
{
    QDomDocument document;
    QString error;
    if (!document.setContent(xml, &error))
        throw std::logic_error("test: not XML: " + error.toStdString());
    return document;
}

Names childTags(const QDomElement& element)
{
    Names tags;
    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement())
        tags.push_back(child.tagName().toStdString());
    return tags;
}

Names entries(const std::string& directory)
{
    Names names;
    const QDir folder(QString::fromStdString(directory));
    for (const QString& name : folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot))
        names.push_back(name.toStdString());
    return names;
}

// Pieces of a small readable strip element; each test replaces the one it is about.
const QByteArray sRawData = "<RawData location=\"..\"/>";
const QByteArray sImage = "<Image filename=\"L1PANN00A.lri\" band=\"PANN00A\" timing=\"L1PANN00A.ctg\"/>";
const QByteArray sCalibration = "<Calibration sensor_id=\"2004\" sensor_type=\"ZEL\" version=\"v3\"/>";
const QByteArray sAttributes = "version=\"1.0\" name=\"L1\"";

QByteArray images(const QByteArray& content, const QByteArray& location = "../images")
{
    return "<Images location=\"" + location + "\">" + content + "</Images>";
}

QByteArray strip(const QByteArray& children, const QByteArray& attributes = sAttributes)
{
    return "<Strip " + attributes + ">" + children + "</Strip>";
}

/// A readable strip with `extra` children after the required ones.
QByteArray validStrip(const QByteArray& extra = {})
{
    return strip(sRawData + images(sImage) + sCalibration + extra);
}

QByteArray position(const QByteArray& content)
{
    return "<Start>" + content + "</Start>";
}

// Strip times are UTC; a local zone with daylight saving and an offset makes
// a slip into local time visible.
class StripFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        zone.emplace("TZ", QByteArray("Europe/Berlin"));
        tzset();
    }
    void TearDown() override
    {
        zone.reset();
        tzset();
    }

    /// A take of the session made from raw/<prefix>_<band>.info files, with
    /// its pixel files in images/.
    std::unique_ptr<Take> makeTake(const std::string& name, const Names& bands)
    {
        std::vector<InfoFile*> pointers;
        for (const std::string& band : bands) {
            const QString base = QString::fromStdString(name + "_" + band);
            session.write("images/" + base.toStdString() + ".lri");
            infos.push_back(std::make_unique<InfoFile>(session.infoFile(base, QByteArray::fromStdString(band))));
            pointers.push_back(infos.back().get());
        }
        return std::make_unique<Take>(recording, name, pointers, 250.0f, 1500.0f, "2004", "ZEL", 3);
    }

    /// The take every round trip starts from: three bands, EOP names, a
    /// trajectory, start and stop, and one dark take.
    std::unique_ptr<Take> makeFullTake()
    {
        auto take = makeTake("L001", {"PANN00A", "REDN00A", "PANB14A"});
        take->setEopTrajectory("/processing/L001.eop");
        take->setAdjustedEopTrajectory("adjusted/L001.eop.adj");
        take->setImuTrajectorySource(RecordingSession::ImuTrajectoryId("flight.sbet", 1234567890u));
        take->setStartTimePosHeight(utc(2009, 3, 7, 23, 30, 5), geo::XYPoint(-12.504305555, 47.16666667), 1234.5678f);
        take->setStopTimePosHeight(utc(2009, 3, 7, 23, 59, 59), geo::XYPoint(8.123456789, -0.000123456789), 0.0f);
        dark = makeTake("D001", {"PANN00A"});
        take->addDarkTake(dark.get());
        return take;
    }

    std::string stripPath() const { return session.raw("L1.stp"); }

    void read(Take& take, const QByteArray& xml, bool topLevel = true) const
    {
        const QDomDocument document = parseXml(xml);
        take.read(document.documentElement(), QFileInfo(QString::fromStdString(stripPath())), topLevel);
    }

    /// The message of reading `xml` into a fresh take of the session.
    std::string readError(const QByteArray& xml, bool topLevel = true)
    {
        Take take(recording);
        return thrownMessage([&] { read(take, xml, topLevel); });
    }

    /// The "Image" elements that `take` writes.
    std::vector<QDomElement> writtenImages(const Take& take)
    {
        QDomDocument document;
        QDomElement root = document.createElement(QStringLiteral("Strip"));
        document.appendChild(root);
        take.write(root, document);
        std::vector<QDomElement> result;
        const QDomElement images = root.firstChildElement(QStringLiteral("Images"));
        for (QDomElement image = images.firstChildElement(); !image.isNull(); image = image.nextSiblingElement())
            result.push_back(image);
        return result;
    }

    std::optional<testsupport::ScopedEnv> zone;
    testsupport::SessionDir session;
    RecordingSession recording{session.path()};
    std::vector<std::unique_ptr<InfoFile>> infos;
    std::unique_ptr<Take> dark;
};

} // namespace

// ---- Writing ------------------------------------------------------------------

TEST_F(StripFileTest, WrittenStripHasItsItemsInOrder)
{
    const auto take = makeFullTake();
    take->writeStpFile();
    EXPECT_EQ(take->stpFilename(), session.raw("L001.stp"));
    EXPECT_TRUE(take->stpFileExists());

    const QByteArray bytes = readBytes(session.raw("L001.stp"));
    const QDomElement root = parseXml(bytes).documentElement();
    EXPECT_EQ(root.tagName(), "Strip");
    EXPECT_EQ(childTags(root), (Names{"RawData", "Images", "ProductsCache", "Calibration", "EOP", "trajectory",
                                      "Start", "Stop", "DarkTakes"}));
    EXPECT_EQ(root.attribute("version"), "1.0");
    EXPECT_EQ(root.attribute("name"), "L001");
    EXPECT_EQ(root.attribute("mean_terrain_height"), "250");
    EXPECT_EQ(root.attribute("lineNumber"), "12");
    EXPECT_EQ(root.attribute("lineLabel"), "L12");

    EXPECT_EQ(root.firstChildElement("RawData").attribute("location").toStdString(), session.path());
    const QDomElement images = root.firstChildElement("Images");
    EXPECT_EQ(images.attribute("location").toStdString(), session.path() + "/images");
    EXPECT_EQ(childTags(images), (Names{"Image", "Image", "Image"}));
    const QDomElement pan = images.firstChildElement("Image");
    EXPECT_EQ(pan.attribute("filename"), "L001_PANN00A.lri");
    EXPECT_EQ(pan.attribute("band"), "PANN00A");
    EXPECT_EQ(pan.attribute("timing"), "L001_PANN00A.ctg");
    EXPECT_EQ(pan.attribute("footprint"), "L001_PANN00A.fpt");
    EXPECT_EQ(pan.attribute("it"), "5.200");
    EXPECT_FALSE(pan.hasAttribute("tdi"));
    EXPECT_EQ(pan.attribute("swath"), "12000");
    EXPECT_EQ(pan.attribute("offset"), "0");

    const QDomElement calibration = root.firstChildElement("Calibration");
    EXPECT_EQ(calibration.attribute("sensor_type"), "ZEL");
    EXPECT_EQ(calibration.attribute("sensor_id"), "2004");
    EXPECT_EQ(calibration.attribute("version"), "v3");
    const QDomElement eop = root.firstChildElement("EOP");
    EXPECT_EQ(eop.attribute("filename"), "L001.eop");
    EXPECT_EQ(eop.attribute("filename_adjusted"), "L001.eop.adj");
    EXPECT_EQ(root.firstChildElement("trajectory").text(), "1234567890;flight.sbet");

    // Dark takes are nested strips without calibration.
    const QDomElement darkStrip = root.firstChildElement("DarkTakes").firstChildElement();
    EXPECT_EQ(darkStrip.tagName(), "Strip");
    EXPECT_TRUE(darkStrip.nextSiblingElement().isNull());
    EXPECT_EQ(darkStrip.attribute("version"), "1.0");
    EXPECT_EQ(darkStrip.attribute("name"), "D001");
    EXPECT_EQ(childTags(darkStrip), (Names{"RawData", "Images", "ProductsCache", "Start", "Stop", "DarkTakes"}));
}

TEST_F(StripFileTest, PositionBlocksAreUtcWithSixSignificantDigits)
{
    const auto take = makeFullTake();
    take->writeStpFile();
    const QDomElement root = parseXml(readBytes(take->stpFilename())).documentElement();

    const QDomElement start = root.firstChildElement("Start");
    EXPECT_EQ(childTags(start), (Names{"time", "latitude", "longitude", "altitude"}));
    EXPECT_EQ(start.firstChildElement("time").attribute("timezone"), "UTC");
    // 23:30 UTC is already the next day in the local zone.
    EXPECT_EQ(start.firstChildElement("time").text(), "07 March 2009, 23:30:05");
    EXPECT_EQ(start.firstChildElement("latitude").attribute("system"), "WGS84");
    EXPECT_EQ(start.firstChildElement("latitude").text(), "47.1667");
    EXPECT_EQ(start.firstChildElement("longitude").attribute("system"), "WGS84");
    EXPECT_EQ(start.firstChildElement("longitude").text(), "-12.5043");
    EXPECT_EQ(start.firstChildElement("altitude").attribute("system"), "LSR");
    EXPECT_EQ(start.firstChildElement("altitude").text(), "1234.57");

    const QDomElement stop = root.firstChildElement("Stop");
    EXPECT_EQ(childTags(stop), (Names{"time", "latitude", "longitude", "altitude"}));
    EXPECT_EQ(stop.firstChildElement("time").text(), "07 March 2009, 23:59:59");
    EXPECT_EQ(stop.firstChildElement("latitude").text(), "-0.000123457");
    EXPECT_EQ(stop.firstChildElement("longitude").text(), "8.12346");
    EXPECT_EQ(stop.firstChildElement("altitude").text(), "0");
}

TEST_F(StripFileTest, OptionalItemsAreLeftOutWhenUnset)
{
    Take take(recording);
    take.setName("L2");
    take.addImage(new L0Image(take, 0, session.images("L2PANN00A.lri"), "PANN00A", nullptr, nullptr, 12000, 0, "",
                              "", "", ""));
    QDomDocument document;
    QDomElement root = document.createElement("Strip");
    document.appendChild(root);
    take.write(root, document, false);

    EXPECT_EQ(childTags(root), (Names{"RawData", "Images", "ProductsCache", "DarkTakes"}));
    EXPECT_FALSE(root.hasAttribute("lineNumber"));
    EXPECT_FALSE(root.hasAttribute("lineLabel"));
    EXPECT_EQ(root.attribute("mean_terrain_height"), "0");
    const QDomElement image = root.firstChildElement("Images").firstChildElement("Image");
    EXPECT_FALSE(image.hasAttribute("it")) << "an unknown integration time is not written";
    EXPECT_FALSE(image.hasAttribute("tdi"));

    // The raw-data location, when the take has one, is written instead of the session's.
    take.setRawDataLocation("/recordings/flight 7");
    QDomElement again = document.createElement("Strip");
    take.write(again, document, false);
    EXPECT_EQ(again.firstChildElement("RawData").attribute("location"), "/recordings/flight 7");
}

TEST_F(StripFileTest, FileIsIndentedByFourWithSortedAttributes)
{
    const auto take = makeFullTake();
    take->writeStpFile();
    const QByteArray bytes = readBytes(take->stpFilename());
    EXPECT_TRUE(bytes.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Strip "))
        << bytes.left(80).toStdString();
    EXPECT_TRUE(bytes.contains("\n<Strip lineLabel=\"L12\" lineNumber=\"12\" mean_terrain_height=\"250\" name=\"L001\" "
                               "version=\"1.0\">\n"));
    EXPECT_TRUE(bytes.contains("\n    <Calibration sensor_id=\"2004\" sensor_type=\"ZEL\" version=\"v3\"/>\n"));
    EXPECT_TRUE(bytes.contains("\n        <time timezone=\"UTC\">07 March 2009, 23:30:05</time>\n"));
}

TEST_F(StripFileTest, WritingTheSameTakeTwiceGivesTheSameBytes)
{
    const auto take = makeFullTake();
    take->writeStpFile();
    const QByteArray first = readBytes(take->stpFilename());
    take->writeStpFile();
    EXPECT_EQ(readBytes(take->stpFilename()), first);
    EXPECT_EQ(entries(session.raw("")), (Names{"D001_PANN00A.info", "L001.stp", "L001_PANB14A.info",
                                               "L001_PANN00A.info", "L001_REDN00A.info"}))
        << "no temporary file is left behind";
}

// ---- Round trip -----------------------------------------------------------------

TEST_F(StripFileTest, StripFileReadsBackIntoAnEqualTake)
{
    const auto take = makeFullTake();
    take->writeStpFile();
    const std::string path = take->stpFilename();

    Take parsed(recording);
    parsed.parseStpFile(path);

    EXPECT_EQ(parsed.name(), "L001");
    EXPECT_EQ(parsed.label(), "L12");
    EXPECT_EQ(parsed.lineNumber(), 12u);
    EXPECT_EQ(parsed.meanTerrainHeight(), 250.0f);
    EXPECT_EQ(parsed.rawDataLocation(), session.path());
    EXPECT_EQ(parsed.imagesLocation(), session.path() + "/images");
    EXPECT_EQ(parsed.sensorId(), "2004");
    EXPECT_EQ(parsed.sensorType(), "ZEL");
    EXPECT_EQ(parsed.sensorVersion(), 3);
    EXPECT_EQ(parsed.eopFilename(), "L001.eop");
    EXPECT_EQ(parsed.adjustedEopFilename(), "L001.eop.adj");
    ASSERT_NE(parsed.imuTrajectorySource(), nullptr);
    EXPECT_EQ(*parsed.imuTrajectorySource(), RecordingSession::ImuTrajectoryId("flight.sbet", 1234567890u));

    const std::vector<L0Image*> expected = take->imagesL0();
    const std::vector<L0Image*> images = parsed.imagesL0();
    ASSERT_EQ(images.size(), expected.size());
    for (std::size_t i = 0; i < images.size(); ++i) {
        SCOPED_TRACE(expected[i]->bandName());
        EXPECT_EQ(images[i]->index(), i);
        EXPECT_EQ(images[i]->filename(), expected[i]->filename());
        EXPECT_EQ(images[i]->bandName(), expected[i]->bandName());
        EXPECT_EQ(images[i]->swathWidth(), 12000u);
        EXPECT_EQ(images[i]->sampleOffset(), 0u);
        EXPECT_EQ(images[i]->ctFilename(), expected[i]->ctFilename());
        EXPECT_EQ(images[i]->ctgFilename(), expected[i]->ctgFilename());
        EXPECT_EQ(images[i]->fptFilename(), expected[i]->fptFilename());
        EXPECT_EQ(images[i]->infoFileName(), expected[i]->infoFileName());
        EXPECT_NE(dynamic_cast<const IntegrationTimeZelV1*>(&images[i]->integrationTime()), nullptr);
        EXPECT_FLOAT_EQ(float(images[i]->integrationTime().value().value()), 0.0052f);
        EXPECT_NE(dynamic_cast<const TdiDataZelV1*>(&images[i]->tdiData()), nullptr);
    }

    EXPECT_EQ(parsed.startTime(), utc(2009, 3, 7, 23, 30, 5));
    EXPECT_EQ(parsed.startTime().timeSpec(), Qt::UTC);
    EXPECT_DOUBLE_EQ(parsed.startPosition().x, -12.5043);
    EXPECT_DOUBLE_EQ(parsed.startPosition().y, 47.1667);
    EXPECT_FLOAT_EQ(parsed.startHeight(), 1234.57f);
    EXPECT_EQ(parsed.stopTime(), utc(2009, 3, 7, 23, 59, 59));
    EXPECT_DOUBLE_EQ(parsed.stopPosition().x, 8.12346);
    EXPECT_DOUBLE_EQ(parsed.stopPosition().y, -0.000123457);
    EXPECT_EQ(parsed.stopHeight(), 0.0f);

    ASSERT_EQ(parsed.darkTakes().size(), 1u);
    const Take& darkRead = *parsed.darkTakes()[0];
    EXPECT_EQ(darkRead.name(), "D001");
    EXPECT_EQ(&darkRead.manager(), &recording);
    ASSERT_EQ(darkRead.imagesL0().size(), 1u);
    EXPECT_EQ(darkRead.imagesL0()[0]->filename(), session.images("D001_PANN00A.lri"));
    EXPECT_EQ(darkRead.imagesL0()[0]->infoFileName(), session.raw("D001_PANN00A.info"));
    EXPECT_EQ(darkRead.startTime(), dark->startTime());
    // Written without calibration, read without one.
    EXPECT_EQ(darkRead.sensorVersion(), -1);
    EXPECT_EQ(darkRead.sensorId(), "UNKNOWN");
    EXPECT_EQ(darkRead.imuTrajectorySource(), nullptr);
}

TEST_F(StripFileTest, ParsedTakeWritesTheSameBytesAgain)
{
    const auto take = makeFullTake();
    take->writeStpFile();
    const QByteArray original = readBytes(take->stpFilename());

    Take parsed(recording);
    parsed.parseStpFile(take->stpFilename());
    ASSERT_TRUE(QFile::remove(QString::fromStdString(take->stpFilename())));
    parsed.writeStpFile();
    EXPECT_EQ(parsed.stpFilename(), take->stpFilename());
    EXPECT_EQ(readBytes(parsed.stpFilename()).toStdString(), original.toStdString());
}

// ---- Strip file operations ---------------------------------------------------

TEST_F(StripFileTest, StripFileProblemsAreReported)
{
    Take take(recording);
    const std::string missing = session.raw("none.stp");
    EXPECT_EQ(thrownMessage([&] { take.parseStpFile(missing); }), "error opening strip file:" + missing);

    const QByteArray broken = "<Strip version=\"1.0\"><RawData></Strip>";
    const std::string brokenPath = session.write("raw/broken.stp", broken);
    QString parserText;
    ASSERT_FALSE(QDomDocument().setContent(broken, &parserText));
    ASSERT_FALSE(parserText.isEmpty());
    EXPECT_EQ(thrownMessage([&] { take.parseStpFile(brokenPath); }),
              "error parsing xml file:" + brokenPath + ": " + parserText.toStdString());

    const std::string deepPath = session.write("raw/deep.stp", testsupport::nestedXml(300, "Strip"));
    EXPECT_EQ(testsupport::invalidFileMessage([&] { take.parseStpFile(deepPath); }),
              deepPath + ": XML nested deeper than 256 elements");

    // The element's own messages come through, quoting at most 200 characters.
    const std::string wrongPath = session.write("raw/wrong.stp", "<Block/>");
    EXPECT_EQ(thrownMessage([&] { take.parseStpFile(wrongPath); }),
              "wrong file format: expected \"Strip\" but saw \"Block\"");
    const std::string versionPath =
        session.write("raw/version.stp", "<Strip version=\"" + QByteArray(5000, '1') + "\"/>");
    EXPECT_EQ(thrownMessage([&] { take.parseStpFile(versionPath); }),
              "wrong file version: expected \"1.0\" but saw \"" + std::string(200, '1') + "...\"");
}

TEST_F(StripFileTest, DeletingTheStripFile)
{
    const auto take = makeTake("L001", {"PANN00A"});
    EXPECT_FALSE(take->stpFileExists());
    take->deleteStpFile();  // nothing there: no error
    take->writeStpFile();
    ASSERT_TRUE(take->stpFileExists());
    take->deleteStpFile();
    EXPECT_FALSE(take->stpFileExists());
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(session.raw("L001.stp"))));

    // A directory in its place cannot be removed as a file.
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(session.raw("L001.stp/content"))));
    take->setStpFilename(session.raw("L001.stp"));
    EXPECT_EQ(thrownMessage([&] { take->deleteStpFile(); }), "Couldn't delete: " + session.raw("L001.stp"));
}

TEST_F(StripFileTest, StripFileThatCannotBeWrittenIsReported)
{
    const auto take = makeTake("L001", {"PANN00A"});
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(session.raw("L001.stp"))));
    EXPECT_EQ(thrownMessage([&] { take->writeStpFile(); }), "Couldn't open file \"" + session.raw("L001.stp") + "\".");
}

TEST_F(StripFileTest, RawFolderThatCannotBeCreatedIsReported)
{
    testsupport::SessionDir other;
    ASSERT_TRUE(QDir(QString::fromStdString(other.path())).rmdir("raw"));
    other.write("raw", "a file where the folder belongs");
    RecordingSession otherSession(other.path());
    Take take(otherSession);
    take.setName("L5");
    EXPECT_EQ(thrownMessage([&] { take.findStpFile(); }), "Failed to create: " + other.path() + "/raw");
}

TEST_F(StripFileTest, RawFolderIsCreatedWhenMissing)
{
    testsupport::SessionDir other;
    ASSERT_TRUE(QDir(QString::fromStdString(other.path())).rmdir("raw"));
    RecordingSession otherSession(other.path());
    Take take(otherSession);
    take.setName("L5");
    EXPECT_EQ(take.findStpFile(), other.raw("L5.stp"));
    EXPECT_EQ(take.stpFilename(), other.raw("L5.stp"));
    EXPECT_TRUE(QFileInfo(QString::fromStdString(other.raw(""))).isDir());
}

TEST_F(StripFileTest, ImagesInTwoFoldersAreNotWritten)
{
    const auto take = makeTake("L001", {"PANN00A", "REDN00A"});
    take->writeStpFile();
    const QByteArray before = readBytes(take->stpFilename());
    const Names rawBefore = entries(session.raw(""));

    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(session.path() + "/other")));
    take->addImage(new L0Image(*take, 2, session.path() + "/other/L001_GRNN00A.lri", "GRNN00A", nullptr, nullptr,
                               12000, 0, "", "", "", ""));
    EXPECT_EQ(thrownMessage([&] { take->writeStpFile(); }),
              "All images in the strip don't exist in the same location: " + session.path() + "/other vs "
                  + session.path() + "/images");
    EXPECT_EQ(readBytes(take->stpFilename()), before) << "the earlier file stays as it was";
    EXPECT_EQ(entries(session.raw("")), rawBefore);

    ASSERT_TRUE(QFile::remove(QString::fromStdString(take->stpFilename())));
    EXPECT_ANY_THROW(take->writeStpFile());
    EXPECT_FALSE(take->stpFileExists()) << "nothing is written";
}

// ---- Reading: the strip element -----------------------------------------------

TEST_F(StripFileTest, ElementMustBeAStripOfVersionOne)
{
    EXPECT_EQ(readError("<Take version=\"1.0\"/>"), "wrong file format: expected \"Strip\" but saw \"Take\"");
    EXPECT_EQ(readError(strip(sRawData + images(sImage) + sCalibration, "name=\"L1\"")),
              "wrong file version: expected \"1.0\" but saw \"\"");
    EXPECT_EQ(readError(strip(sRawData + images(sImage) + sCalibration, "version=\"2.0\" name=\"L1\"")),
              "wrong file version: expected \"1.0\" but saw \"2.0\"");
    // The same checks hold for a nested dark take.
    EXPECT_EQ(readError("<Dark version=\"1.0\"/>", false), "wrong file format: expected \"Strip\" but saw \"Dark\"");
    const QByteArray darkStrip = strip(sRawData + images(sImage), "version=\"1\"");
    EXPECT_EQ(readError(validStrip("<DarkTakes>" + darkStrip + "</DarkTakes>")),
              "wrong file version: expected \"1.0\" but saw \"1\"");
}

TEST_F(StripFileTest, StripAttributesAndTheirDefaults)
{
    Take plain(recording);
    read(plain, validStrip());
    EXPECT_EQ(plain.name(), "L1");
    EXPECT_EQ(plain.meanTerrainHeight(), 0.0f);
    EXPECT_EQ(plain.lineNumber(), Take::sUnsetLineNumber);
    EXPECT_EQ(plain.label(), "");
    EXPECT_FALSE(plain.hasStartInformation());
    EXPECT_FALSE(plain.hasStopInformation());
    EXPECT_EQ(plain.imuTrajectorySource(), nullptr);
    EXPECT_EQ(plain.eopFilename(), "");

    Take unnamed(recording);
    read(unnamed, strip(sRawData + images(sImage) + sCalibration, "version=\"1.0\""));
    EXPECT_EQ(unnamed.name(), "unknown");

    Take full(recording);
    read(full, strip(sRawData + images(sImage) + sCalibration,
                     "version=\"1.0\" name=\"L9\" mean_terrain_height=\"312.5\" lineNumber=\"9\" "
                     "lineLabel=\"Line 9\""));
    EXPECT_EQ(full.name(), "L9");
    EXPECT_EQ(full.meanTerrainHeight(), 312.5f);
    EXPECT_EQ(full.lineNumber(), 9u);
    EXPECT_EQ(full.label(), "Line 9");
}

TEST_F(StripFileTest, RequiredElementsAreChecked)
{
    EXPECT_EQ(readError(strip(sRawData + images("") + sCalibration)), "Take contains no usable images");
    EXPECT_EQ(readError(strip(sRawData + sCalibration)), "Take contains no usable images");
    EXPECT_EQ(readError(strip(sRawData + images("<Picture filename=\"a.lri\"/>") + sCalibration)),
              "Take contains no usable images");
    EXPECT_EQ(readError(strip(sRawData + images(sImage))), "missing element: \"Calibration\"");
    EXPECT_EQ(readError(strip(images(sImage) + sCalibration)), "missing element: \"RawData\"");
    EXPECT_EQ(readError(strip(images(sImage)), false), "missing element: \"RawData\"");
    EXPECT_EQ(readError(strip(sRawData + images("<Image band=\"PANN00A\"/>") + sCalibration)),
              "Expected attribute \"filename\" on tag <Image>");
}

TEST_F(StripFileTest, NestedStripNeedsNoCalibration)
{
    Take take(recording);
    read(take, strip(sRawData + images(sImage)), false);
    EXPECT_EQ(take.sensorVersion(), -1);
    EXPECT_EQ(take.sensorId(), "UNKNOWN");
    EXPECT_EQ(take.sensorType(), "UNKNOWN");

    Take withDark(recording);
    read(withDark, validStrip("<DarkTakes>" + strip(sRawData + images(sImage), "version=\"1.0\" name=\"D1\"")
                              + "<Note/></DarkTakes>"));
    ASSERT_EQ(withDark.darkTakes().size(), 1u);
    EXPECT_EQ(withDark.darkTakes()[0]->name(), "D1");
    EXPECT_EQ(withDark.darkTakes()[0]->sensorVersion(), -1);
    EXPECT_EQ(withDark.sensorVersion(), 3);
}

TEST_F(StripFileTest, CalibrationVersionSensorIdAndType)
{
    for (const QByteArray& version : {QByteArray("v3"), QByteArray("3")}) {
        Take take(recording);
        read(take, strip(sRawData + images(sImage) + "<Calibration sensor_id=\"2004\" version=\"" + version + "\"/>"));
        EXPECT_EQ(take.sensorVersion(), 3) << version.toStdString();
        EXPECT_EQ(take.sensorId(), "2004");
        EXPECT_EQ(take.sensorType(), "ZELM4") << "the default sensor type";
    }
    const std::string versionMessage = "missing attribute \"version\" for element \"Calibration\"!";
    for (const QByteArray& version : {QByteArray("-1"), QByteArray("v-1"), QByteArray("three"), QByteArray("")})
        EXPECT_EQ(readError(strip(sRawData + images(sImage) + "<Calibration sensor_id=\"2004\" version=\"" + version
                                  + "\"/>")),
                  versionMessage)
            << version.toStdString();
    EXPECT_EQ(readError(strip(sRawData + images(sImage) + "<Calibration sensor_id=\"2004\"/>")), versionMessage);
    EXPECT_EQ(readError(strip(sRawData + images(sImage) + "<Calibration sensor_id=\"\" version=\"v3\"/>")),
              "missing attribute \"sensor_id\" for element \"Calibration\"!");
    EXPECT_EQ(readError(strip(sRawData + images(sImage) + "<Calibration version=\"v3\"/>")),
              "missing attribute \"sensor_id\" for element \"Calibration\"!");
}

TEST_F(StripFileTest, RawDataLocation)
{
    EXPECT_EQ(readError(strip("<RawData/>" + images(sImage) + sCalibration)),
              "missing attribute \"location\" for element \"RawData\"!");
    EXPECT_EQ(readError(strip("<RawData location=\"\"/>" + images(sImage) + sCalibration)),
              "missing attribute \"location\" for element \"RawData\"!");

    Take relative(recording);
    read(relative, validStrip());  // ".." from raw/
    EXPECT_EQ(QFileInfo(QString::fromStdString(relative.rawDataLocation())).canonicalFilePath().toStdString(),
              session.path());

    Take absolute(recording);
    read(absolute, strip("<RawData location=\"  /recordings/flight 7 \"/>" + images(sImage) + sCalibration));
    EXPECT_EQ(absolute.rawDataLocation(), "/recordings/flight 7");
}

TEST_F(StripFileTest, EopFileNamesAreBareNames)
{
    Take take(recording);
    read(take, validStrip("<EOP filename=\"/a/b/L1.eop\" filename_adjusted=\"c/L1.eop.adj\"/>"));
    EXPECT_EQ(take.eopFilename(), "L1.eop");
    EXPECT_EQ(take.adjustedEopFilename(), "L1.eop.adj");
    EXPECT_TRUE(take.hasAdjustedEopTrajectory());

    Take blank(recording);
    read(blank, validStrip("<EOP filename=\"L1.eop\" filename_adjusted=\"  \"/>"));
    EXPECT_EQ(blank.eopFilename(), "L1.eop");
    EXPECT_EQ(blank.adjustedEopFilename(), "");
    EXPECT_FALSE(blank.hasAdjustedEopTrajectory());
}

TEST_F(StripFileTest, AtMostOneTrajectory)
{
    Take take(recording);
    read(take, validStrip("<trajectory>1234567890;flight.sbet</trajectory>"));
    ASSERT_NE(take.imuTrajectorySource(), nullptr);
    EXPECT_EQ(take.imuTrajectorySource()->toString(), "1234567890;flight.sbet");

    Take empty(recording);
    read(empty, validStrip("<trajectory></trajectory>"));
    EXPECT_EQ(empty.imuTrajectorySource(), nullptr);

    EXPECT_EQ(readError(validStrip("<trajectory>1;a.sbet</trajectory><trajectory>2;b.sbet</trajectory>")),
              "Expected at most one <trajectory> tag.");
    EXPECT_EQ(readError(validStrip("<trajectory>flight.sbet</trajectory>")),
              "Can't construct ImuTrajectoryId; string is invalid: \"flight.sbet\".");
}

TEST_F(StripFileTest, ProductsBecomeLevelTwoImagesWrittenBackUnchanged)
{
    Take take(recording);
    read(take, validStrip("<ProductsCache><Product filename=\"ortho.tif\" kind=\"quick\"><Extra/></Product>"
                          "</ProductsCache>"));
    ASSERT_EQ(take.imagesL2().size(), 1u);
    EXPECT_EQ(take.imagesL2()[0]->filename(), "ortho.tif");

    QDomDocument document;
    QDomElement root = document.createElement("Strip");
    document.appendChild(root);
    take.write(root, document);
    const QDomElement product = root.firstChildElement("ProductsCache").firstChildElement();
    EXPECT_EQ(product.tagName(), "Product");
    EXPECT_EQ(product.attribute("kind"), "quick");
    EXPECT_FALSE(product.firstChildElement("Extra").isNull());
}

// ---- Reading: position blocks ------------------------------------------------

TEST_F(StripFileTest, PositionBlockIsRead)
{
    Take take(recording);
    read(take, validStrip(position("<time timezone=\"UTC\">08 March 2009, 00:30:05</time>"
                                   "<latitude system=\"WGS84\">47.5</latitude><longitude>-11.25</longitude>"
                                   "<altitude>1500.5</altitude>")
                          + "<Stop><altitude>7</altitude>"
                            "<time timezone=\"UTC\">29 March 2009, 02:30:00</time></Stop>"));
    EXPECT_EQ(take.startTime(), utc(2009, 3, 8, 0, 30, 5));
    EXPECT_EQ(take.startTime().timeSpec(), Qt::UTC);
    EXPECT_EQ(take.startPosition().y, 47.5);
    EXPECT_EQ(take.startPosition().x, -11.25);
    EXPECT_EQ(take.startHeight(), 1500.5f);
    // A UTC time that does not exist in the local zone; missing coordinates stay 0.
    EXPECT_EQ(take.stopTime(), utc(2009, 3, 29, 2, 30, 0));
    EXPECT_EQ(take.stopPosition().x, 0.0);
    EXPECT_EQ(take.stopHeight(), 7.0f);

    Take local(recording);
    read(local, validStrip(position("<time>08 March 2009, 10:30:05</time><altitude>1</altitude>")));
    EXPECT_EQ(local.startTime().timeSpec(), Qt::LocalTime);
    EXPECT_EQ(local.startTime(), QDateTime(QDate(2009, 3, 8), QTime(10, 30, 5), Qt::LocalTime));
}

TEST_F(StripFileTest, PositionBlockProblems)
{
    auto startError = [&](const QByteArray& content) { return readError(validStrip(position(content))); };
    EXPECT_EQ(startError("<time>08 March 2009, 00:30:05</time><speed>3</speed><altitude>1</altitude>"),
              "Unexpected element found");
    EXPECT_EQ(startError("<time timezone=\"UTC\">2009-03-08 00:30:05</time><altitude>1</altitude>"),
              "Unable to parse time. Time string found: 2009-03-08 00:30:05");
    EXPECT_EQ(startError("<time timezone=\"UTC\">31 February 2009, 00:30:05</time><altitude>1</altitude>"),
              "Unable to parse time. Time string found: 31 February 2009, 00:30:05");
    EXPECT_EQ(startError("<time timezone=\"UTC\">08 March 2009, 00:30:05</time><latitude>1</latitude>"),
              "No altitude element found");
    EXPECT_EQ(readError(validStrip("<Stop><latitude>1</latitude></Stop>")), "No altitude element found");
}

// ---- Reading: images ----------------------------------------------------------

TEST_F(StripFileTest, ImageIntegrationTimeAndTdiDataFollowTheirAttributes)
{
    Take take(recording);
    read(take, validStrip().replace(
                   sImage, "<Image filename=\"L1PANN00A.lri\" band=\"PANN00A\" timing=\"L1PANN00A.ctg\" it=\"5\" "
                           "tdi=\"L1PANN00A.tdi\"/>"
                           "<Image filename=\"L1REDN00A.lri\" band=\"REDN00A\" timing=\"L1REDN00A.ctg\" "
                           "it=\"L1REDN00A.it\"/>"
                           "<Image filename=\"L1GRNN00A.lri\" band=\"GRNN00A\" timing=\"L1GRNN00A.ctg\"/>"));
    const std::vector<L0Image*> images = take.imagesL0();
    ASSERT_EQ(images.size(), 3u);

    const auto* constant = dynamic_cast<const IntegrationTimeZelV1*>(&images[0]->integrationTime());
    ASSERT_NE(constant, nullptr);
    EXPECT_FLOAT_EQ(float(constant->value().value()), 0.005f);
    const auto* tdiFile = dynamic_cast<const TdiDataZelV2*>(&images[0]->tdiData());
    ASSERT_NE(tdiFile, nullptr);
    EXPECT_EQ(tdiFile->fileName(), session.raw("L1PANN00A.tdi"));

    const auto* fromFile = dynamic_cast<const IntegrationTimeZelV2*>(&images[1]->integrationTime());
    ASSERT_NE(fromFile, nullptr);
    EXPECT_EQ(fromFile->fileName(), session.raw("L1REDN00A.it"));
    EXPECT_NE(dynamic_cast<const TdiDataZelV1*>(&images[1]->tdiData()), nullptr);

    const auto* unknown = dynamic_cast<const IntegrationTimeZelV1*>(&images[2]->integrationTime());
    ASSERT_NE(unknown, nullptr);
    EXPECT_EQ(unknown->value().value(), -1.0);
    EXPECT_FALSE(unknown->isValid());

    // Written back: milliseconds, the bare file name, nothing.
    const std::vector<QDomElement> written = writtenImages(take);
    ASSERT_EQ(written.size(), 3u);
    EXPECT_EQ(written[0].attribute("it"), "5.000");
    EXPECT_EQ(written[0].attribute("tdi"), "L1PANN00A.tdi");
    EXPECT_EQ(written[1].attribute("it"), "L1REDN00A.it");
    EXPECT_FALSE(written[1].hasAttribute("tdi"));
    EXPECT_FALSE(written[2].hasAttribute("it"));
}

TEST_F(StripFileTest, ImageSideFilesAreFoundFromTheTimingName)
{
    session.write("images/L1PANN00A.ct");
    session.write("raw/L1PANN00A.info", testsupport::fullInfoXml("PANN00A"));
    Take take(recording);
    read(take, validStrip().replace(
                   sImage, "<Image filename=\"L1PANN00A.lri\" band=\"PANN00A\" timing=\"/far/away/L1PANN00A.ctg\" "
                           "footprint=\"sub/L1PANN00A.fpt\" swath=\"8000\" offset=\"2000\"/>"
                           "<Image filename=\"L1REDN00A.lri\" band=\"REDN00A\" timing=\"L1REDN00A.ctg\"/>"));
    const std::vector<L0Image*> images = take.imagesL0();
    ASSERT_EQ(images.size(), 2u);

    // Timing and footprint move into the strip file's folder.
    EXPECT_EQ(images[0]->ctgFilename(), session.raw("L1PANN00A.ctg"));
    EXPECT_EQ(images[0]->fptFilename(), session.raw("L1PANN00A.fpt"));
    EXPECT_EQ(images[0]->ctFilename(), session.images("L1PANN00A.ct"));
    EXPECT_EQ(images[0]->infoFileName(), session.raw("L1PANN00A.info"));
    EXPECT_TRUE(images[0]->hasInfoFile());
    EXPECT_EQ(images[0]->swathWidth(), 8000u);
    EXPECT_EQ(images[0]->sampleOffset(), 2000u);

    EXPECT_EQ(images[1]->ctFilename(), session.raw("L1REDN00A.ct"));
    EXPECT_FALSE(images[1]->hasInfoFile()) << "an info file that does not exist is not kept";
    EXPECT_EQ(images[1]->swathWidth(), 12000u);
    EXPECT_EQ(images[1]->sampleOffset(), 0u);
    EXPECT_EQ(images[0]->index(), 0u);
    EXPECT_EQ(images[1]->index(), 1u);
}

TEST_F(StripFileTest, ImageMissingFromTheImagesLocationPointsIntoTheSessionImages)
{
    testsupport::SessionDir elsewhere;
    const std::string found = elsewhere.write("images/L1PANN00A.lri");
    Take take(recording);
    read(take, strip(sRawData
                     + images("<Image filename=\"L1PANN00A.lri\" band=\"PANN00A\" timing=\"L1PANN00A.ctg\"/>"
                              "<Image filename=\"L1REDN00A.lri\" band=\"REDN00A\" timing=\"L1REDN00A.ctg\"/>",
                              " " + QByteArray::fromStdString(elsewhere.path()) + "/images ")
                     + sCalibration));
    EXPECT_EQ(take.imagesLocation(), elsewhere.path() + "/images");
    ASSERT_EQ(take.imagesL0().size(), 2u);
    EXPECT_EQ(take.imagesL0()[0]->filename(), found);
    EXPECT_EQ(take.imagesL0()[1]->filename(), session.images("L1REDN00A.lri"));

    // A relative location is taken from the strip file's folder.
    session.write("images/L1PANN00A.lri");
    Take relative(recording);
    read(relative, validStrip());
    EXPECT_EQ(QFileInfo(QString::fromStdString(relative.imagesLocation())).canonicalFilePath().toStdString(),
              session.path() + "/images");
    EXPECT_EQ(relative.imagesL0()[0]->filename(), session.images("L1PANN00A.lri"));
}
