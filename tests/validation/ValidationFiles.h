#pragma once

// Helpers of the validation tests: a sink that logs every message with its
// severity, CTG and trajectory files, flight data and settings.

#include "TestSupport.h"

#include "tests/timing/TimingFiles.h"
#include "tests/trajectory/TrajectoryWriters.h"

#include <datamodel/validation/ValidationTraverser.h>

#include <platform/util/Installation.h>

#include <QByteArray>
#include <QDir>
#include <QTemporaryDir>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace validationtest {

using Log = std::vector<std::string>;

/// Logs every message as "I: ", "W: " or "E: " + text, in the order given.
struct Collector : datamodel::ValidationTraverser::Information,
                   datamodel::ValidationTraverser::Warning,
                   datamodel::ValidationTraverser::Error {
    void information(const std::string& m) override { messages.push_back("I: " + m); }
    void warning(const std::string& m) override { messages.push_back("W: " + m); }
    void error(const std::string& m) override { messages.push_back("E: " + m); }
    Log messages;
};

/// Writes a CTG file: one little-endian double per scan line.
inline void writeCtg(const std::string& path, const std::vector<double>& times)
{
    QByteArray bytes(qsizetype(times.size() * sizeof(double)), '\0');
    if (!times.empty())
        std::memcpy(bytes.data(), times.data(), std::size_t(bytes.size()));
    timingtest::writeBytes(path, bytes);
}

/// `count` times `stepSec` apart from `firstSec`.
inline std::vector<double> steadyTimes(std::size_t count, double firstSec, double stepSec)
{
    std::vector<double> times(count);
    for (std::size_t i = 0; i < count; ++i)
        times[i] = firstSec + double(i) * stepSec;
    return times;
}

/// An SBET file `dir`/`name` of level flight (no attitude changes), one
/// record a second over [startSec, endSec].
inline std::string writeLevelSbet(const std::string& dir, const std::string& name, double startSec, double endSec)
{
    std::vector<trajectorytest::SbetRow> rows;
    for (double t = startSec; t <= endSec; t += 1.0) {
        trajectorytest::SbetRow row;
        row.time = t;
        row.latRad = 0.8;
        row.lonRad = 0.2;
        row.heightM = 1500.0;
        rows.push_back(row);
    }
    QDir().mkpath(QString::fromStdString(dir));
    const std::string path = dir + "/" + name;
    timingtest::writeBytes(path, trajectorytest::sbetBytes(rows));
    return path;
}

/// Flight data of session "S1" in `sessionPath`/mm: line 12 (the line of
/// the test info files) with one image take whose PANN00A band was recorded
/// with `integrationTimeMs`.
inline void writeFlightData(const std::string& sessionPath, const QByteArray& generation, const QByteArray& head,
                            const QByteArray& integrationTimeMs = "5.2")
{
    QDir().mkpath(QString::fromStdString(sessionPath + "/mm"));
    timingtest::writeBytes(
        sessionPath + "/mm/FlightData.xml",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<FlightData version=\"1.0\"><Session id=\"S1\">"
        "<Sensor generation=\"" + generation + "\" head=\"" + head + "\" serial=\"2004\" type=\"ZEL\"/>"
        "<FlightStart utc=\"20090307090000\" gpsWeek=\"1521\" gpsSeconds=\"300000.000000\"/>"
        "<FirstTakeTime utc=\"20090307090010\" gpsWeek=\"1521\" gpsSeconds=\"300010.000000\"/>"
        "<Line number=\"12\" label=\"L12\"><Take label=\"L001\" type=\"image\" lines=\"1000\" lineRate=\"1000\""
        " utc=\"20090307090010\" gpsWeek=\"1521\" gpsSeconds=\"300010.000000\">"
        "<Band name=\"PANN00A\" analogChannel=\"0\" integrationTimeMs=\"" + integrationTimeMs + "\" tdiStages=\"1\""
        " info=\"L001PANN00A.info\"/></Take></Line></Session></FlightData>");
}

/// Points the installation root at a fresh directory whose settings file
/// holds `ini`, for the guard's lifetime.
class ScopedSettings {
public:
    explicit ScopedSettings(const QByteArray& ini)
    {
        if (!m_root.isValid() || !QDir(m_root.path()).mkpath(QStringLiteral("etc")))
            throw std::runtime_error("test setup: cannot make an installation root");
        testsupport::writeFile(m_root, QStringLiteral("etc/kavix.ini"), ini);
        m_env.emplace(util::sKavixRootVariable, m_root.path().toUtf8());
    }

private:
    QTemporaryDir m_root;
    std::optional<testsupport::ScopedEnv> m_env;
};

} // namespace validationtest
