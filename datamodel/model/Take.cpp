#include <datamodel/model/Take.h>

#include <datamodel/block/Block.h>
#include <datamodel/model/CacheManager.h>
#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Serializer.h>
#include <datamodel/model/TakeManager.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/IntegrationTimeZelV1.h>
#include <datamodel/timing/IntegrationTimeZelV2.h>
#include <datamodel/timing/TdiDataZelV1.h>
#include <datamodel/timing/TdiDataZelV2.h>
#include <datamodel/trajectory/EopTrajectory.h>
#include <datamodel/trajectory/ImuRecord.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <platform/flightdata/Utility.h>
#include <platform/util/ErrorText.h>
#include <platform/util/RegularFile.h>
#include <platform/util/XmlNesting_p.h>
#include <platform/util/XmlWriter_p.h>

#include <QDir>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <numbers>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace datamodel {

namespace {

const char* const sStripTag = "Strip";
const char* const sStripVersion = "1.0";
// Dates of strip files: English month names, UTC.
const QString sStripDateFormat = QStringLiteral("dd MMMM yyyy, hh:mm:ss");

// Candidate pixel file of a band built from its info file: the images folder
// of the take's directory, with the first of these extensions that exists.
std::string findPixelFile(const std::string& imagesDirectory, const QString& baseName)
{
    for (const char* extension : {".zel", ".lri", ".rds"}) {
        const QString candidate = QString::fromStdString(imagesDirectory) + baseName + QLatin1String(extension);
        if (QFileInfo::exists(candidate))
            return candidate.toStdString();
    }
    return (QString::fromStdString(imagesDirectory) + baseName + QStringLiteral(".lri")).toStdString();
}

QString numberText(double value)
{
    return QString::number(value, 'g', 6);
}

void fillContents(QDomElement& element, QDomDocument& document, const Take::StartStopInformation& info)
{
    QDomElement time = document.createElement(QStringLiteral("time"));
    time.setAttribute(QStringLiteral("timezone"), QStringLiteral("UTC"));
    time.appendChild(document.createTextNode(QLocale::c().toString(info.time.toUTC(), sStripDateFormat)));
    element.appendChild(time);
    auto number = [&](const char* tag, const char* system, double value) {
        QDomElement child = document.createElement(QString::fromLatin1(tag));
        child.setAttribute(QStringLiteral("system"), QString::fromLatin1(system));
        child.appendChild(document.createTextNode(numberText(value)));
        element.appendChild(child);
    };
    number("latitude", "WGS84", info.position.y);
    number("longitude", "WGS84", info.position.x);
    number("altitude", "LSR", info.heightM);
}

Take::StartStopInformation readContents(const QDomElement& element)
{
    Take::StartStopInformation info;
    bool haveAltitude = false;
    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        const QString tag = child.tagName();
        if (tag == QLatin1String("time")) {
            const QString text = child.text();
            // Day, month name and year are read apart from the clock time, so
            // that a UTC time that does not exist in the local zone still parses.
            const qsizetype comma = text.indexOf(QLatin1String(", "));
            const QLocale c = QLocale::c();
            const QDate date = comma < 0 ? QDate() : c.toDate(text.left(comma), QStringLiteral("dd MMMM yyyy"));
            const QTime clock = comma < 0 ? QTime() : c.toTime(text.mid(comma + 2), QStringLiteral("hh:mm:ss"));
            if (!date.isValid() || !clock.isValid())
                throw std::runtime_error("Unable to parse time. Time string found: " + util::excerpt(text));
            const bool utc = child.attribute(QStringLiteral("timezone")) == QLatin1String("UTC");
            info.time = QDateTime(date, clock, utc ? Qt::UTC : Qt::LocalTime);
        } else if (tag == QLatin1String("latitude")) {
            info.position.y = child.text().toDouble();
        } else if (tag == QLatin1String("longitude")) {
            info.position.x = child.text().toDouble();
        } else if (tag == QLatin1String("altitude")) {
            info.heightM = child.text().toFloat();
            haveAltitude = true;
        } else {
            throw std::runtime_error("Unexpected element found");
        }
    }
    if (!haveAltitude)
        throw std::runtime_error("No altitude element found");
    return info;
}

// A location attribute: trimmed, and made absolute against the strip file's directory.
std::string resolveLocation(const QString& location, const QFileInfo& stripFile)
{
    const QString trimmed = location.trimmed();
    if (QDir::isAbsolutePath(trimmed))
        return trimmed.toStdString();
    return (stripFile.absolutePath() + QLatin1Char('/') + trimmed).toStdString();
}

} // namespace

