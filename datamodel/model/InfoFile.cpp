#include <datamodel/model/InfoFile.h>

#include <datamodel/validation/ValidationTraverser.h>

#include <platform/util/ErrorText.h>
#include <platform/util/RegularFile.h>
#include <platform/util/XmlNesting_p.h>

#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>

#include <cmath>
#include <stdexcept>

namespace datamodel {

const QString InfoFile::STRIPNAMEREGEX = QStringLiteral("(.+)(_?)(RED|BLU|GRN|PAN|NIR)(F|B|N)([0-9]{2,2})(A|B)");

namespace {

// Dates of .info files: "d MMMM yyyy, HH:mm:ss" with English month names, UTC.
// Date and time are read apart and joined in UTC, so that a time that does
// not exist in the machine's local zone (a daylight-saving gap) still parses.
QDateTime parseDateTime(const QString& text)
{
    const QLocale c = QLocale::c();
    const qsizetype comma = text.indexOf(QLatin1String(", "));
    QDateTime result;
    if (comma >= 0) {
        const QDate date = c.toDate(text.left(comma), QStringLiteral("d MMMM yyyy"));
        const QTime time = c.toTime(text.mid(comma + 2), QStringLiteral("HH:mm:ss"));
        if (date.isValid() && time.isValid())
            result = QDateTime(date, time, Qt::UTC);
    }
    if (result.isNull() || !result.isValid())
        throw std::runtime_error("Cannot parse time: " + util::excerpt(text));
    return result;
}

QDomElement firstElement(const QDomDocument& document, const QString& tag)
{
    const QDomNodeList nodes = document.elementsByTagName(tag);
    if (nodes.isEmpty())
        return QDomElement();
    const QDomNode node = nodes.item(0);
    return node.isElement() ? node.toElement() : QDomElement();
}

QString firstDescendantText(const QDomElement& parent, const QString& tag)
{
    const QDomNodeList nodes = parent.elementsByTagName(tag);
    return nodes.isEmpty() ? QString() : nodes.item(0).toElement().text();
}

// Reads time, longitude and latitude of a start or stop element. The altitude
// is present in the files but not used: heights come from the trajectory.
void readPosition(const QDomElement& element, QDateTime& time, double position[3], const std::string& failure)
{
    time = parseDateTime(firstDescendantText(element, QStringLiteral("time")));
    double longitude = 0.0;
    double latitude = 0.0;
    const bool lonOk = InfoFile::angleFromString(firstDescendantText(element, QStringLiteral("longitude")), longitude);
    const bool latOk = InfoFile::angleFromString(firstDescendantText(element, QStringLiteral("latitude")), latitude);
    if (!lonOk || !latOk)
        throw std::runtime_error(failure);
    position[0] = longitude;
    position[1] = latitude;
    position[2] = 0.0;
}

} // namespace

InfoFile::Validator::~Validator() = default;

void InfoFile::Validator::validate(InfoFile& file)
{
    if (file.sensorId().empty())
        throw std::runtime_error("The SensorId is empty in: " + file.infoFileName());
    if (file.sensorType().empty())
        throw std::runtime_error("The SensorType is empty in: " + file.infoFileName());
}

InfoFile::InfoFile(const std::string& path, const QString& stripNameRegex)
    : m_infoFileName(path)
{
    parseInfoFile();

    const QRegularExpression pattern(stripNameRegex, QRegularExpression::InvertedGreedinessOption);
    const QString baseName = QFileInfo(QString::fromStdString(path)).baseName();
    const QRegularExpressionMatch match = pattern.match(baseName);
    if (!pattern.isValid() || !match.hasMatch())
        throw std::runtime_error("Could not deduct Take naming from info file name " + path);
    m_stripName = match.captured(1).toStdString();
}

InfoFile::InfoFile(const InfoFile& other) = default;
InfoFile& InfoFile::operator=(const InfoFile& other) = default;
InfoFile::~InfoFile() = default;

void InfoFile::parseInfoFile()
{
    QFile file(QString::fromStdString(m_infoFileName));
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Cannot open .info file: " + m_infoFileName, reason);

    const QString path = QString::fromStdString(m_infoFileName);
    QByteArray content;
    if (!util::XmlNesting::readChecked(file, path, content))
        throw std::runtime_error("Cannot open .info file: " + m_infoFileName);
    QDomDocument document;
    if (!document.setContent(content))
        throw std::runtime_error("Cannot open parse XLM .info file: " + m_infoFileName);

    auto text = [&](const char* tag, std::string& target) {
        const QDomElement element = firstElement(document, QString::fromLatin1(tag));
        if (!element.isNull())
            target = element.text().toStdString();
    };

    text("sensor_serialnumber", m_sensorId);
    text("sensor_type", m_sensorType);

    const QDomElement ccd = firstElement(document, QStringLiteral("ccd_id"));
    if (!ccd.isNull())
        m_bandId = ccd.attribute(QStringLiteral("name")).toStdString();

    const QDomElement lineNumber = firstElement(document, QStringLiteral("line_number"));
    if (!lineNumber.isNull())
        m_lineNumber = lineNumber.text().toInt(nullptr, 10);

    text("line_label", m_lineLabel);

    const QDomElement start = firstElement(document, QStringLiteral("start"));
    if (!start.isNull())
        readPosition(start, m_lineStart, m_startPos, "Can't find lat/lon in info file: " + m_infoFileName);

    const QDomElement stop = firstElement(document, QStringLiteral("stop"));
    if (!stop.isNull())
        readPosition(stop, m_lineStop, m_stopPos, "Can't parse lat/lon in info file: " + m_infoFileName);

    const QDomElement flightStart = firstElement(document, QStringLiteral("flight_start"));
    for (QDomNode child = flightStart.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (child.nodeName() == QLatin1String("time"))
            m_flightStart = parseDateTime(child.toElement().text());
    }

    const QDomElement intTime = firstElement(document, QStringLiteral("int_time"));
    if (!intTime.isNull())
        m_integrationTimeSec = intTime.text().toDouble() * 0.001;

    text("CAMERA_TIME_FILE", m_ctFileName);
    text("PIXEL_FILE", m_pixelFilename);
}

geo::XYPoint InfoFile::centerPoint() const
{
    return geo::XYPoint((m_startPos[0] + m_stopPos[0]) / 2.0, (m_startPos[1] + m_stopPos[1]) / 2.0);
}

float InfoFile::meanFlyingHeight() const
{
    return static_cast<float>((m_startPos[2] + m_stopPos[2]) / 2.0);
}

bool InfoFile::angleFromString(const QString& text, double& value)
{
    value = 0.0;
    const qsizetype first = text.indexOf(QLatin1Char(':'));
    if (first == -1)
        return false;
    // The second colon's position in the whole text. When there is none,
    // indexOf gives -1 and the sum lands on the first colon, so minutes and
    // seconds are both read from the whole remainder; this leniency is kept
    // on purpose (existing files rely on "dd:mm" forms).
    const qsizetype second = text.mid(first + 1).indexOf(QLatin1Char(':')) + first + 1;

    const QString degreeText = text.left(first);
    bool ok = false;
    const int degrees = degreeText.toInt(&ok, 10);
    if (!ok)
        return false;
    const bool negative = degreeText.contains(QLatin1Char('-'));

    const qsizetype minutesLength = second - first - 1;
    const int minutes = text.mid(first + 1, minutesLength < 0 ? -1 : minutesLength).toInt(&ok, 10);
    if (!ok)
        return false;

    const double secondsValue = text.mid(second + 1).toDouble(&ok);
    if (!ok)
        return false;

    double result = std::abs(degrees) + minutes / 60.0 + secondsValue / 3600.0;
    if (negative)
        result = -result;
    value = result;
    return true;
}

void InfoFile::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
