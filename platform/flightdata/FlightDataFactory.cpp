#include <platform/flightdata/FlightDataFactory.h>

#include <platform/util/ErrorText.h>
#include <platform/util/InvalidFileError.h>
#include <platform/util/RegularFile.h>
#include <platform/util/XmlNesting_p.h>

#include <QDir>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace flightdata {

namespace {

class FlightDataSession final : public SessionInterface {
public:
    std::string m_id;
    std::string m_generation;
    std::string m_head;
    std::string m_serial;
    std::string m_type;
    std::string m_cameraFile;
    TimePosition m_flightStart;
    TimePosition m_firstTakeTime;
    std::vector<ZelLine> m_lines;

    const std::string& id() const override { return m_id; }
    const std::string& sensorGeneration() const override { return m_generation; }
    const std::string& sensorHead() const override { return m_head; }
    const std::string& sensorSerial() const override { return m_serial; }
    const std::string& sensorType() const override { return m_type; }
    const std::string& cameraFile() const override { return m_cameraFile; }
    const TimePosition& flightStart() const override { return m_flightStart; }
    const TimePosition& firstTakeTime() const override { return m_firstTakeTime; }
    const std::vector<ZelLine>& lines() const override { return m_lines; }
};

// Reads the flight-data file; every problem names the file and what is wrong.
class Reader {
public:
    explicit Reader(QString path) : m_path(std::move(path)) {}

    [[noreturn]] void fail(const QString& what) const
    {
        throw util::InvalidFileError(m_path.toStdString(),
                                     "Invalid flight data file " + m_path.toStdString() + ": " + what.toStdString());
    }

    /// A value quoted in a message, cut to a sane length.
    static QString quoted(const QString& value) { return QString::fromStdString(util::excerpt(value)); }

    /// The attribute's text, which must be there and not be blank.
    QString required(const QDomElement& element, const char* name) const
    {
        const QString attribute = QString::fromLatin1(name);
        if (!element.hasAttribute(attribute))
            fail(QStringLiteral("element <%1> has no attribute \"%2\"").arg(element.tagName(), attribute));
        const QString value = element.attribute(attribute);
        if (value.trimmed().isEmpty())
            fail(QStringLiteral("attribute \"%1\" of <%2> is empty").arg(attribute, element.tagName()));
        return value;
    }

    /// A decimal integer.
    long long integer(const QDomElement& element, const char* name) const
    {
        bool ok = false;
        const QString text = required(element, name);
        const long long value = text.toLongLong(&ok, 10);
        if (!ok)
            fail(QStringLiteral("attribute \"%1\" of <%2> is not an integer: %3")
                     .arg(QLatin1String(name), element.tagName(), quoted(text)));
        return value;
    }

    /// A finite number.
    double number(const QDomElement& element, const char* name) const
    {
        bool ok = false;
        const QString text = required(element, name);
        const double value = text.toDouble(&ok);
        if (!ok || !std::isfinite(value))
            fail(QStringLiteral("attribute \"%1\" of <%2> is not a number: %3")
                     .arg(QLatin1String(name), element.tagName(), quoted(text)));
        return value;
    }

    /// Fails unless `valid`: the attribute's value breaks `rule`.
    void expect(bool valid, const QDomElement& element, const char* name, const char* rule) const
    {
        if (!valid)
            fail(QStringLiteral("attribute \"%1\" of <%2> is %3; it must be %4")
                     .arg(QLatin1String(name), element.tagName(), quoted(element.attribute(QString::fromLatin1(name))),
                          QLatin1String(rule)));
    }

    /// An integer in [minimum, INT_MAX].
    int count(const QDomElement& element, const char* name, int minimum, const char* rule) const
    {
        const long long value = integer(element, name);
        expect(value >= minimum && value <= std::numeric_limits<int>::max(), element, name, rule);
        return int(value);
    }

    TimePosition time(const QDomElement& element) const
    {
        TimePosition position;
        const QString utc = required(element, "utc");
        position.utc = QDateTime::fromString(utc, QString::fromLatin1(TimePosition::sDateTimeString));
        position.utc.setTimeSpec(Qt::UTC);
        if (!position.utc.isValid())
            fail(QStringLiteral("attribute \"utc\" of <%1> is not a time: %2").arg(element.tagName(), quoted(utc)));
        position.gpsWeek = count(element, "gpsWeek", 0, "0 or more");
        position.gpsSeconds = number(element, "gpsSeconds");
        expect(position.gpsSeconds >= 0.0 && position.gpsSeconds < sSecondsPerWeek, element, "gpsSeconds",
               "at least 0 and below 604800 (seconds of a GPS week)");
        return position;
    }

    QDomElement child(const QDomElement& parent, const char* tag) const
    {
        const QDomElement element = parent.firstChildElement(QString::fromLatin1(tag));
        if (element.isNull())
            fail(QStringLiteral("<%1> has no <%2>").arg(parent.tagName(), QLatin1String(tag)));
        return element;
    }

private:
    static constexpr double sSecondsPerWeek = 604800.0;
    QString m_path;
};

} // namespace