Take::Take(TakeManager& manager)
    : m_manager(&manager)
{
}

Take::Take(RecordingSession& session, const std::string& name, const std::vector<InfoFile*>& infoFiles,
           float meanTerrainHeightM, float meanFlyingHeightM, const std::string& sensorId,
           const std::string& sensorType, int sensorVersion)
    : m_sensorId(sensorId)
    , m_sensorType(sensorType)
    , m_calibrationVersion(sensorVersion)
    , m_manager(&session)
    , m_meanTerrainHeightM(meanTerrainHeightM)
    , m_meanFlyingHeightM(meanFlyingHeightM)
{
    if (infoFiles.empty())
        throw std::runtime_error("No info files given to Take constructor");
    if (!name.empty())
        setName(name);

    const InfoFile& first = *infoFiles.front();
    m_lineLabel = first.lineLabel();
    if (first.lineNumber() >= 0)
        m_lineNumber = static_cast<std::uint32_t>(first.lineNumber());
    if (!first.lineStart().isNull())
        m_start = StartStopInformation{first.lineStart(), first.startPos(), meanFlyingHeightM};
    if (!first.lineStop().isNull())
        m_stop = StartStopInformation{first.lineStop(), first.stopPos(), meanFlyingHeightM};

    const std::string directory = session.directory(*this);
    m_imagesLocation = directory + "/images";
    try {
        unsigned index = 0;
        for (const InfoFile* info : infoFiles) {
            const QFileInfo infoPath(QString::fromStdString(info->infoFileName()));
            const QString base = infoPath.completeBaseName();
            const std::string pixelFile = findPixelFile(directory + "/images/", base);
            const std::string ctFile = locateFileInSession(base.toStdString() + ".ct");
            const std::string ctgFile = directory + "/raw/" + base.toStdString() + ".ctg";
            const std::string fptFile = directory + "/raw/" + base.toStdString() + ".fpt";
            addImage(new L0Image(*this, index++, *info, pixelFile, ctFile, ctgFile, fptFile, 12000, 0));
        }
    } catch (...) {
        for (L0Image* image : m_imagesL0)
            delete image;
        m_imagesL0.clear();
        throw;
    }
}

Take::~Take()
{
    for (L0Image* image : m_imagesL0)
        delete image;
    for (L2Image* image : m_imagesL2)
        delete image;
}

std::string Take::name() const
{
    if (m_nameSet)
        return m_name;
    // Band file names end in channel, look direction, two digits and the
    // staggered-line letter; what stands before is the strip name.
    static const QRegularExpression bandFile(
        QStringLiteral("^(.+)(RED|BLU|GRN|PAN|NIR)(F|B|N)([0-9]{2,2})(A|B)$"));
    QString candidate;
    for (const L0Image* image : m_imagesL0) {
        if (!image)
            continue;
        const QString baseName = QFileInfo(QString::fromStdString(image->filename())).baseName();
        const QRegularExpressionMatch match = bandFile.match(baseName);
        if (!match.hasMatch())
            continue;
        const QString strip = match.captured(1);
        if (candidate.isNull())
            candidate = strip;
        else if (strip != candidate)
            throw std::runtime_error("While trying to derive strip name, found conflicting values: "
                                     + candidate.toStdString() + " vs. " + strip.toStdString());
    }
    if (candidate.isNull())
        throw std::runtime_error("Cannot derive strip name.");
    m_name = candidate.toStdString();
    m_nameSet = true;
    return m_name;
}

void Take::setName(const std::string& name)
{
    m_name = name;
    m_nameSet = true;
}

int Take::index() const
{
    if (m_index >= 0)
        return m_index;
    if (m_lineNumber == sUnsetLineNumber) {
        if (m_imagesL0.empty() || !m_imagesL0.front())
            throw std::runtime_error("No images; can't find the line number of take " + name());
        const int infoLineNumber = m_imagesL0.front()->infoFile().lineNumber();
        if (infoLineNumber < 0)
            throw std::runtime_error("No line number for take " + name());
        m_lineNumber = std::uint32_t(infoLineNumber);
    }
    const auto flight = session().flightDataSession();
    const flightdata::ZelTake& wanted = flightdata::Utility::takeFromLineNumber(*flight, m_lineNumber);
    int position = 0;
    for (const flightdata::ZelLine& line : flight->lines()) {
        for (const flightdata::ZelTake& take : line.takes) {
            if (take.isDark())
                continue;
            if (&take == &wanted) {
                m_index = position;
                return m_index;
            }
            ++position;
        }
    }
    throw std::runtime_error("No take for line number " + std::to_string(m_lineNumber) + " in the flight data");
}

