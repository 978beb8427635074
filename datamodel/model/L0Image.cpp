#include <datamodel/model/L0Image.h>
#include <datamodel/model/Serializer.h>

#include <datamodel/model/Band.h>
#include <datamodel/model/CacheManager.h>
#include <datamodel/model/InfoFile.h>
#include <datamodel/model/Take.h>
#include <datamodel/model/TakeManager.h>
#include <datamodel/timing/IntegrationTimeZelV1.h>
#include <datamodel/timing/TdiDataZelV1.h>
#include <datamodel/validation/ValidationTraverser.h>

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
        const std::string directory = take().manager().directory(take());
        m_filename = directory + "/images/" + staticName() + ".lri";
    }
    return m_filename;
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
    // Nothing is cached on a level-0 image yet.
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
