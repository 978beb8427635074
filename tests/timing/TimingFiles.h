#pragma once

// Writers of the timing files for the timing tests: time-mark files, CT
// files, CTG files and a session directory holding them.

#include "TestSupport.h"

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/TmFile.h>

#include <platform/raster/CtFile.h>

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace timingtest {

using Mark = datamodel::TmFile::TmRecord;

/// Camera-clock seconds per GPS second of the simulated camera (12.5 ppm fast).
constexpr double sCtRate = 1.0 + 12.5e-6;

/// `count` marks one GPS second apart from (gps0, ct0), the camera clock
/// running at sCtRate.
inline std::vector<Mark> regularMarks(int count, double gps0 = 300000.0, double ct0 = 3600.0)
{
    std::vector<Mark> marks;
    for (int i = 0; i < count; ++i)
        marks.push_back({gps0 + i, ct0 + sCtRate * i});
    return marks;
}

/// The bytes of a time-mark file holding `marks`.
inline QByteArray tmBytes(const std::vector<Mark>& marks)
{
    QByteArray bytes(qsizetype(marks.size() * sizeof(Mark)), '\0');
    if (!marks.empty())
        std::memcpy(bytes.data(), marks.data(), std::size_t(bytes.size()));
    return bytes;
}

inline void writeBytes(const std::string& path, const QByteArray& bytes)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        throw std::runtime_error("test setup: cannot write " + path);
}

inline QByteArray readBytes(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("test: cannot read " + path);
    return file.readAll();
}

/// CT values of `lines` scan lines at `lineRateHz` (GPS), starting at flight
/// second `startSec` of marks made by regularMarks(…, gps0, ct0).
inline std::vector<double> bandCt(int lines, double startSec, double lineRateHz = 800.0, double ct0 = 3600.0)
{
    std::vector<double> ct;
    for (int i = 0; i < lines; ++i)
        ct.push_back(ct0 + sCtRate * (startSec + i / lineRateHz));
    return ct;
}

/// A session directory with a time-mark file and bands of one take L001.
class TimingSession {
public:
    TimingSession()
    {
        if (!QDir(QString::fromStdString(m_dir.path())).mkpath(QStringLiteral("gps-imu/S1/extract")))
            throw std::runtime_error("test setup: cannot lay out gps-imu");
    }

    const std::string& path() const { return m_dir.path(); }
    std::string tmPath() const { return m_dir.path() + "/gps-imu/S1/extract/tm_S1.dat"; }
    std::string raw(const std::string& name) const { return m_dir.raw(name); }
    void writeMarks(const std::vector<Mark>& marks) const { writeBytes(tmPath(), tmBytes(marks)); }

    /// Writes raw/L001<band>.info and, unless `ct` is empty, raw/L001<band>.ct.
    void addBand(const std::string& band, const std::vector<double>& ct)
    {
        const QString base = QStringLiteral("L001") + QString::fromStdString(band);
        m_infos.push_back(m_dir.infoFile(base, QByteArray::fromStdString(band)));
        if (!ct.empty())
            raster::CtFile::write(raw(base.toStdString() + ".ct"), ct);
    }

    /// The session with one take of every band added so far (made once).
    datamodel::Take& take()
    {
        if (!m_take) {
            std::vector<datamodel::InfoFile*> pointers;
            for (datamodel::InfoFile& info : m_infos)
                pointers.push_back(&info);
            m_take = new datamodel::Take(m_session, "L001", pointers, 500.0f, 2000.0f, "2004", "ZEL", 1);
            m_session.addTake(m_take);
        }
        return *m_take;
    }
    datamodel::L0Image& image(std::size_t i) { return *take().imagesL0().at(i); }
    datamodel::RecordingSession& session() { return m_session; }

private:
    testsupport::SessionDir m_dir;
    datamodel::RecordingSession m_session{m_dir.path()};
    std::vector<datamodel::InfoFile> m_infos;
    datamodel::Take* m_take = nullptr;
};

} // namespace timingtest