RecordingSession& Take::session() const
{
    auto* session = dynamic_cast<RecordingSession*>(m_manager);
    if (!session)
        throw std::runtime_error("Take is not connected to a session");
    return *session;
}

Block& Take::block() const
{
    auto* block = dynamic_cast<Block*>(m_manager);
    if (!block)
        throw std::runtime_error("Take is not connected to a block");
    return *block;
}

std::vector<std::string> Take::availableBands() const
{
    if (m_availableBands.empty()) {
        for (const L0Image* image : m_imagesL0) {
            if (image && std::find(m_availableBands.begin(), m_availableBands.end(), image->bandName())
                    == m_availableBands.end())
                m_availableBands.push_back(image->bandName());
        }
    }
    return m_availableBands;
}

std::vector<std::string> Take::availableHiResBands() const
{
    const L0Image* reference = nullptr;
    for (const L0Image* image : m_imagesL0) {
        if (image && image->bandName().size() >= 7 && image->bandName()[6] == 'B'
            && std::abs(image->lookAngle()) < 5.0) {
            reference = image;
            break;
        }
    }
    std::vector<std::string> bands;
    if (!reference)
        return bands;
    const std::string prefix = reference->bandName().substr(0, 6);
    for (const std::string& band : availableBands())
        if (band.compare(0, 6, prefix) == 0)
            bands.push_back(band);
    return bands;
}

void Take::removeBandsExcept(const std::vector<std::string>& bands)
{
    if (bands.empty())
        throw std::runtime_error("Need at least one band to keep.");
    for (const std::string& band : bands) {
        const bool found = std::any_of(m_imagesL0.begin(), m_imagesL0.end(),
                                       [&](const L0Image* image) { return image && image->bandName() == band; });
        if (!found)
            throw std::runtime_error("Band " + band + " not found in take " + name());
    }
    const std::vector<L0Image*> images = m_imagesL0;
    for (L0Image* image : images) {
        if (image && std::find(bands.begin(), bands.end(), image->bandName()) == bands.end())
            remove(static_cast<Image*>(image));
    }
}

void Take::remove(ImageCollection*)
{
    throw std::runtime_error("A take holds no collections: " + name());
}

void Take::remove(Image* image)
{
    auto l0 = std::find_if(m_imagesL0.begin(), m_imagesL0.end(),
                           [image](L0Image* candidate) { return candidate && static_cast<Image*>(candidate) == image; });
    if (l0 != m_imagesL0.end()) {
        m_imagesL0.erase(l0);
    } else {
        auto l2 = std::find_if(m_imagesL2.begin(), m_imagesL2.end(), [image](L2Image* candidate) {
            return candidate && static_cast<Image*>(candidate) == image;
        });
        if (l2 == m_imagesL2.end())
            throw std::runtime_error("Trying to remove an Image not in this Take.");
        m_imagesL2.erase(l2);
    }
    delete image;
    m_availableBands.clear();
}

void Take::addImage(L0Image* image)
{
    m_imagesL0.push_back(image);
    m_availableBands.clear();
}

void Take::addImage(L2Image* image)
{
    m_imagesL2.push_back(image);
}

void Take::addDarkTake(Take* take)
{
    m_darkTakes.push_back(take);
}

void Take::removeDarkTake(const Take* take)
{
    m_darkTakes.erase(std::remove(m_darkTakes.begin(), m_darkTakes.end(), take), m_darkTakes.end());
}

void Take::minMaxGpsTimes(double& min, double& max) const
{
    // max starts at the smallest positive double, not the most negative one:
    // GPS times of the week are never negative.
    min = std::numeric_limits<double>::max();
    max = std::numeric_limits<double>::min();
    for (const L0Image* image : m_imagesL0) {
        if (!image)
            continue;
        Seconds first;
        Seconds last;
        try {
            image->cameraTime().computeMinMax(first, last);
        } catch (const std::exception&) {
            continue;
        }
        min = std::min(min, first.value());
        max = std::max(max, last.value());
    }
    if (min == std::numeric_limits<double>::max())
        throw std::runtime_error("Cannot compute min/max times for the image lines.");
}

