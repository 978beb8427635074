#include <datamodel/model/Sensor.h>

#include <platform/util/RegularFile.h>

#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QString>

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

Sensor Sensor::fromCameraFile(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    std::string reason;
    if (!util::openRegularFile(file, &reason))
        util::throwWithReason("Cannot open camera file: " + path, reason);
    QDomDocument document;
    QString error;
    if (!document.setContent(&file, &error))
        throw std::runtime_error("Cannot parse camera file: " + path + ": " + error.toStdString());

    auto fail = [&](const std::string& what) -> void {
        throw std::runtime_error("Invalid camera file " + path + ": " + what);
    };
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String("Camera"))
        fail("the root element is <" + root.tagName().toStdString() + ">, not <Camera>");
    auto text = [&](const char* tag) {
        const QDomElement element = root.firstChildElement(QString::fromLatin1(tag));
        if (element.isNull())
            fail(std::string("no <") + tag + ">");
        return element.text().trimmed();
    };
    auto number = [&](const QString& value, const std::string& what) {
        bool ok = false;
        const double result = value.toDouble(&ok);
        if (!ok)
            fail(what + " is not a number: " + value.toStdString());
        return result;
    };

    Sensor sensor(text("Serial").toStdString(), text("Type").toStdString(),
                  int(number(text("CalibrationVersion"), "<CalibrationVersion>")));
    sensor.m_hasCalibration = true;
    sensor.m_cameraFile = path;
    sensor.m_focalLengthMm = number(text("FocalLength"), "<FocalLength>");
    sensor.m_pixelSizeMm = number(text("PixelSize"), "<PixelSize>");
    sensor.m_pixelsPerLine = unsigned(number(text("PixelsPerLine"), "<PixelsPerLine>"));
    sensor.m_nominalZOffsetM = number(text("NominalZOffset"), "<NominalZOffset>");
    const QDomElement misalignment = root.firstChildElement(QStringLiteral("Misalignment"));
    if (misalignment.isNull())
        fail("no <Misalignment>");
    sensor.m_misalignmentRad = geo::XYZPoint(number(misalignment.attribute(QStringLiteral("omega")), "omega"),
                                             number(misalignment.attribute(QStringLiteral("phi")), "phi"),
                                             number(misalignment.attribute(QStringLiteral("kappa")), "kappa"));
    const QDomElement bands = root.firstChildElement(QStringLiteral("Bands"));
    for (QDomElement band = bands.firstChildElement(QStringLiteral("Band")); !band.isNull();
         band = band.nextSiblingElement(QStringLiteral("Band"))) {
        BandGeometry geometry;
        geometry.name = band.attribute(QStringLiteral("name")).toStdString();
        if (geometry.name.empty())
            fail("a <Band> has no name");
        const std::string where = "band " + geometry.name;
        geometry.analogChannel = int(number(band.attribute(QStringLiteral("analogChannel")), where + " analogChannel"));
        geometry.tdiStages = band.attribute(QStringLiteral("tdiStages"), QStringLiteral("1")).toInt();
        geometry.xMm = number(band.attribute(QStringLiteral("x")), where + " x");
        geometry.yMm = number(band.attribute(QStringLiteral("y")), where + " y");
        geometry.lookAngleDeg = number(band.attribute(QStringLiteral("lookAngleDeg")), where + " lookAngleDeg");
        sensor.m_bands.push_back(std::move(geometry));
    }
    return sensor;
}

} // namespace datamodel
