#include <flightsim/TrajectoryWriter.h>

#include <flightsim/AtomicFile.h>
#include <flightsim/LittleEndian.h>
#include <flightsim/Random.h>

#include <platform/util/ProgressInterface.h>

#include <cmath>
#include <numbers>

namespace flightsim {

namespace {

constexpr double sPi = std::numbers::pi;
constexpr std::size_t sProgressStep = 1 << 15;

double wrapPi(double angle)
{
    angle = std::remainder(angle, 2.0 * sPi);
    return angle <= -sPi ? angle + 2.0 * sPi : angle;
}

} // namespace

const unsigned char TrajectoryWriter::sSolHeader[16] = {0xBB, 0x55, 0xB8, 0x00, 0x01, 0x00, 0x23, 0xFF,
                                                        0x00, 0x00, 0x00, 0x00, 0xC5, 0x09, 0x00, 0x00};

TrajectoryWriter::TrajectoryWriter(const SimulatedTrajectory& trajectory, const AccuracyModel& accuracy,
                                   const GpsTime& start, std::uint64_t seed)
    : m_trajectory(trajectory)
    , m_accuracy(accuracy)
    , m_start(start)
{
    Random random(streamSeed(seed, RandomStream::Wander));
    m_startWanderRad = random.uniform(-sPi, sPi);
}

TrajectoryWriter::Result TrajectoryWriter::write(const SessionLayout& layout, std::size_t recordCount,
                                                 bool truncateSbet, util::ProgressInterface* progress) const
{
    const SimulatedTrajectory& tr = m_trajectory;
    const std::size_t n = recordCount;
    const std::size_t last = n - 1;
    const double rate = tr.rateHz();
    const std::size_t stride = std::size_t(std::llround(rate * m_accuracy.intervalSec()));

    AtomicFile sbet(layout.sbetPath());
    AtomicFile smrmsg(layout.smrmsgPath());
    AtomicFile sol(layout.solPath());
    util::ProgressTask task(progress, "Writing the trajectory files", 0, (long long)n);

    const auto& lat = tr.latRad();
    const auto& lon = tr.lonRad();
    const auto& height = tr.heightM();
    const auto& roll = tr.rollRad();
    const auto& pitch = tr.pitchRad();
    const auto& heading = tr.headingRad();
    const auto& vN = tr.velocityNorthMps();
    const auto& vE = tr.velocityEastMps();
    const auto& vD = tr.velocityDownMps();
    // Central differences inside the written range, one-sided at its ends.
    auto difference = [&](const std::vector<double>& v, std::size_t k, bool angle) {
        if (n < 2)
            return 0.0;
        const std::size_t a = k == 0 ? 0 : k - 1;
        const std::size_t b = k == last ? last : k + 1;
        const double delta = angle ? std::remainder(v[b] - v[a], 2.0 * sPi) : v[b] - v[a];
        return delta * rate / double(b - a);
    };

    Result result;
    double wander = m_startWanderRad;
    unsigned char sbetRecord[sSbetRecordBytes];
    unsigned char accuracyRecord[sAccuracyRecordBytes];
    unsigned char solRecord[sSolRecordBytes] = {};
    std::memcpy(solRecord, sSolHeader, sizeof sSolHeader);

    for (std::size_t k = 0; k < n; ++k) {
        const double t = tr.timeSec(k);
        const double gpsSec = GpsTime::wrap(m_start.secondsOfWeek + t);
        if (k > 0)
            wander = wrapPi(wander - std::remainder(lon[k] - lon[k - 1], 2.0 * sPi) * std::sin(lat[k]));
        const double cosW = std::cos(wander);
        const double sinW = std::sin(wander);
        const double platformHeading = wrapPi(heading[k] + wander);
        const double aN = difference(vN, k, false);
        const double aE = difference(vE, k, false);
        const double aD = difference(vD, k, false);
        const double rollRate = difference(roll, k, false);
        const double pitchRate = difference(pitch, k, false);
        const double headingRate = difference(heading, k, true);
        const double sinRoll = std::sin(roll[k]), cosRoll = std::cos(roll[k]);
        const double sinPitch = std::sin(pitch[k]), cosPitch = std::cos(pitch[k]);

        // Velocities and accelerations in the wander frame: x at azimuth
        // -wander, y at 90 degrees - wander, z down.
        const double fields[17] = {
            gpsSec,
            lat[k],
            lon[k],
            height[k],
            vN[k] * cosW - vE[k] * sinW,
            vN[k] * sinW + vE[k] * cosW,
            vD[k],
            roll[k],
            pitch[k],
            platformHeading,
            wander,
            aN * cosW - aE * sinW,
            aN * sinW + aE * cosW,
            aD,
            // Body angular rates (x forward, y right, z down) from the Euler angle rates.
            rollRate - headingRate * sinPitch,
            pitchRate * cosRoll + headingRate * cosPitch * sinRoll,
            -pitchRate * sinRoll + headingRate * cosPitch * cosRoll,
        };
        for (int i = 0; i < 17; ++i)
            le::putF64(sbetRecord + 8 * i, fields[i]);
        if (truncateSbet && k == last) {
            sbet.write(sbetRecord, sSbetRecordBytes / 2);
            result.truncation = QJsonObject{{QStringLiteral("completeRecords"), qint64(last)},
                                            {QStringLiteral("partialBytes"), qint64(sSbetRecordBytes / 2)}};
        } else {
            sbet.write(sbetRecord, sSbetRecordBytes);
        }

        const AccuracyModel::Sigmas sigma = m_accuracy.at(t);
        if (k % stride == 0 || k == last) {
            const double accuracy[10] = {gpsSec,
                                         sigma.northM,
                                         sigma.eastM,
                                         sigma.downM,
                                         sigma.velocityNorthMps,
                                         sigma.velocityEastMps,
                                         sigma.velocityDownMps,
                                         sigma.rollArcmin,
                                         sigma.pitchArcmin,
                                         sigma.headingArcmin};
            for (int i = 0; i < 10; ++i)
                le::putF64(accuracyRecord + 8 * i, accuracy[i]);
            smrmsg.write(accuracyRecord, sAccuracyRecordBytes);
            const QJsonObject json{{QStringLiteral("gpsSec"), gpsSec},
                                   {QStringLiteral("northM"), sigma.northM},
                                   {QStringLiteral("eastM"), sigma.eastM},
                                   {QStringLiteral("downM"), sigma.downM},
                                   {QStringLiteral("rollArcmin"), sigma.rollArcmin},
                                   {QStringLiteral("pitchArcmin"), sigma.pitchArcmin},
                                   {QStringLiteral("headingArcmin"), sigma.headingArcmin}};
            if (result.accuracyRecords == 0)
                result.firstAccuracy = json;
            result.lastAccuracy = json;
            ++result.accuracyRecords;
        }

        le::putF64(solRecord + 18, gpsSec);
        le::putF64(solRecord + 42, lat[k]);
        le::putF64(solRecord + 50, lon[k]);
        le::putF64(solRecord + 58, height[k]);
        le::putF32(solRecord + 66, float(sigma.northM));
        le::putF32(solRecord + 70, float(sigma.eastM));
        le::putF32(solRecord + 74, float(sigma.downM));
        le::putF64(solRecord + 78, roll[k]);
        le::putF64(solRecord + 86, pitch[k]);
        le::putF64(solRecord + 94, heading[k]);
        le::putF32(solRecord + 102, float(sigma.rollArcmin * 60.0));
        le::putF32(solRecord + 106, float(sigma.pitchArcmin * 60.0));
        le::putF32(solRecord + 110, float(sigma.headingArcmin * 60.0));
        sol.write(solRecord, sSolRecordBytes);

        const bool complete = !(truncateSbet && k == last);
        if (complete && (k == 0 || k + (truncateSbet ? 2 : 1) == n)) {
            const QJsonObject json{{QStringLiteral("index"), qint64(k)},
                                   {QStringLiteral("gpsSec"), gpsSec},
                                   {QStringLiteral("latRad"), lat[k]},
                                   {QStringLiteral("lonRad"), lon[k]},
                                   {QStringLiteral("heightM"), height[k]},
                                   {QStringLiteral("rollRad"), roll[k]},
                                   {QStringLiteral("pitchRad"), pitch[k]},
                                   {QStringLiteral("headingRad"), heading[k]},
                                   {QStringLiteral("platformHeadingRad"), platformHeading},
                                   {QStringLiteral("wanderRad"), wander}};
            if (k == 0)
                result.firstSbet = json;
            if (k + (truncateSbet ? 2 : 1) == n)
                result.lastSbet = json;
        }
        if (k % sProgressStep == 0)
            task.report((long long)k);
    }
    sbet.commit();
    smrmsg.commit();
    sol.commit();
    result.records = n;
    result.sbetBytes = sbet.bytesWritten();
    return result;
}

} // namespace flightsim