void Take::setImuTrajectorySource(const RecordingSession::ImuTrajectoryId& id)
{
    m_trajectorySource = std::make_unique<RecordingSession::ImuTrajectoryId>(id);
}

void Take::setEopTrajectory(const std::string& path)
{
    m_eopFilename = QFileInfo(QString::fromStdString(path)).fileName().toStdString();
}

void Take::setAdjustedEopTrajectory(const std::string& path)
{
    m_adjustedEopFilename = QFileInfo(QString::fromStdString(path)).fileName().toStdString();
}

const Take::StartStopInformation& Take::startInfo() const
{
    if (!m_start)
        throw std::runtime_error("No start/stop position information for take.");
    return *m_start;
}

const Take::StartStopInformation& Take::stopInfo() const
{
    if (!m_stop)
        throw std::runtime_error("No start/stop position information for take.");
    return *m_stop;
}

void Take::initializePositionInfo() const
{
    // Longitudes are in degrees within [-180, 180]: a line that crosses the
    // meridian jumps from one end of that range to the other.
    const double startLon = startInfo().position.x;
    const double stopLon = stopInfo().position.x;
    if (std::abs(stopLon - startLon) > 180.0)
        throw std::runtime_error("Crossed the dateline: " + name());
}

geo::XYPoint Take::startPosition() const { return startInfo().position; }
geo::XYPoint Take::stopPosition() const { return stopInfo().position; }
float Take::startHeight() const { return startInfo().heightM; }
float Take::stopHeight() const { return stopInfo().heightM; }
QDateTime Take::startTime() const { return startInfo().time; }
QDateTime Take::stopTime() const { return stopInfo().time; }

void Take::setStartTimePosHeight(const QDateTime& time, const geo::XYPoint& position, float heightM)
{
    m_start = StartStopInformation{time, position, heightM};
}

void Take::setStopTimePosHeight(const QDateTime& time, const geo::XYPoint& position, float heightM)
{
    m_stop = StartStopInformation{time, position, heightM};
}

ImuTrajectory& Take::imuTrajectory()
{
    if (m_imuTrajectory)
        return *m_imuTrajectory;
    const auto* session = dynamic_cast<const RecordingSession*>(m_manager);
    if (!m_trajectorySource || !session)
        throw std::runtime_error("No IMU Trajectory for take " + name());
    m_imuTrajectory = session->createImuTrajectory(*m_trajectorySource);
    return *m_imuTrajectory;
}

geo::XYPoint Take::computeAnchorPoint(const RecordingSession::ImuTrajectoryId* id, bool degrees) const
{
    const auto* session = dynamic_cast<const RecordingSession*>(m_manager);
    std::vector<RecordingSession::ImuTrajectoryId*> listed;
    if (session)
        listed = session->imuTrajectories();
    if (!id)
        id = m_trajectorySource ? m_trajectorySource.get() : (listed.empty() ? nullptr : listed.front());
    if (!id || !session)
        throw std::runtime_error("Can't find an anchor point; there are no IMU trajectories.");
    if (m_imagesL0.empty())
        throw std::runtime_error("No images; can't determine start position.");
    return startOn(*session->createImuTrajectory(*id), degrees);
}

geo::XYPoint Take::startOn(const ImuTrajectory& trajectory, bool degrees) const
{
    ImuRecord record;
    trajectory.getPosRecord(m_imagesL0.front()->cameraTime().value(0), record);
    const double scale = degrees ? 180.0 / std::numbers::pi : 1.0;
    return geo::XYPoint(record.longitude * scale, record.latitude * scale);
}

void Take::setImuTrajectory(const RecordingSession::ImuTrajectoryId& id, const geo::XYPoint* anchorDeg,
                            util::ProgressInterface* progress)
{
    if (m_imagesL0.empty())
        throw std::runtime_error("No images; can't generate EOPs.");
    const auto* session = dynamic_cast<const RecordingSession*>(m_manager);
    if (!session)
        throw std::runtime_error("No IMU Trajectory for take " + name());
    double minSec = 0.0;
    double maxSec = 0.0;
    minMaxGpsTimes(minSec, maxSec);
    std::unique_ptr<ImuTrajectory> imu = session->createImuTrajectory(id);
    // The anchor from the trajectory just opened, not from a second opening.
    const geo::XYPoint anchor = anchorDeg ? *anchorDeg : startOn(*imu, true);
    constexpr double degToRad = std::numbers::pi / 180.0;
    const Sensor& sensor = session->sensor();
    auto eop = std::make_unique<EopTrajectory>(*imu, seconds(minSec), seconds(maxSec),
                                               geo::XYZPoint(anchor.x * degToRad, anchor.y * degToRad, 0.0),
                                               sensor.misalignment(), sensor.nominalZOffsetM(),
                                               session->flightDate(), progress);
    // Only a whole generation changes the take.
    m_trajectorySource = std::make_unique<RecordingSession::ImuTrajectoryId>(id);
    m_imuTrajectory = std::move(imu);
    m_originalEop = std::move(eop);
    m_eopGenerated = true;
}

