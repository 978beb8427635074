#include <flightsim/FlightDataWriter.h>

#include <flightsim/AtomicFile.h>
#include <flightsim/BandWriter.h>

#include <QDomDocument>

#include <cmath>
#include <numbers>

namespace flightsim {

namespace {

QDomDocument newDocument()
{
    QDomDocument document;
    document.appendChild(document.createProcessingInstruction(QStringLiteral("xml"),
                                                              QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
    return document;
}

QString fixed(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}

} // namespace

FlightDataWriter::FlightDataWriter(const SimulationConfig& config, const FlightPlan& plan, const CameraModel& camera,
                                   const GpsTime& start, const QString& sessionId, const SessionLayout& layout)
    : m_config(config)
    , m_plan(plan)
    , m_camera(camera)
    , m_start(start)
    , m_sessionId(sessionId)
    , m_layout(layout)
{
}

QString FlightDataWriter::flightDataTime(const QDateTime& utc)
{
    return utc.toUTC().toString(QStringLiteral("yyyyMMddHHmmss"));
}

void FlightDataWriter::writeFlightData() const
{
    QDomDocument document = newDocument();
    QDomElement root = document.createElement(QStringLiteral("FlightData"));
    root.setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    document.appendChild(root);
    QDomElement session = document.createElement(QStringLiteral("Session"));
    session.setAttribute(QStringLiteral("id"), m_sessionId);
    root.appendChild(session);

    QDomElement sensor = document.createElement(QStringLiteral("Sensor"));
    sensor.setAttribute(QStringLiteral("generation"), m_config.sensorGeneration);
    sensor.setAttribute(QStringLiteral("head"), m_config.sensorHead);
    sensor.setAttribute(QStringLiteral("serial"), m_config.sensorSerial);
    sensor.setAttribute(QStringLiteral("type"), m_config.sensorType);
    sensor.setAttribute(QStringLiteral("cameraFile"), QStringLiteral("Camera.xml"));
    session.appendChild(sensor);

    const QDateTime startUtc = m_start.toUtc();
    auto timeElement = [&](const QString& tag, double flightSec) {
        QDomElement element = document.createElement(tag);
        const GpsTime gps = m_start.plus(flightSec);
        element.setAttribute(QStringLiteral("utc"), flightDataTime(startUtc.addMSecs(std::llround(flightSec * 1000.0))));
        element.setAttribute(QStringLiteral("gpsWeek"), gps.week);
        element.setAttribute(QStringLiteral("gpsSeconds"), fixed(gps.secondsOfWeek, 6));
        return element;
    };
    session.appendChild(timeElement(QStringLiteral("FlightStart"), 0.0));
    session.appendChild(timeElement(QStringLiteral("FirstTakeTime"), m_plan.takes().front().startSec));

    auto takeElement = [&](const TakeWindow& take) {
        QDomElement element = timeElement(QStringLiteral("Take"), take.startSec);
        element.setAttribute(QStringLiteral("label"), take.label);
        element.setAttribute(QStringLiteral("type"), take.dark ? QStringLiteral("dark") : QStringLiteral("image"));
        element.setAttribute(QStringLiteral("lines"), take.lines);
        element.setAttribute(QStringLiteral("lineRate"), fixed(take.lineRateHz, 3));
        for (const BandSpec& spec : m_camera.bands()) {
            QDomElement band = document.createElement(QStringLiteral("Band"));
            band.setAttribute(QStringLiteral("name"), spec.name);
            band.setAttribute(QStringLiteral("analogChannel"), spec.analogChannel);
            const int integrationTimeUs = BandWriter::integrationTimeUs(m_config, take, spec.analogChannel,
                                                                        int(m_camera.bands().size()));
            band.setAttribute(QStringLiteral("integrationTimeMs"), fixed(integrationTimeUs / 1000.0, 3));
            band.setAttribute(QStringLiteral("tdiStages"), spec.tdiStages);
            band.setAttribute(QStringLiteral("info"), SessionLayout::bandBase(take.label, spec.name) + QStringLiteral(".info"));
            element.appendChild(band);
        }
        return element;
    };
    for (const TakeWindow& take : m_plan.takes()) {
        QDomElement line = document.createElement(QStringLiteral("Line"));
        line.setAttribute(QStringLiteral("number"), take.lineNumber);
        line.setAttribute(QStringLiteral("label"), take.label);
        for (const TakeWindow& dark : m_plan.darkTakes())
            if (dark.index == take.index)
                line.appendChild(takeElement(dark));
        line.appendChild(takeElement(take));
        session.appendChild(line);
    }
    AtomicFile::writeWhole(m_layout.flightDataPath(), document.toByteArray(4));
}

void FlightDataWriter::writeCamera() const
{
    QDomDocument document = newDocument();
    QDomElement root = document.createElement(QStringLiteral("Camera"));
    root.setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    document.appendChild(root);
    auto text = [&](const QString& tag, const QString& value, const QString& unit = QString()) {
        QDomElement element = document.createElement(tag);
        if (!unit.isEmpty())
            element.setAttribute(QStringLiteral("unit"), unit);
        element.appendChild(document.createTextNode(value));
        root.appendChild(element);
    };
    text(QStringLiteral("Serial"), m_config.sensorSerial);
    text(QStringLiteral("Type"), m_config.sensorType);
    text(QStringLiteral("CalibrationVersion"), QString::number(m_config.calibrationVersion));
    text(QStringLiteral("FocalLength"), fixed(m_camera.focalLengthMm(), 6), QStringLiteral("mm"));
    text(QStringLiteral("PixelSize"), fixed(m_camera.pixelSizeMm(), 6), QStringLiteral("mm"));
    text(QStringLiteral("PixelsPerLine"), QString::number(m_camera.ccdPixels()));
    QDomElement misalignment = document.createElement(QStringLiteral("Misalignment"));
    misalignment.setAttribute(QStringLiteral("unit"), QStringLiteral("rad"));
    const char* names[3] = {"omega", "phi", "kappa"};
    for (int i = 0; i < 3; ++i)
        misalignment.setAttribute(QLatin1String(names[i]),
                                  QString::number(m_config.misalignmentDeg[std::size_t(i)] * std::numbers::pi / 180.0, 'g', 17));
    root.appendChild(misalignment);
    text(QStringLiteral("NominalZOffset"), fixed(m_config.nominalZOffsetM, 6), QStringLiteral("m"));
    QDomElement bands = document.createElement(QStringLiteral("Bands"));
    for (const BandSpec& spec : m_camera.bands()) {
        QDomElement band = document.createElement(QStringLiteral("Band"));
        band.setAttribute(QStringLiteral("name"), spec.name);
        band.setAttribute(QStringLiteral("analogChannel"), spec.analogChannel);
        band.setAttribute(QStringLiteral("tdiStages"), spec.tdiStages);
        band.setAttribute(QStringLiteral("x"), fixed(spec.ccdXMm, 6));
        band.setAttribute(QStringLiteral("y"), fixed(spec.ccdYMm, 6));
        band.setAttribute(QStringLiteral("lookAngleDeg"), fixed(spec.lookAngleRad * 180.0 / std::numbers::pi, 6));
        bands.appendChild(band);
    }
    root.appendChild(bands);
    AtomicFile::writeWhole(m_layout.cameraPath(), document.toByteArray(4));
}

void FlightDataWriter::writeSessionData() const
{
    QDomDocument document = newDocument();
    QDomElement root = document.createElement(QStringLiteral("SessionData"));
    root.setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    document.appendChild(root);
    QDomElement pattern = document.createElement(QStringLiteral("FileNamingPattern"));
    QDomElement value = document.createElement(QStringLiteral("Pattern"));
    value.appendChild(document.createTextNode(QStringLiteral("$LINENAME$$BAND$")));
    pattern.appendChild(value);
    root.appendChild(pattern);
    AtomicFile::writeWhole(m_layout.sessionDataPath(), document.toByteArray(4));
}

} // namespace flightsim
