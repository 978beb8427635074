#pragma once

#include <QString>

namespace flightsim {

/// Where the files of a simulated recording session go. The names follow
/// the discovery rules of the library: band files in raw/ and images/, one
/// GNSS/IMU folder gps-imu/<id>/ with the time-mark file extract/tm_<id>.dat
/// and the trajectories proc/sbet_<id>.out (accuracy: proc/smrmsg_<id>.out,
/// the SBET name with "sbet" replaced by "smrmsg") and proc/<id>.sol.
class SessionLayout {
public:
    SessionLayout(const QString& root, const QString& sessionId);

    const QString& root() const { return m_root; }
    const QString& sessionId() const { return m_sessionId; }
    QString raw() const { return m_root + QStringLiteral("/raw"); }
    QString images() const { return m_root + QStringLiteral("/images"); }
    QString mm() const { return m_root + QStringLiteral("/mm"); }
    QString dem() const { return m_root + QStringLiteral("/dem"); }
    QString gpsImu() const { return m_root + QStringLiteral("/gps-imu/") + m_sessionId; }
    QString extract() const { return gpsImu() + QStringLiteral("/extract"); }
    QString proc() const { return gpsImu() + QStringLiteral("/proc"); }

    QString sbetPath() const { return proc() + QStringLiteral("/sbet_") + m_sessionId + QStringLiteral(".out"); }
    QString smrmsgPath() const { return proc() + QStringLiteral("/smrmsg_") + m_sessionId + QStringLiteral(".out"); }
    QString solPath() const { return proc() + QLatin1Char('/') + m_sessionId + QStringLiteral(".sol"); }
    QString timeMarkPath() const { return extract() + QStringLiteral("/tm_") + m_sessionId + QStringLiteral(".dat"); }
    QString flightDataPath() const { return mm() + QStringLiteral("/FlightData.xml"); }
    QString cameraPath() const { return mm() + QStringLiteral("/Camera.xml"); }
    QString sessionDataPath() const { return raw() + QStringLiteral("/sessionData.xml"); }
    QString demPath() const { return dem() + QStringLiteral("/terrain.tif"); }
    QString truthPath() const { return m_root + QStringLiteral("/truth.json"); }

    /// The base name of a band's files: take label and band code, e.g. L001PANN00A.
    static QString bandBase(const QString& takeLabel, const QString& band) { return takeLabel + band; }
    QString infoPath(const QString& base) const { return raw() + QLatin1Char('/') + base + QStringLiteral(".info"); }
    QString ctPath(const QString& base) const { return raw() + QLatin1Char('/') + base + QStringLiteral(".ct"); }
    QString itPath(const QString& base) const { return raw() + QLatin1Char('/') + base + QStringLiteral(".it"); }
    QString tdiPath(const QString& base) const { return raw() + QLatin1Char('/') + base + QStringLiteral(".tdi"); }
    QString pixelPath(const QString& base) const { return images() + QLatin1Char('/') + base + QStringLiteral(".lri"); }

    /// `path` relative to the session root ("raw/L001PANN00A.info").
    QString relative(const QString& path) const;

    /// Creates every folder of the layout (also gps-imu/<id>/gps, ground and
    /// raw, which later processing fills). Throws "Failed to create: " + path.
    void create() const;

private:
    QString m_root;
    QString m_sessionId;
};

} // namespace flightsim
