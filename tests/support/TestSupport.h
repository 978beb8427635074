#pragma once

#include <gtest/gtest.h>

// Helpers shared by the unit tests: files written into temporary directories,
// scoped environment variables and a minimal take manager.

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/TakeManager.h>

#include <platform/util/ErrorText.h>
#include <platform/util/InvalidFileError.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <cstdint>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// Lets test failures show Qt strings as text.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace testsupport {

/// Writes `content` to `dir`/`name` (creating nothing else) and returns the path.
inline std::string writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& content)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw std::runtime_error("test setup: cannot write " + path.toStdString());
    file.write(content);
    return path.toStdString();
}

/// A complete band .info document as the recorder writes it.
inline QByteArray fullInfoXml(const QByteArray& bandId = "PANF28A")
{
    return "<band_info>"
           "<sensor_serialnumber>2004</sensor_serialnumber>"
           "<sensor_type>ZEL</sensor_type>"
           "<ccd_id name=\"" + bandId + "\"/>"
           "<line_number>12</line_number>"
           "<line_label>L12</line_label>"
           "<start><time>7 March 2009, 10:04:31</time><longitude>-12:30:15.5</longitude>"
           "<latitude>47:10:00</latitude><altitude>1000</altitude></start>"
           "<stop><time>7 March 2009, 10:09:01</time><longitude>-12:00:00</longitude>"
           "<latitude>47:40:30</latitude><altitude>1200</altitude></stop>"
           "<flight_start><time>7 March 2009, 09:00:00</time></flight_start>"
           "<int_time>5.2</int_time>"
           "<CAMERA_TIME_FILE>x.ct</CAMERA_TIME_FILE>"
           "<PIXEL_FILE>x.lri</PIXEL_FILE>"
           "</band_info>";
}

/// Writes a complete .info file named `baseName`.info and parses it.
inline datamodel::InfoFile makeInfoFile(const QTemporaryDir& dir, const QString& baseName,
                                        const QByteArray& bandId = "PANF28A")
{
    const std::string path = writeFile(dir, baseName + QStringLiteral(".info"), fullInfoXml(bandId));
    return datamodel::InfoFile(path, datamodel::InfoFile::STRIPNAMEREGEX);
}

/// Scan-line data file content: one little-endian record (first line of the
/// run, value in file units) per pair.
inline QByteArray scanLineRecords(const std::vector<std::pair<std::uint32_t, std::int32_t>>& records)
{
    QByteArray bytes;
    auto put = [&bytes](std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes.append(char((value >> shift) & 0xFFu));
    };
    for (const auto& [line, value] : records) {
        put(line);
        put(static_cast<std::uint32_t>(value));
    }
    return bytes;
}

/// A recording session directory as the recorder leaves it, in a temporary
/// directory: raw/ for the .info and side files, images/ for the pixel files.
class SessionDir {
public:
    SessionDir()
    {
        if (!m_dir.isValid() || !QDir(m_dir.path()).mkpath(QStringLiteral("raw"))
            || !QDir(m_dir.path()).mkpath(QStringLiteral("images")))
            throw std::runtime_error("test setup: cannot lay out a session directory");
        m_path = QDir(m_dir.path()).canonicalPath().toStdString();
    }

    /// The canonical path of the session directory.
    const std::string& path() const { return m_path; }
    std::string raw(const std::string& name) const { return m_path + "/raw/" + name; }
    std::string images(const std::string& name) const { return m_path + "/images/" + name; }

    /// Writes `relativePath` under the session directory (its folder must
    /// exist) and returns the absolute path.
    std::string write(const std::string& relativePath, const QByteArray& content = {}) const
    {
        const std::string path = m_path + "/" + relativePath;
        QFile file(QString::fromStdString(path));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            throw std::runtime_error("test setup: cannot write " + path);
        file.write(content);
        return path;
    }

    /// Writes raw/`baseName`.info (a complete band file, or `xml`) and parses it.
    datamodel::InfoFile infoFile(const QString& baseName, const QByteArray& bandId,
                                 const std::optional<QByteArray>& xml = std::nullopt) const
    {
        const std::string path
            = write("raw/" + baseName.toStdString() + ".info", xml ? *xml : fullInfoXml(bandId));
        return datamodel::InfoFile(path, datamodel::InfoFile::STRIPNAMEREGEX);
    }

private:
    QTemporaryDir m_dir;
    std::string m_path;
};

/// Sets (or, with std::nullopt, removes) an environment variable for the
/// lifetime of the guard, then restores the previous state.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::optional<QByteArray>& value)
        : m_name(name)
        , m_wasSet(qEnvironmentVariableIsSet(name))
        , m_previous(qgetenv(name))
    {
        if (value)
            qputenv(name, *value);
        else
            qunsetenv(name);
    }
    ~ScopedEnv()
    {
        if (m_wasSet)
            qputenv(m_name, m_previous);
        else
            qunsetenv(m_name);
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* m_name;
    bool m_wasSet;
    QByteArray m_previous;
};

/// The smallest concrete take manager: it owns nothing, so tests decide the
/// lifetime of the takes made on it.
class PlainTakeManager : public datamodel::TakeManager {
public:
    std::vector<datamodel::Take*> takes() const override { return {}; }
    std::string directory(const datamodel::Take&) const override { return "/nowhere"; }
    std::string name() const override { return "plain"; }
};

/// Runs `f` and returns the text of the std::runtime_error it throws; fails
/// with a marker text when it throws nothing.
template <typename F>
std::string thrownMessage(F&& f)
{
    try {
        f();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "<nothing thrown>";
}

/// `inner` wrapped in `depth` elements named `tag`: a document nested too
/// deep for the readers when depth is above 256.
inline QByteArray nestedXml(int depth, const QByteArray& tag, const QByteArray& inner = {})
{
    return ("<" + tag + ">").repeated(depth) + inner + ("</" + tag + ">").repeated(depth);
}

/// The full message (nested reasons included) of the util::InvalidFileError
/// that `f` throws, or a note of
/// what else happened.
template <typename F>
std::string invalidFileMessage(F&& f)
{
    try {
        f();
    } catch (const util::InvalidFileError& e) {
        return util::fullMessage(e);
    } catch (const std::exception& e) {
        return std::string("<not an InvalidFileError> ") + e.what();
    }
    return "<nothing thrown>";
}

/// A test with a temporary folder to write files into and read them back.
class FileTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    std::string write(const QString& name, const QByteArray& content) { return writeFile(dir, name, content); }
    std::string path(const QString& name) const { return dir.filePath(name).toStdString(); }

    static QByteArray bytesOf(const std::string& path)
    {
        QFile file(QString::fromStdString(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }

    QTemporaryDir dir;
};

} // namespace testsupport