EopTrajectory& Take::originalEopTrajectory()
{
    if (m_originalEop)
        return *m_originalEop;
    if (m_eopFilename.empty())
        throw std::runtime_error("No EOP trajectory for " + name());
    m_originalEop = std::make_unique<EopTrajectory>(locateFileInSession(m_eopFilename), true);
    return *m_originalEop;
}

EopTrajectory& Take::adjustedEopTrajectory()
{
    if (m_adjustedEop)
        return *m_adjustedEop;
    if (m_adjustedEopFilename.empty())
        throw std::runtime_error("There is no adjusted EOP trajectory for " + name());
    m_adjustedEop = std::make_unique<EopTrajectory>(locateFileInSession(m_adjustedEopFilename), true);
    return *m_adjustedEop;
}

EopTrajectory& Take::eopTrajectory()
{
    if (m_originalEop && m_adjustedEopFilename.empty())
        return *m_originalEop;
    if (!m_adjustedEopFilename.empty())
        return adjustedEopTrajectory();
    return originalEopTrajectory();
}

std::string Take::writeEopFile()
{
    if (!m_originalEop || !m_eopGenerated)
        throw std::runtime_error("No EOP to write.");
    const QString raw = QString::fromStdString(m_manager->directory(*this)) + QStringLiteral("/raw");
    if (!QDir().mkpath(raw))
        throw std::runtime_error("Failed to create: " + raw.toStdString());
    const std::string path = (raw + QLatin1Char('/') + QString::fromStdString(name()) + QStringLiteral(".eop")).toStdString();
    m_originalEop->write(path);
    setEopTrajectory(path);
    return path;
}

std::string Take::locateFileInSession(const std::string& name) const
{
    const std::string directory = m_manager->directory(*this);
    std::vector<std::string> candidates{directory + "/raw/" + name};
    if (!m_rawDataLocation.empty())
        candidates.push_back(m_rawDataLocation + "/raw/" + name);
    candidates.push_back(directory + "/images/" + name);
    for (const std::string& candidate : candidates) {
        const QFileInfo file(QString::fromStdString(candidate));
        if (file.exists())
            return file.absoluteFilePath().toStdString();
    }
    return QFileInfo(QString::fromStdString(candidates.front())).absoluteFilePath().toStdString();
}

std::string Take::findStpFile()
{
    const QString raw = QString::fromStdString(m_manager->directory(*this)) + QStringLiteral("/raw");
    if (!QDir().mkpath(raw))
        throw std::runtime_error("Failed to create: " + raw.toStdString());
    m_stpFilename = (raw + QLatin1Char('/') + QString::fromStdString(name()) + QStringLiteral(".stp")).toStdString();
    return m_stpFilename;
}

bool Take::stpFileExists() const
{
    if (!m_stpFilename.empty())
        return QFileInfo::exists(QString::fromStdString(m_stpFilename));
    // Where findStpFile() would put it, without creating the raw folder.
    return QFileInfo::exists(QString::fromStdString(m_manager->directory(*this) + "/raw/" + name() + ".stp"));
}

void Take::writeStpFile()
{
    const std::string path = findStpFile();
    QDomDocument document;
    QDomElement root = document.createElement(QString::fromLatin1(sStripTag));
    document.appendChild(root);
    write(root, document, true);

    const QFileInfo file(QString::fromStdString(path));
    if (!file.absoluteDir().exists())
        throw std::runtime_error("No such path: " + file.absolutePath().toStdString());
    util::XmlWriter::save(document, file.absoluteFilePath().toStdString(), "strip file",
                          "Couldn't open file \"" + path + "\".");
}

void Take::deleteStpFile()
{
    if (m_stpFilename.empty())
        findStpFile();
    QFile file(QString::fromStdString(m_stpFilename));
    if (file.exists() && !file.remove())
        throw std::runtime_error("Couldn't delete: " + m_stpFilename);
}

