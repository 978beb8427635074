#include "DemoSession.h"

#include <QDateTime>
#include <QDir>
#include <QLocale>
#include <QSaveFile>

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace dataprep {

namespace {

constexpr const char* sSensorSerial = "2004";
constexpr const char* sSensorType = "ZEL";
constexpr double sIntegrationTimeMs = 1.25; // 800 lines per second
constexpr double sLineDurationSec = 150.0;
constexpr double sTurnDurationSec = 120.0;
constexpr double sWestLongitudeDeg = 11.42;
constexpr double sEastLongitudeDeg = 11.58;
constexpr double sFirstLatitudeDeg = 48.10;
constexpr double sLineSpacingDeg = 0.012;
const char* const sBands[] = {"PANN00A", "PANN00B", "REDN00A", "NIRN00A"};

QString sexagesimal(double degrees)
{
    const bool negative = degrees < 0;
    double rest = std::abs(degrees);
    const int d = int(rest);
    rest = (rest - d) * 60.0;
    const int m = int(rest);
    const double s = (rest - m) * 60.0;
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%s%d:%02d:%07.4f", negative ? "-" : "", d, m, s);
    return QString::fromLatin1(buffer);
}

QString infoDate(const QDateTime& time)
{
    return QLocale::c().toString(time.toUTC(), QStringLiteral("d MMMM yyyy, HH:mm:ss"));
}

} // namespace

int writeDemoSession(const QString& directory)
{
    const QString raw = directory + QStringLiteral("/raw");
    if (!QDir().mkpath(raw))
        throw std::runtime_error("Failed to create: " + raw.toStdString());

    const QDateTime flightStart(QDate(2026, 5, 14), QTime(8, 30, 0), Qt::UTC);
    int written = 0;
    for (int line = 0; line < 3; ++line) {
        const QString label = QStringLiteral("L%1").arg(line + 1, 3, 10, QLatin1Char('0'));
        const QDateTime start = flightStart.addSecs(qint64(60 + line * (sLineDurationSec + sTurnDurationSec)));
        const QDateTime stop = start.addSecs(qint64(sLineDurationSec));
        const bool eastbound = line % 2 == 0;
        const double latitude = sFirstLatitudeDeg + line * sLineSpacingDeg;
        const double startLon = eastbound ? sWestLongitudeDeg : sEastLongitudeDeg;
        const double stopLon = eastbound ? sEastLongitudeDeg : sWestLongitudeDeg;
        for (const char* band : sBands) {
            const QString base = label + QLatin1Char('_') + QLatin1String(band);
            const QString text = QStringLiteral(
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                "<band_info>\n"
                "    <sensor_serialnumber>%1</sensor_serialnumber>\n"
                "    <sensor_type>%2</sensor_type>\n"
                "    <ccd_id name=\"%3\"/>\n"
                "    <line_number>%4</line_number>\n"
                "    <line_label>%5</line_label>\n"
                "    <flight_start>\n        <time>%6</time>\n    </flight_start>\n"
                "    <start>\n        <time>%7</time>\n        <longitude>%8</longitude>\n"
                "        <latitude>%9</latitude>\n        <altitude>1500</altitude>\n    </start>\n")
                .arg(QLatin1String(sSensorSerial), QLatin1String(sSensorType), QLatin1String(band))
                .arg(line + 1)
                .arg(label, infoDate(flightStart), infoDate(start), sexagesimal(startLon), sexagesimal(latitude))
                + QStringLiteral(
                    "    <stop>\n        <time>%1</time>\n        <longitude>%2</longitude>\n"
                    "        <latitude>%3</latitude>\n        <altitude>1500</altitude>\n    </stop>\n"
                    "    <int_time>%4</int_time>\n"
                    "    <CAMERA_TIME_FILE>%5.ct</CAMERA_TIME_FILE>\n"
                    "    <PIXEL_FILE>%5.lri</PIXEL_FILE>\n"
                    "</band_info>\n")
                    .arg(infoDate(stop), sexagesimal(stopLon), sexagesimal(latitude))
                    .arg(sIntegrationTimeMs)
                    .arg(base);
            QSaveFile file(raw + QLatin1Char('/') + base + QStringLiteral(".info"));
            if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit())
                throw std::runtime_error("Cannot write: " + file.fileName().toStdString());
            ++written;
        }
    }
    return written;
}

} // namespace dataprep