FlightDataFactory& FlightDataFactory::instance()
{
    static FlightDataFactory factory;
    return factory;
}

std::shared_ptr<SessionInterface> FlightDataFactory::load(const QString& directory) const
{
    const QString path = directory + QLatin1Char('/') + QLatin1String(sFileName);
    QFile file(path);
    QByteArray content;
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Cannot open flight data file: " + path.toStdString(), reason);
    if (!util::XmlNesting::readChecked(file, path, content))
        util::throwWithReason("Cannot open flight data file: " + path.toStdString(), file.errorString().toStdString());
    QDomDocument document;
    QString error;
    int line = 0;
    int column = 0;
    if (!document.setContent(content, &error, &line, &column))
        throw util::InvalidFileError(path.toStdString(), "Cannot parse flight data file: " + path.toStdString() + ": "
                                                             + error.toStdString() + " (line " + std::to_string(line)
                                                             + ", column " + std::to_string(column) + ")");

    const Reader reader(path);
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String("FlightData"))
        reader.fail(QStringLiteral("the root element is <%1>, not <FlightData>").arg(Reader::quoted(root.tagName())));
    if (root.attribute(QStringLiteral("version")) != QLatin1String("1.0"))
        reader.fail(QStringLiteral("unknown version \"%1\"").arg(Reader::quoted(root.attribute(QStringLiteral("version")))));

    auto session = std::make_shared<FlightDataSession>();
    const QDomElement sessionElement = reader.child(root, "Session");
    const QString id = reader.required(sessionElement, "id");
    // The identifier names the session's folder under gps-imu/.
    reader.expect(id != QLatin1String(".") && id != QLatin1String("..") && !id.contains(QLatin1Char('/'))
                      && !id.contains(QLatin1Char('\\')),
                  sessionElement, "id", "a folder name");
    session->m_id = id.toStdString();
    const QDomElement sensor = reader.child(sessionElement, "Sensor");
    session->m_generation = reader.required(sensor, "generation").toStdString();
    session->m_head = reader.required(sensor, "head").toStdString();
    session->m_serial = reader.required(sensor, "serial").toStdString();
    session->m_type = reader.required(sensor, "type").toStdString();
    const QString camera = sensor.attribute(QStringLiteral("cameraFile"));
    if (!camera.isEmpty())
        session->m_cameraFile = QFileInfo(QDir(directory), camera).absoluteFilePath().toStdString();
    session->m_flightStart = reader.time(reader.child(sessionElement, "FlightStart"));
    session->m_firstTakeTime = reader.time(reader.child(sessionElement, "FirstTakeTime"));

    for (QDomElement lineElement = sessionElement.firstChildElement(QStringLiteral("Line")); !lineElement.isNull();
         lineElement = lineElement.nextSiblingElement(QStringLiteral("Line"))) {
        ZelLine zelLine;
        zelLine.number = reader.count(lineElement, "number", 1, "1 or more");
        zelLine.label = reader.required(lineElement, "label").toStdString();
        for (QDomElement takeElement = lineElement.firstChildElement(QStringLiteral("Take")); !takeElement.isNull();
             takeElement = takeElement.nextSiblingElement(QStringLiteral("Take"))) {
            const QString type = reader.required(takeElement, "type");
            if (type != QLatin1String("image") && type != QLatin1String("dark"))
                reader.fail(QStringLiteral("take type \"%1\" is neither \"image\" nor \"dark\"").arg(Reader::quoted(type)));
            std::vector<ZelBand> bands;
            for (QDomElement band = takeElement.firstChildElement(QStringLiteral("Band")); !band.isNull();
                 band = band.nextSiblingElement(QStringLiteral("Band"))) {
                const QString name = reader.required(band, "name");
                const int channel = reader.count(band, "analogChannel", 0, "0 or more");
                const double integrationMs = reader.number(band, "integrationTimeMs");
                reader.expect(integrationMs > 0.0, band, "integrationTimeMs", "above 0");
                const int stages = band.hasAttribute(QStringLiteral("tdiStages"))
                                       ? reader.count(band, "tdiStages", 1, "1 or more")
                                       : 1;
                bands.emplace_back(name.toStdString(), channel, integrationMs * 0.001, stages,
                                   band.attribute(QStringLiteral("info")).toStdString());
            }
            const long long lines = reader.integer(takeElement, "lines");
            reader.expect(lines >= 0, takeElement, "lines", "0 or more");
            const double lineRate = reader.number(takeElement, "lineRate");
            reader.expect(lineRate > 0.0, takeElement, "lineRate", "above 0");
            zelLine.takes.emplace_back(reader.required(takeElement, "label").toStdString(),
                                       type == QLatin1String("dark"), lines, lineRate, reader.time(takeElement),
                                       std::move(bands));
        }
        session->m_lines.push_back(std::move(zelLine));
    }
    return session;
}

} // namespace flightdata