void Take::parseStpFile(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("error opening strip file:" + path, reason);
    QByteArray content;
    if (!util::XmlNesting::readChecked(file, QString::fromStdString(path), content))
        util::throwWithReason("error opening strip file:" + path, file.errorString().toStdString());
    QDomDocument document;
    QString error;
    if (!document.setContent(content, &error))
        throw std::runtime_error("error parsing xml file:" + path + ": " + error.toStdString());
    m_stpFilename = QFileInfo(file).absoluteFilePath().toStdString();
    read(document.documentElement(), QFileInfo(file), true);
}

void Take::write(Serializer& serializer) const
{
    write(serializer.element(), serializer.document(), true);
}

void Take::write(QDomElement& element, QDomDocument& document) const
{
    write(element, document, true);
}

void Take::write(QDomElement& element, QDomDocument& document, bool withCalibration) const
{
    // Check the one thing that can fail before anything is written.
    QString imagesLocation;
    for (const L0Image* image : m_imagesL0) {
        if (!image)
            continue;
        const QString directory = QFileInfo(QString::fromStdString(image->filename())).absolutePath();
        if (imagesLocation.isNull())
            imagesLocation = directory;
        else if (directory != imagesLocation)
            throw std::runtime_error("All images in the strip don't exist in the same location: "
                                     + directory.toStdString() + " vs " + imagesLocation.toStdString());
    }

    element.setAttribute(QStringLiteral("version"), QString::fromLatin1(sStripVersion));
    element.setAttribute(QStringLiteral("name"), QString::fromStdString(name()));
    element.setAttribute(QStringLiteral("mean_terrain_height"), QString::number(m_meanTerrainHeightM));
    if (m_lineNumber != sUnsetLineNumber)
        element.setAttribute(QStringLiteral("lineNumber"), QString::number(m_lineNumber));
    if (!m_lineLabel.empty())
        element.setAttribute(QStringLiteral("lineLabel"), QString::fromStdString(m_lineLabel));

    QDomElement rawData = document.createElement(QStringLiteral("RawData"));
    rawData.setAttribute(QStringLiteral("location"),
                         QString::fromStdString(m_rawDataLocation.empty() ? m_manager->directory(*this)
                                                                          : m_rawDataLocation));
    element.appendChild(rawData);

    QDomElement images = document.createElement(QStringLiteral("Images"));
    images.setAttribute(QStringLiteral("location"), imagesLocation);
    for (const L0Image* image : m_imagesL0)
        if (image)
            image->write(images, document);
    element.appendChild(images);

    QDomElement products = document.createElement(QStringLiteral("ProductsCache"));
    for (const L2Image* image : m_imagesL2)
        if (image)
            image->write(products, document);
    element.appendChild(products);

    if (withCalibration) {
        QDomElement calibration = document.createElement(QStringLiteral("Calibration"));
        calibration.setAttribute(QStringLiteral("sensor_type"), QString::fromStdString(m_sensorType));
        calibration.setAttribute(QStringLiteral("sensor_id"), QString::fromStdString(m_sensorId));
        calibration.setAttribute(QStringLiteral("version"), QStringLiteral("v%1").arg(m_calibrationVersion));
        element.appendChild(calibration);
    }

    if (!m_eopFilename.empty() || !m_adjustedEopFilename.empty()) {
        QDomElement eop = document.createElement(QStringLiteral("EOP"));
        if (!m_eopFilename.empty())
            eop.setAttribute(QStringLiteral("filename"), QString::fromStdString(m_eopFilename));
        if (!m_adjustedEopFilename.empty())
            eop.setAttribute(QStringLiteral("filename_adjusted"), QString::fromStdString(m_adjustedEopFilename));
        element.appendChild(eop);
    }

    if (m_trajectorySource) {
        QDomElement trajectory = document.createElement(QStringLiteral("trajectory"));
        trajectory.appendChild(document.createTextNode(QString::fromStdString(m_trajectorySource->toString())));
        element.appendChild(trajectory);
    }

    if (m_start) {
        QDomElement start = document.createElement(QStringLiteral("Start"));
        fillContents(start, document, *m_start);
        element.appendChild(start);
    }
    if (m_stop) {
        QDomElement stop = document.createElement(QStringLiteral("Stop"));
        fillContents(stop, document, *m_stop);
        element.appendChild(stop);
    }

    QDomElement darkTakes = document.createElement(QStringLiteral("DarkTakes"));
    for (const Take* dark : m_darkTakes) {
        if (!dark)
            continue;
        QDomElement strip = document.createElement(QString::fromLatin1(sStripTag));
        dark->write(strip, document, false);
        darkTakes.appendChild(strip);
    }
    element.appendChild(darkTakes);
}

