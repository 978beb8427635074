#include <flightsim/BandWriter.h>

#include <flightsim/AtomicFile.h>
#include <flightsim/LittleEndian.h>
#include <flightsim/Random.h>

#include <QDomDocument>
#include <QLocale>

#include <cmath>
#include <numbers>

namespace flightsim {

namespace {

constexpr double sRadToDeg = 180.0 / std::numbers::pi;

// A cheap, well-mixed hash (SplitMix64 finaliser) for pixel noise.
std::uint64_t mix(std::uint64_t z)
{
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

int channelBase(const QString& channel)
{
    if (channel == QLatin1String("RED"))
        return 600;
    if (channel == QLatin1String("GRN"))
        return 700;
    if (channel == QLatin1String("BLU"))
        return 500;
    if (channel == QLatin1String("NIR"))
        return 1200;
    return 800;
}

QJsonObject position(double latRad, double lonRad)
{
    return QJsonObject{{QStringLiteral("lonDeg"), lonRad * sRadToDeg}, {QStringLiteral("latDeg"), latRad * sRadToDeg}};
}

} // namespace

BandWriter::BandWriter(const SimulationConfig& config, const FlightPlan& plan, const LocalPlane& plane,
                       const CameraModel& camera, const CameraClock& clock, const GpsTime& start,
                       const SessionLayout& layout)
    : m_config(config)
    , m_plan(plan)
    , m_plane(plane)
    , m_camera(camera)
    , m_clock(clock)
    , m_start(start)
    , m_startUtc(start.toUtc())
    , m_layout(layout)
{
}

QString BandWriter::sexagesimal(double degrees)
{
    const bool negative = degrees < 0.0;
    // Whole ten-thousandths of an arc second, so that rounding carries into
    // minutes and degrees instead of printing 60 seconds.
    const long long units = std::llround(std::abs(degrees) * 3600.0 * 10000.0);
    const long long d = units / (3600LL * 10000);
    const long long m = (units / (60LL * 10000)) % 60;
    const long long s = (units / 10000) % 60;
    const long long fraction = units % 10000;
    return QStringLiteral("%1%2:%3:%4.%5")
        .arg(negative ? QStringLiteral("-") : QString())
        .arg(d)
        .arg(m, 2, 10, QLatin1Char('0'))
        .arg(s, 2, 10, QLatin1Char('0'))
        .arg(fraction, 4, 10, QLatin1Char('0'));
}

QString BandWriter::infoDate(const QDateTime& utc)
{
    return QLocale::c().toString(utc.toUTC(), QStringLiteral("d MMMM yyyy, HH:mm:ss"));
}

int BandWriter::integrationTimeUs(const SimulationConfig& config, const TakeWindow& take, int analogChannel,
                                  int bandCount)
{
    const bool faultTake = !take.dark && take.index == config.faultTakeIndex();
    if (faultTake && analogChannel == std::min(1, bandCount - 1) && config.faults.has(Fault::IntegrationTimeOutOfRange))
        return sBadIntegrationTimeUs;
    return config.integrationTimeUs();
}

QJsonObject BandWriter::writeTake(const TakeWindow& take, QJsonArray& faults) const
{
    const std::size_t n = std::size_t(take.lines);
    std::vector<double> ct(n);
    for (std::size_t i = 0; i < n; ++i)
        ct[i] = m_clock.ctAt(take.lineSec((long long)i));
    const bool faultTake = !take.dark && take.index == m_config.faultTakeIndex();
    const auto& bands = m_camera.bands();
    const int lastBand = int(bands.size()) - 1;
    const double ctLineStep = m_clock.rate() / take.lineRateHz;

    QJsonArray bandsJson;
    for (int b = 0; b <= lastBand; ++b) {
        const BandSpec& band = bands[std::size_t(b)];
        const QString base = SessionLayout::bandBase(take.label, band.name);
        auto fault = [&](Fault f) {
            return QJsonObject{{QStringLiteral("name"), FaultSet::name(f)},
                               {QStringLiteral("take"), take.label},
                               {QStringLiteral("band"), band.name}};
        };

        std::vector<double> bandCt = ct;
        if (faultTake && b == 0 && m_config.faults.has(Fault::CtBackwards)) {
            // The clock steps back by four line periods and runs on from there.
            const std::size_t line = n / 2;
            const double stepBack = sBackwardLines * ctLineStep;
            for (std::size_t i = line; i < n; ++i)
                bandCt[i] -= stepBack;
            QJsonObject detail = fault(Fault::CtBackwards);
            detail[QStringLiteral("line")] = qint64(line);
            detail[QStringLiteral("stepBackSec")] = stepBack;
            detail[QStringLiteral("ctBeforeSec")] = bandCt[line - 1];
            detail[QStringLiteral("ctAtLineSec")] = bandCt[line];
            faults.append(detail);
        }
        if (faultTake && b == lastBand && m_config.faults.has(Fault::SawTooth)) {
            // Only every eighth line carries its true time; the seven after it
            // are stamped at 98 % of the line period, so the step that arrives
            // at the next anchor is 7 * 2 % longer.
            for (std::size_t i = 0; i < n; ++i)
                if (i % 8 != 0)
                    bandCt[i] = bandCt[i - i % 8] + double(i % 8) * sSawToothStepFactor * ctLineStep;
            QJsonObject detail = fault(Fault::SawTooth);
            detail[QStringLiteral("anchorEvery")] = 8;
            detail[QStringLiteral("stepFactor")] = sSawToothStepFactor;
            faults.append(detail);
        }
        // Another band than the other per-band faults when there are enough,
        // so that a flight with every fault shows each of them.
        const int missingIdBand = lastBand >= 3 ? 2 : 0;
        const bool withSensorId = !(faultTake && b == missingIdBand && m_config.faults.has(Fault::MissingSensorId));
        if (!withSensorId) {
            QJsonObject detail = fault(Fault::MissingSensorId);
            detail[QStringLiteral("file")] = m_layout.relative(m_layout.infoPath(base));
            faults.append(detail);
        }
        const int integrationTimeUs = BandWriter::integrationTimeUs(m_config, take, b, lastBand + 1);
        if (faultTake && b == std::min(1, lastBand) && m_config.faults.has(Fault::IntegrationTimeOutOfRange)) {
            QJsonObject detail = fault(Fault::IntegrationTimeOutOfRange);
            detail[QStringLiteral("integrationTimeMs")] = integrationTimeUs / 1000.0;
            faults.append(detail);
        }

        writeInfo(take, band, base, withSensorId, integrationTimeUs);
        writeCt(m_layout.ctPath(base), bandCt);
        writeRun(m_layout.itPath(base), integrationTimeUs);
        writeRun(m_layout.tdiPath(base), band.tdiStages);
        writePixels(m_layout.pixelPath(base), take, band);

        bandsJson.append(QJsonObject{
            {QStringLiteral("name"), band.name},
            {QStringLiteral("base"), base},
            {QStringLiteral("info"), m_layout.relative(m_layout.infoPath(base))},
            {QStringLiteral("ct"), m_layout.relative(m_layout.ctPath(base))},
            {QStringLiteral("pixels"), m_layout.relative(m_layout.pixelPath(base))},
            {QStringLiteral("integrationTime"), m_layout.relative(m_layout.itPath(base))},
            {QStringLiteral("tdi"), m_layout.relative(m_layout.tdiPath(base))},
            {QStringLiteral("analogChannel"), band.analogChannel},
            {QStringLiteral("lookAngleDeg"), band.lookAngleRad * sRadToDeg},
            {QStringLiteral("integrationTimeMs"), integrationTimeUs / 1000.0},
            {QStringLiteral("tdiStages"), band.tdiStages},
            {QStringLiteral("firstCtSec"), bandCt.front()},
            {QStringLiteral("lastCtSec"), bandCt.back()},
        });
    }

    double startLat = 0.0, startLon = 0.0, stopLat = 0.0, stopLon = 0.0;
    const PlaneState first = m_plan.at(take.startSec);
    const PlaneState last = m_plan.at(take.lastLineSec());
    m_plane.toGeodetic(first.xM, first.yM, startLat, startLon);
    m_plane.toGeodetic(last.xM, last.yM, stopLat, stopLon);
    const GpsTime firstGps = m_start.plus(take.startSec);
    return QJsonObject{
        {QStringLiteral("label"), take.label},
        {QStringLiteral("lineNumber"), take.lineNumber},
        {QStringLiteral("dark"), take.dark},
        {QStringLiteral("lines"), take.lines},
        {QStringLiteral("lineRateHz"), take.lineRateHz},
        {QStringLiteral("firstLineFlightSec"), take.startSec},
        {QStringLiteral("firstLineGpsSec"), GpsTime::wrap(m_start.secondsOfWeek + take.startSec)},
        {QStringLiteral("lastLineGpsSec"), GpsTime::wrap(m_start.secondsOfWeek + take.lastLineSec())},
        {QStringLiteral("firstLineGpsWeek"), firstGps.week},
        {QStringLiteral("firstLineCtSec"), ct.front()},
        {QStringLiteral("lastLineCtSec"), ct.back()},
        {QStringLiteral("startUtc"), m_startUtc.addMSecs(std::llround(take.startSec * 1000.0)).toString(Qt::ISODateWithMs)},
        {QStringLiteral("stopUtc"), m_startUtc.addMSecs(std::llround(take.lastLineSec() * 1000.0)).toString(Qt::ISODateWithMs)},
        {QStringLiteral("start"), position(startLat, startLon)},
        {QStringLiteral("stop"), position(stopLat, stopLon)},
        {QStringLiteral("azimuthDeg"), std::fmod(m_config.lineAzimuthDeg + (take.direction > 0 ? 0.0 : 180.0), 360.0)},
        {QStringLiteral("bands"), bandsJson},
    };
}

void BandWriter::writeInfo(const TakeWindow& take, const BandSpec& band, const QString& base, bool withSensorId,
                           int integrationTimeUs) const
{
    QDomDocument document;
    document.appendChild(document.createProcessingInstruction(QStringLiteral("xml"),
                                                              QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
    QDomElement root = document.createElement(QStringLiteral("band_info"));
    document.appendChild(root);
    auto text = [&](QDomElement& parent, const QString& tag, const QString& value) {
        QDomElement element = document.createElement(tag);
        element.appendChild(document.createTextNode(value));
        parent.appendChild(element);
        return element;
    };
    if (withSensorId)
        text(root, QStringLiteral("sensor_serialnumber"), m_config.sensorSerial);
    text(root, QStringLiteral("sensor_type"), m_config.sensorType);
    QDomElement ccd = document.createElement(QStringLiteral("ccd_id"));
    ccd.setAttribute(QStringLiteral("name"), band.name);
    root.appendChild(ccd);
    text(root, QStringLiteral("line_number"), QString::number(take.lineNumber));
    text(root, QStringLiteral("line_label"), take.label);
    QDomElement flightStart = document.createElement(QStringLiteral("flight_start"));
    text(flightStart, QStringLiteral("time"), infoDate(m_startUtc));
    root.appendChild(flightStart);
    auto place = [&](const QString& tag, double flightSec) {
        QDomElement element = document.createElement(tag);
        const PlaneState state = m_plan.at(flightSec);
        double lat = 0.0, lon = 0.0;
        m_plane.toGeodetic(state.xM, state.yM, lat, lon);
        text(element, QStringLiteral("time"), infoDate(m_startUtc.addMSecs(std::llround(flightSec * 1000.0))));
        text(element, QStringLiteral("longitude"), sexagesimal(lon * sRadToDeg));
        text(element, QStringLiteral("latitude"), sexagesimal(lat * sRadToDeg));
        text(element, QStringLiteral("altitude"), QString::number(m_config.terrainHeightM + m_config.heightAboveTerrainM, 'f', 1));
        root.appendChild(element);
    };
    place(QStringLiteral("start"), take.startSec);
    place(QStringLiteral("stop"), take.lastLineSec());
    text(root, QStringLiteral("int_time"), QString::number(integrationTimeUs / 1000.0, 'f', 3));
    text(root, QStringLiteral("CAMERA_TIME_FILE"), base + QStringLiteral(".ct"));
    text(root, QStringLiteral("PIXEL_FILE"), base + QStringLiteral(".lri"));
    AtomicFile::writeWhole(m_layout.infoPath(base), document.toByteArray(4));
}

void BandWriter::writeCt(const QString& path, const std::vector<double>& ct) const
{
    AtomicFile file(path, std::min<std::size_t>(std::size_t(4) << 20, ct.size() * 8 + sCtHeaderBytes));
    unsigned char header[sCtHeaderBytes];
    std::memcpy(header, "CT01", 4);
    le::putU32(header + 4, sCtHeaderBytes);
    le::putU64(header + 8, ct.size());
    file.write(header, sizeof header);
    if constexpr (std::endian::native == std::endian::little) {
        file.write(ct.data(), ct.size() * sizeof(double));
    } else {
        unsigned char value[8];
        for (double v : ct) {
            le::putF64(value, v);
            file.write(value, 8);
        }
    }
    file.commit();
}

void BandWriter::writeRun(const QString& path, std::int32_t value) const
{
    // One run from line 0: an 8-byte record (line, value).
    unsigned char record[8];
    le::putU32(record, 0);
    le::putI32(record + 4, value);
    AtomicFile::writeWhole(path, QByteArray(reinterpret_cast<const char*>(record), 8));
}

void BandWriter::writePixels(const QString& path, const TakeWindow& take, const BandSpec& band) const
{
    const int samples = m_config.samplesPerLine;
    const int step = m_camera.ccdPixels() / samples;
    const int firstPixel = step / 2;
    const std::size_t lines = std::size_t(take.lines);
    AtomicFile file(path, std::min<std::size_t>(std::size_t(4) << 20, lines * std::size_t(samples) * 2 + sPixelHeaderBytes));
    unsigned char header[sPixelHeaderBytes] = {};
    std::memcpy(header, "PX01", 4);
    le::putU32(header + 4, sPixelHeaderBytes);
    le::putU32(header + 8, std::uint32_t(samples));
    le::putU32(header + 12, 16);
    le::putU64(header + 16, lines);
    le::putU32(header + 24, std::uint32_t(firstPixel));
    le::putU32(header + 28, std::uint32_t(step));
    file.write(header, sizeof header);

    // Each sample sees the ground where its ray from the aircraft meets the
    // mean terrain; its value is a pattern of 50 m squares and 400 m fields
    // there, plus a few counts of noise. Dark takes read the dark level.
    const double heightM = m_config.heightAboveTerrainM;
    std::vector<double> acrossM(static_cast<std::size_t>(samples)); // across-track ground offset, left positive
    for (int j = 0; j < samples; ++j)
        acrossM[std::size_t(j)] = take.direction * heightM * std::tan(m_camera.acrossAngleRad(band, firstPixel + double(j) * step));
    const double aheadM = take.direction * heightM * std::tan(band.lookAngleRad);
    const double metresPerLine = take.direction * m_plan.speedMps() / take.lineRateHz;
    const int base = channelBase(band.channel);
    const std::uint64_t noiseSeed = streamSeed(m_config.seed, RandomStream::Pixels)
        ^ (std::uint64_t(take.index) << 48) ^ (std::uint64_t(take.dark) << 47) ^ (std::uint64_t(band.analogChannel) << 40);

    // Along a take the samples keep their y, so the across-track cells are
    // found once per sample and the along-track cells once per line.
    const auto sampleCount = static_cast<std::size_t>(samples);
    std::vector<long long> squareY(sampleCount);
    std::vector<long long> fieldY(sampleCount);
    for (int j = 0; j < samples; ++j) {
        const double y = take.yM + acrossM[std::size_t(j)];
        squareY[std::size_t(j)] = (long long)std::floor(y / 50.0);
        fieldY[std::size_t(j)] = (long long)std::floor(y / 400.0) * 13;
    }
    std::vector<unsigned char> block;
    constexpr std::size_t sLinesPerBlock = 8192;
    block.resize(sLinesPerBlock * std::size_t(samples) * 2);
    for (std::size_t first = 0; first < lines; first += sLinesPerBlock) {
        const std::size_t count = std::min(sLinesPerBlock, lines - first);
        unsigned char* out = block.data();
        for (std::size_t i = first; i < first + count; ++i) {
            const double x = take.startXM + metresPerLine * double(i) + aheadM;
            const long long squareX = (long long)std::floor(x / 50.0);
            const long long fieldX = (long long)std::floor(x / 400.0) * 7;
            for (int j = 0; j < samples; ++j) {
                const std::uint64_t h = mix(noiseSeed ^ (std::uint64_t(i) << 12) ^ std::uint64_t(j));
                const int noise = int(h % 9) - 4;
                int value = 40 + noise;
                if (!take.dark) {
                    const long long field = (fieldX + fieldY[std::size_t(j)]) % 5;
                    value = base + 300 * int((squareX + squareY[std::size_t(j)]) & 1) + 120 * int((field + 5) % 5) + noise;
                }
                le::putU16(out, std::uint16_t(value));
                out += 2;
            }
        }
        file.write(block.data(), count * std::size_t(samples) * 2);
    }
    file.commit();
}

} // namespace flightsim
