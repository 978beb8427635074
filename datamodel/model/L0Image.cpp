#include <datamodel/model/L0Image.h>
#include <datamodel/model/Serializer.h>

#include <datamodel/model/Band.h>
#include <datamodel/model/CacheManager.h>
#include <datamodel/model/InfoFile.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/model/TakeManager.h>
#include <datamodel/timing/CameraTime.h>
#include <datamodel/timing/IntegrationTimeZelV1.h>
#include <datamodel/timing/TdiDataZelV1.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <platform/flightdata/Utility.h>
#include <platform/util/FileSessionNameGenerator.h>

#include <QDir>
#include <QDomElement>
#include <QFileInfo>

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace datamodel {

L0Image::L0Image(Take& take, unsigned index, const InfoFile& info, const std::string& pixelFile,
                 const std::string& ctFile, const std::string& ctgFile, const std::string& fptFile,
                 unsigned swathWidthPx, unsigned sampleOffsetPx)
    : Image(take)
    , m_index(index)
    , m_bandName(info.bandId())
    , m_swathWidthPx(swathWidthPx)
    , m_sampleOffsetPx(sampleOffsetPx)
    , m_infoFileName(info.infoFileName())
    , m_info(std::make_unique<InfoFile>(info))
    , m_integrationTime(std::make_unique<IntegrationTimeZelV1>(info.integrationTime()))
    , m_tdiData(std::make_unique<TdiDataZelV1>())
    , m_filename(pixelFile)
    , m_ctFilename(ctFile)
    , m_ctgFilename(ctgFile)
    , m_fptFilename(fptFile)
{
    addBand(new Band(take, *this, m_bandName, 0));
}

L0Image::L0Image(Take& take, unsigned index, const std::string& pixelFile, const std::string& bandName,
                 std::unique_ptr<IntegrationTime> integrationTime, std::unique_ptr<TdiData> tdiData,
                 unsigned swathWidthPx, unsigned sampleOffsetPx, const std::string& infoFile,
                 const std::string& ctFile, const std::string& ctgFile, const std::string& fptFile)
    : Image(take)
    , m_index(index)
    , m_bandName(bandName)
    , m_swathWidthPx(swathWidthPx)
    , m_sampleOffsetPx(sampleOffsetPx)
    , m_infoFileName(infoFile)
    , m_integrationTime(integrationTime ? std::move(integrationTime)
                                        : std::make_unique<IntegrationTimeZelV1>(seconds(-1.0)))
    , m_tdiData(tdiData ? std::move(tdiData) : std::make_unique<TdiDataZelV1>())
    , m_filename(pixelFile)
    , m_ctFilename(ctFile)
    , m_ctgFilename(ctgFile)
    , m_fptFilename(fptFile)
{
    addBand(new Band(take, *this, m_bandName, 0));
}

L0Image::~L0Image() = default;

double L0Image::lookAngle() const
{
    // The camera description knows the angle exactly; without one, the band
    // code's two digits give it in whole degrees.
    if (const auto* session = dynamic_cast<const RecordingSession*>(&take().manager())) {
        try {
            const Sensor& sensor = session->sensor();
            if (const Sensor::BandGeometry* geometry = sensor.band(m_bandName))
                return geometry->lookAngleDeg;
        } catch (const std::exception&) {
            // Fall back to the band code.
        }
    }
    return Band::lookAngleFromName(m_bandName);
}

const InfoFile& L0Image::infoFile() const
{
    if (!m_info) {
        if (m_infoFileName.empty())
            throw std::runtime_error("No .info file for band: " + m_bandName);
        m_info = std::make_unique<InfoFile>(m_infoFileName, InfoFile::STRIPNAMEREGEX);
    }
    return *m_info;
}

void L0Image::setIntegrationTime(std::unique_ptr<IntegrationTime> integrationTime)
{
    if (integrationTime)
        m_integrationTime = std::move(integrationTime);
}

void L0Image::setTdiData(std::unique_ptr<TdiData> tdiData)
{
    if (tdiData)
        m_tdiData = std::move(tdiData);
}

CameraTime& L0Image::cameraTime()
{
    if (!m_cameraTime)
        m_cameraTime = std::make_unique<CameraTime>(*this);
    return *m_cameraTime;
}

const CameraTime& L0Image::cameraTime() const
{
    if (!m_cameraTime)
        m_cameraTime = std::make_unique<CameraTime>(*this);
    return *m_cameraTime;
}

std::string L0Image::staticName(const std::string& lineLabel, const QDateTime& start, unsigned serial,
                                const std::string& bandName)
{
    return lineLabel
        + QStringLiteral("_%1_%2_%3")
              .arg(serial % 10000, 3, 10, QLatin1Char('0'))
              .arg(start.toString(QStringLiteral("yyMMdd_HHmm")), QString::fromStdString(bandName))
              .toStdString();
}

std::string L0Image::staticName() const
{
    const Take& owner = take();
    std::string label = owner.label();
    if (label.empty() && !owner.imagesL0().empty() && owner.imagesL0().front())
        label = owner.imagesL0().front()->infoFile().lineLabel();
    bool ok = false;
    const unsigned serial = QString::fromStdString(owner.sensorId()).toUInt(&ok, 10);
    if (!ok)
        throw std::runtime_error("The sensor ID for this camera is not numeric! (" + owner.sensorId() + ")");
    return staticName(label, owner.startTime(), serial, m_bandName);
}

const std::string& L0Image::filename() const
{
    if (m_filename.empty()) {
        const auto* session = dynamic_cast<const RecordingSession*>(&take().manager());
        const std::string base = session && !session->fileNamingPattern().empty()
            ? dynamicName(session->fileNamingPattern())
            : staticName();
        // Bands of the newer sensor generation are recorded as .lov files.
        bool newerGeneration = false;
        if (session) {
            try {
                newerGeneration = flightdata::Utility::isZelM9(*session->flightDataSession());
            } catch (const std::exception&) {
                newerGeneration = false;
            }
        }
        m_filename = take().manager().directory(take()) + "/images/" + base + (newerGeneration ? ".lov" : ".lri");
    }
    return m_filename;
}

std::string L0Image::dynamicName(const std::string& pattern, const std::string& lineLabel, long long lineNumber,
                                 const QDateTime& start, const std::string& sensorId, const std::string& sensorType,
                                 const std::string& bandName)
{
    bool ok = false;
    const unsigned serial = QString::fromStdString(sensorId).toUInt(&ok, 10);
    if (!ok)
        throw std::runtime_error("The sensor ID for this camera is not numeric! (" + sensorId + ")");
    util::FileSessionNameGenerator::Options options;
    options.band = bandName;
    options.lineName = lineLabel;
    options.lineNumber = lineNumber;
    options.serial = serial;
    options.start = start;
    options.sensorType = sensorType;
    return util::FileSessionNameGenerator(options, QString::fromStdString(pattern)).createNameFromPattern();
}

std::string L0Image::dynamicName(const std::string& pattern) const
{
    const Take& owner = take();
    std::string label = owner.label();
    long long lineNumber = owner.lineNumber() == Take::sUnsetLineNumber ? -1 : owner.lineNumber();
    if (hasInfoFile()) {
        if (label.empty())
            label = infoFile().lineLabel();
        lineNumber = infoFile().lineNumber();
    }
    return dynamicName(pattern, label, lineNumber, owner.startTime(), owner.sensorId(), owner.sensorType(),
                       m_bandName);
}

void L0Image::resetFilename()
{
    m_filename.clear();
}

std::string L0Image::sideFile(const char* extension) const
{
    const QString base = QFileInfo(QString::fromStdString(filename())).completeBaseName();
    return take().manager().directory(take()) + "/raw/" + base.toStdString() + extension;
}

const std::string& L0Image::ctFilename() const
{
    if (m_ctFilename.empty())
        m_ctFilename = sideFile(".ct");
    return m_ctFilename;
}

const std::string& L0Image::ctgFilename() const
{
    if (m_ctgFilename.empty())
        m_ctgFilename = sideFile(".ctg");
    return m_ctgFilename;
}

const std::string& L0Image::itFilename() const
{
    if (m_itFilename.empty())
        m_itFilename = sideFile(".it");
    return m_itFilename;
}

const std::string& L0Image::tdiFilename() const
{
    if (m_tdiFilename.empty())
        m_tdiFilename = sideFile(".tdi");
    return m_tdiFilename;
}

const std::string& L0Image::fptFilename() const
{
    if (m_fptFilename.empty())
        m_fptFilename = sideFile(".fpt");
    return m_fptFilename;
}

std::string L0Image::darkFilename() const
{
    return sideFile(".dark");
}

std::string L0Image::statFilename() const
{
    const QFileInfo pixelFile(QString::fromStdString(filename()));
    return (pixelFile.absolutePath() + QLatin1Char('/') + pixelFile.completeBaseName() + QStringLiteral(".stat"))
        .toStdString();
}

bool L0Image::hasStatistics() const
{
    return QFileInfo::exists(QString::fromStdString(statFilename()));
}

bool L0Image::hasMinFile() const
{
    const QFileInfo pixelFile(QString::fromStdString(filename()));
    const QString directory = pixelFile.dir().canonicalPath();
    if (directory.isEmpty())
        return false;
    return QFileInfo::exists(directory + QLatin1Char('/') + pixelFile.baseName() + QStringLiteral(".min"));
}

std::string L0Image::maskFilename() const
{
    // The mask is shared by the bands of one look-angle group: the channel,
    // the look direction and the group's look angle in whole degrees name it;
    // the staggered PAN lines have one mask each.
    const QFileInfo pixelFile(QString::fromStdString(filename()));
    const double angle = lookAngle();
    const char direction = angle > 0.5 ? 'F' : (angle < -0.5 ? 'B' : 'N');
    const int groupAngle = static_cast<int>(std::lround(std::abs(angle)));
    const std::string channel = m_bandName.size() >= 3 ? m_bandName.substr(0, 3) : m_bandName;
    char code[16];
    std::snprintf(code, sizeof code, "%c%02d", direction, groupAngle % 100);
    std::string name = channel + code;
    if (channel == "PAN" && !m_bandName.empty() && (m_bandName.back() == 'A' || m_bandName.back() == 'B'))
        name += m_bandName.back();
    return pixelFile.absolutePath().toStdString() + "/" + name + "_mask.zel";
}

raster::ImageReader& L0Image::reader() const
{
    throw std::runtime_error("Reading level-0 pixel data is not supported yet: " + filename());
}

utzRaster::ImageWriter* L0Image::createWriter(const utzRaster::ImageGeometry&, bool, ImageType)
{
    throw std::runtime_error("Writing level-0 pixel data is not supported yet: " + filename());
}

void L0Image::write(Serializer& serializer) const
{
    write(serializer.element(), serializer.document());
}

void L0Image::write(QDomElement& parent, QDomDocument& document) const
{
    QDomElement element = document.createElement(QStringLiteral("Image"));
    auto fileName = [](const std::string& path) { return QFileInfo(QString::fromStdString(path)).fileName(); };
    element.setAttribute(QStringLiteral("filename"), fileName(filename()));
    element.setAttribute(QStringLiteral("band"), QString::fromStdString(m_bandName));
    element.setAttribute(QStringLiteral("timing"), fileName(ctgFilename()));
    element.setAttribute(QStringLiteral("footprint"), fileName(fptFilename()));
    m_integrationTime->addXmlAttribute(element);
    m_tdiData->addXmlAttribute(element);
    element.setAttribute(QStringLiteral("swath"), m_swathWidthPx);
    element.setAttribute(QStringLiteral("offset"), m_sampleOffsetPx);
    parent.appendChild(element);
}

void L0Image::read(Serializer&)
{
    throw std::runtime_error("A level-0 image is read as part of its strip: " + filename());
}

void L0Image::uncache()
{
    m_cameraTime.reset();
}

void L0Image::traverse(CacheManager& manager)
{
    manager.traverse(*this);
}

void L0Image::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