void Take::read(Serializer& serializer)
{
    read(serializer.element(), QFileInfo(QString::fromStdString(m_stpFilename)), true);
}

void Take::read(const QDomElement& element, const QFileInfo& stripFile, bool topLevel)
{
    if (element.tagName() != QLatin1String(sStripTag))
        throw std::runtime_error(std::string("wrong file format: expected \"") + sStripTag + "\" but saw \""
                                 + util::excerpt(element.tagName()) + "\"");
    const QString version = element.attribute(QStringLiteral("version"));
    if (version != QLatin1String(sStripVersion))
        throw std::runtime_error(std::string("wrong file version: expected \"") + sStripVersion + "\" but saw \""
                                 + util::excerpt(version) + "\"");

    m_meanTerrainHeightM = element.attribute(QStringLiteral("mean_terrain_height"), QStringLiteral("0.f")).toFloat();
    setName(element.attribute(QStringLiteral("name"), QStringLiteral("unknown")).toStdString());
    if (element.hasAttribute(QStringLiteral("lineNumber"))) {
        bool ok = false;
        const uint lineNumber = element.attribute(QStringLiteral("lineNumber")).toUInt(&ok, 10);
        if (ok)
            m_lineNumber = lineNumber;
    }
    m_lineLabel = element.attribute(QStringLiteral("lineLabel")).toStdString();

    m_calibrationVersion = -1;
    m_sensorId = "UNKNOWN";
    m_sensorType = "UNKNOWN";

    const QString stripDirectory = stripFile.absolutePath();
    const QString canonicalDirectory = QFileInfo(stripDirectory).canonicalFilePath().isEmpty()
        ? stripDirectory
        : QFileInfo(stripDirectory).canonicalFilePath();
    bool rawDataSet = false;
    unsigned runningIndex = 0;

    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        const QString tag = child.tagName();
        if (tag == QLatin1String("Images")) {
            m_imagesLocation = resolveLocation(child.attribute(QStringLiteral("location")), stripFile);
            for (QDomElement image = child.firstChildElement(); !image.isNull();
                 image = image.nextSiblingElement(), ++runningIndex) {
                if (image.tagName() != QLatin1String("Image"))
                    continue;
                if (!image.hasAttribute(QStringLiteral("filename")))
                    throw std::runtime_error("Expected attribute \"filename\" on tag <Image>");
                const QString fileName = image.attribute(QStringLiteral("filename"));
                auto inStripDirectory = [&](const QString& attribute) {
                    const QString name = QFileInfo(image.attribute(attribute)).fileName();
                    return name.isEmpty() ? std::string() : (canonicalDirectory + QLatin1Char('/') + name).toStdString();
                };
                const std::string timing = inStripDirectory(QStringLiteral("timing"));
                const std::string footprint = inStripDirectory(QStringLiteral("footprint"));

                std::unique_ptr<IntegrationTime> integrationTime;
                if (!image.hasAttribute(QStringLiteral("it"))) {
                    integrationTime = std::make_unique<IntegrationTimeZelV1>(seconds(-1.0));
                } else {
                    bool isNumber = false;
                    const float milliseconds = image.attribute(QStringLiteral("it")).toFloat(&isNumber);
                    if (isNumber)
                        integrationTime = std::make_unique<IntegrationTimeZelV1>(seconds(milliseconds * 0.001));
                    else
                        integrationTime = std::make_unique<IntegrationTimeZelV2>(
                            (stripDirectory + QLatin1Char('/') + image.attribute(QStringLiteral("it"))).toStdString());
                }
                std::unique_ptr<TdiData> tdiData;
                if (image.hasAttribute(QStringLiteral("tdi")))
                    tdiData = std::make_unique<TdiDataZelV2>(
                        (stripDirectory + QLatin1Char('/') + image.attribute(QStringLiteral("tdi"))).toStdString());
                else
                    tdiData = std::make_unique<TdiDataZelV1>();

                const std::string timingBase = QFileInfo(QString::fromStdString(timing)).baseName().toStdString();
                const std::string ctFile = locateFileInSession(timingBase + ".ct");
                std::string infoFile = locateFileInSession(timingBase + ".info");
                if (!QFileInfo::exists(QString::fromStdString(infoFile)))
                    infoFile.clear();

                bool ok = false;
                unsigned swath = image.attribute(QStringLiteral("swath"), QStringLiteral("12000")).toUInt(&ok, 10);
                if (!ok)
                    swath = 12000;
                unsigned offset = image.attribute(QStringLiteral("offset"), QStringLiteral("0")).toUInt(&ok, 10);
                if (!ok)
                    offset = 0;

                QString pixelFile = QString::fromStdString(m_imagesLocation) + QLatin1Char('/') + fileName;
                if (!QFileInfo::exists(pixelFile))
                    pixelFile = QString::fromStdString(m_manager->directory(*this)) + QStringLiteral("/images/")
                        + fileName;
                addImage(new L0Image(*this, runningIndex, QFileInfo(pixelFile).absoluteFilePath().toStdString(),
                                     image.attribute(QStringLiteral("band")).toStdString(), std::move(integrationTime),
                                     std::move(tdiData), swath, offset, infoFile, ctFile, timing, footprint));
            }
        } else if (tag == QLatin1String("ProductsCache")) {
            for (QDomElement product = child.firstChildElement(); !product.isNull();
                 product = product.nextSiblingElement())
                addImage(new L2Image(*this, product));
        } else if (tag == QLatin1String("Calibration")) {
            m_calibrationVersion = -1;
            QString versionText = child.attribute(QStringLiteral("version"));
            if (versionText.startsWith(QLatin1Char('v')))
                versionText.remove(0, 1);
            bool ok = false;
            const int calibrationVersion = versionText.toInt(&ok, 10);
            if (!ok || calibrationVersion < 0)
                throw std::runtime_error("missing attribute \"version\" for element \"Calibration\"!");
            m_calibrationVersion = calibrationVersion;
            m_sensorId = child.attribute(QStringLiteral("sensor_id")).toStdString();
            if (m_sensorId.empty())
                throw std::runtime_error("missing attribute \"sensor_id\" for element \"Calibration\"!");
            m_sensorType = child.attribute(QStringLiteral("sensor_type"), QStringLiteral("ZELM4")).toStdString();
        } else if (tag == QLatin1String("EOP")) {
            setEopTrajectory(child.attribute(QStringLiteral("filename")).toStdString());
            const QString adjusted = child.attribute(QStringLiteral("filename_adjusted")).trimmed();
            if (adjusted.isEmpty())
                m_adjustedEopFilename.clear();
            else
                setAdjustedEopTrajectory(adjusted.toStdString());
        } else if (tag == QLatin1String("RawData")) {
            const QString location = child.attribute(QStringLiteral("location"));
            if (location.isEmpty())
                throw std::runtime_error("missing attribute \"location\" for element \"RawData\"!");
            m_rawDataLocation = resolveLocation(location, stripFile);
            rawDataSet = true;
        } else if (tag == QLatin1String("Start")) {
            m_start = readContents(child);
        } else if (tag == QLatin1String("Stop")) {
            m_stop = readContents(child);
        } else if (tag == QLatin1String("DarkTakes")) {
            for (QDomElement strip = child.firstChildElement(QString::fromLatin1(sStripTag)); !strip.isNull();
                 strip = strip.nextSiblingElement(QString::fromLatin1(sStripTag))) {
                auto dark = std::make_unique<Take>(*m_manager);
                addDarkTake(dark.get());
                Take* raw = dark.get();
                m_ownedDarkTakes.push_back(std::move(dark));
                raw->read(strip, stripFile, false);
            }
        }
    }

    if (m_imagesL0.empty())
        throw std::runtime_error("Take contains no usable images");
    if (topLevel && (m_calibrationVersion < 0 || m_sensorId.empty()))
        throw std::runtime_error("missing element: \"Calibration\"");
    if (!rawDataSet)
        throw std::runtime_error("missing element: \"RawData\"");

    const QDomNodeList trajectories = element.elementsByTagName(QStringLiteral("trajectory"));
    if (trajectories.count() > 1)
        throw std::runtime_error("Expected at most one <trajectory> tag.");
    if (trajectories.count() == 1) {
        const QString text = trajectories.item(0).toElement().text();
        if (!text.isEmpty())
            setImuTrajectorySource(RecordingSession::ImuTrajectoryId(text.toStdString()));
    }
}

void Take::uncache()
{
    // Nothing is cached on a take yet.
}

void Take::traverse(CacheManager& manager)
{
    manager.traverse(*this);
}

void Take::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
