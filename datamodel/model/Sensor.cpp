#include <datamodel/model/Sensor.h>

#include <platform/util/ErrorText.h>
#include <platform/util/InvalidFileError.h>
#include <platform/util/RegularFile.h>
#include <platform/util/XmlNesting_p.h>

#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QString>

#include <cmath>
#include <stdexcept>

namespace datamodel {

Sensor::Sensor(std::string id, std::string type, int calibrationVersion)
    : m_id(std::move(id))
    , m_type(std::move(type))
    , m_calibrationVersion(calibrationVersion)
{
}

unsigned Sensor::idAsInt() const
{
    bool ok = false;
    const unsigned value = QString::fromStdString(m_id).toUInt(&ok, 10);
    if (!ok)
        throw std::runtime_error("The sensor ID for this camera is not numeric! (" + m_id + ")");
    return value;
}

const Sensor::BandGeometry* Sensor::band(const std::string& name) const
{
    for (const BandGeometry& geometry : m_bands)
        if (geometry.name == name)
            return &geometry;
    return nullptr;
}

sensor::IdentitySensorModel Sensor::sensorModel() const
{
    if (!m_hasCalibration)
        throw std::runtime_error("No camera description for sensor " + m_id);
    std::vector<sensor::IdentitySensorModel::Band> bands;
    bands.reserve(m_bands.size());
    for (const BandGeometry& band : m_bands)
        bands.push_back({band.name, band.xMm, band.yMm});
    return sensor::IdentitySensorModel(m_focalLengthMm, m_pixelSizeMm, int(m_pixelsPerLine), std::move(bands));
}

Sensor Sensor::fromCameraFile(const std::string& path)
{
    const QString qpath = QString::fromStdString(path);
    QFile file(qpath);
    QByteArray content;
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Cannot open camera file: " + path, reason);
    if (!util::XmlNesting::readChecked(file, qpath, content))
        util::throwWithReason("Cannot open camera file: " + path, file.errorString().toStdString());
    QDomDocument document;
    QString error;
    int line = 0;
    int column = 0;
    if (!document.setContent(content, &error, &line, &column))
        throw util::InvalidFileError(path, "Cannot parse camera file: " + path + ": " + error.toStdString() + " (line "
                                               + std::to_string(line) + ", column " + std::to_string(column) + ")");

    auto fail = [&](const std::string& what) -> void {
        throw util::InvalidFileError(path, "Invalid camera file " + path + ": " + what);
    };
    auto quoted = [](const QString& value) { return util::excerpt(value); };
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String("Camera"))
        fail("the root element is <" + quoted(root.tagName()) + ">, not <Camera>");
    if (root.attribute(QStringLiteral("version")) != QLatin1String("1.0"))
        fail("unknown version \"" + quoted(root.attribute(QStringLiteral("version"))) + "\"");
    auto text = [&](const char* tag) {
        const QDomElement element = root.firstChildElement(QString::fromLatin1(tag));
        if (element.isNull())
            fail(std::string("no <") + tag + ">");
        const QString value = element.text().trimmed();
        if (value.isEmpty())
            fail(std::string("<") + tag + "> is empty");
        return value;
    };
    // A finite number that passes `valid`; `rule` says what it must be.
    auto number = [&](const QString& value, const std::string& what, auto valid, const char* rule) {
        bool ok = false;
        const double result = value.toDouble(&ok);
        if (!ok || !std::isfinite(result))
            fail(what + " is not a number: " + quoted(value));
        if (!valid(result))
            fail(what + " is " + quoted(value) + "; it must be " + rule);
        return result;
    };
    auto anyNumber = [](double) { return true; };
    // A decimal integer of at least `minimum`.
    auto integer = [&](const QString& value, const std::string& what, int minimum, const char* rule) {
        bool ok = false;
        const int result = value.toInt(&ok, 10);
        if (!ok)
            fail(what + " is not a whole number: " + quoted(value));
        if (result < minimum)
            fail(what + " is " + quoted(value) + "; it must be " + rule);
        return result;
    };

    const QString serial = text("Serial");
    bool decimal = false;
    serial.toULongLong(&decimal, 10);
    if (!decimal || !serial.front().isDigit())
        fail("<Serial> is not a decimal number: " + quoted(serial));
    Sensor sensor(serial.toStdString(), text("Type").toStdString(),
                  integer(text("CalibrationVersion"), "<CalibrationVersion>", 0, "0 or more"));
    sensor.m_hasCalibration = true;
    sensor.m_cameraFile = path;
    auto positive = [](double value) { return value > 0.0; };
    sensor.m_focalLengthMm = number(text("FocalLength"), "<FocalLength>", positive, "above 0");
    sensor.m_pixelSizeMm = number(text("PixelSize"), "<PixelSize>", positive, "above 0");
    sensor.m_pixelsPerLine = unsigned(integer(text("PixelsPerLine"), "<PixelsPerLine>", 1, "1 or more"));
    sensor.m_nominalZOffsetM = number(text("NominalZOffset"), "<NominalZOffset>", anyNumber, "");
    const QDomElement misalignment = root.firstChildElement(QStringLiteral("Misalignment"));
    if (misalignment.isNull())
        fail("no <Misalignment>");
    auto angle = [&](const char* name) {
        return number(misalignment.attribute(QString::fromLatin1(name)), std::string("<Misalignment> ") + name,
                      [](double value) { return std::abs(value) <= M_PI; }, "within -pi to pi radians");
    };
    sensor.m_misalignmentRad = geo::XYZPoint(angle("omega"), angle("phi"), angle("kappa"));
    const QDomElement bands = root.firstChildElement(QStringLiteral("Bands"));
    for (QDomElement band = bands.firstChildElement(QStringLiteral("Band")); !band.isNull();
         band = band.nextSiblingElement(QStringLiteral("Band"))) {
        BandGeometry geometry;
        geometry.name = band.attribute(QStringLiteral("name")).toStdString();
        if (geometry.name.empty())
            fail("a <Band> has no name");
        const std::string where = "band " + util::excerpt(geometry.name);
        if (sensor.band(geometry.name))
            fail(where + " is described twice");
        geometry.analogChannel =
            integer(band.attribute(QStringLiteral("analogChannel")), where + " analogChannel", 0, "0 or more");
        geometry.tdiStages =
            integer(band.attribute(QStringLiteral("tdiStages"), QStringLiteral("1")), where + " tdiStages", 1, "1 or more");
        geometry.xMm = number(band.attribute(QStringLiteral("x")), where + " x", anyNumber, "");
        geometry.yMm = number(band.attribute(QStringLiteral("y")), where + " y", anyNumber, "");
        geometry.lookAngleDeg = number(band.attribute(QStringLiteral("lookAngleDeg")), where + " lookAngleDeg",
                                       [](double value) { return std::abs(value) < 90.0; }, "between -90 and 90 degrees");
        sensor.m_bands.push_back(std::move(geometry));
    }
    if (sensor.m_bands.empty())
        fail("no <Band> in <Bands>");
    return sensor;
}

} // namespace datamodel
