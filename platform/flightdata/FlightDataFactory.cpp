#include <platform/flightdata/FlightDataFactory.h>

#include <platform/util/RegularFile.h>

#include <QDir>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>

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
        throw std::runtime_error("Invalid flight data file " + m_path.toStdString() + ": " + what.toStdString());
    }

    QString required(const QDomElement& element, const char* name) const
    {
        const QString attribute = QString::fromLatin1(name);
        if (!element.hasAttribute(attribute))
            fail(QStringLiteral("element <%1> has no attribute \"%2\"").arg(element.tagName(), attribute));
        return element.attribute(attribute);
    }

    int integer(const QDomElement& element, const char* name) const
    {
        bool ok = false;
        const int value = required(element, name).toInt(&ok, 10);
        if (!ok)
            fail(QStringLiteral("attribute \"%1\" of <%2> is not an integer").arg(QLatin1String(name), element.tagName()));
        return value;
    }

    double number(const QDomElement& element, const char* name) const
    {
        bool ok = false;
        const double value = required(element, name).toDouble(&ok);
        if (!ok)
            fail(QStringLiteral("attribute \"%1\" of <%2> is not a number").arg(QLatin1String(name), element.tagName()));
        return value;
    }

    TimePosition time(const QDomElement& element) const
    {
        TimePosition position;
        const QString utc = required(element, "utc");
        position.utc = QDateTime::fromString(utc, QString::fromLatin1(TimePosition::sDateTimeString));
        position.utc.setTimeSpec(Qt::UTC);
        if (!position.utc.isValid())
            fail(QStringLiteral("attribute \"utc\" of <%1> is not a time: %2").arg(element.tagName(), utc));
        position.gpsWeek = integer(element, "gpsWeek");
        position.gpsSeconds = number(element, "gpsSeconds");
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
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Cannot open flight data file: " + path.toStdString(), reason);
    QDomDocument document;
    QString error;
    int line = 0;
    int column = 0;
    if (!document.setContent(&file, &error, &line, &column))
        throw std::runtime_error("Cannot parse flight data file: " + path.toStdString() + ": " + error.toStdString()
                                 + " (line " + std::to_string(line) + ", column " + std::to_string(column) + ")");

    const Reader reader(path);
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String("FlightData"))
        reader.fail(QStringLiteral("the root element is <%1>, not <FlightData>").arg(root.tagName()));
    if (root.attribute(QStringLiteral("version")) != QLatin1String("1.0"))
        reader.fail(QStringLiteral("unknown version \"%1\"").arg(root.attribute(QStringLiteral("version"))));

    auto session = std::make_shared<FlightDataSession>();
    const QDomElement sessionElement = reader.child(root, "Session");
    session->m_id = reader.required(sessionElement, "id").toStdString();
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
        zelLine.number = reader.integer(lineElement, "number");
        zelLine.label = reader.required(lineElement, "label").toStdString();
        for (QDomElement takeElement = lineElement.firstChildElement(QStringLiteral("Take")); !takeElement.isNull();
             takeElement = takeElement.nextSiblingElement(QStringLiteral("Take"))) {
            const QString type = reader.required(takeElement, "type");
            if (type != QLatin1String("image") && type != QLatin1String("dark"))
                reader.fail(QStringLiteral("take type \"%1\" is neither \"image\" nor \"dark\"").arg(type));
            std::vector<ZelBand> bands;
            for (QDomElement band = takeElement.firstChildElement(QStringLiteral("Band")); !band.isNull();
                 band = band.nextSiblingElement(QStringLiteral("Band"))) {
                bands.emplace_back(reader.required(band, "name").toStdString(), reader.integer(band, "analogChannel"),
                                   reader.number(band, "integrationTimeMs") * 0.001,
                                   band.attribute(QStringLiteral("tdiStages"), QStringLiteral("1")).toInt(),
                                   band.attribute(QStringLiteral("info")).toStdString());
            }
            zelLine.takes.emplace_back(reader.required(takeElement, "label").toStdString(),
                                       type == QLatin1String("dark"), (long long)reader.number(takeElement, "lines"),
                                       reader.number(takeElement, "lineRate"), reader.time(takeElement),
                                       std::move(bands));
        }
        session->m_lines.push_back(std::move(zelLine));
    }
    return session;
}

} // namespace flightdata
