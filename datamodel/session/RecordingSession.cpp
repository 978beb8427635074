#include <datamodel/session/RecordingSession.h>

#include <datamodel/model/Take.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <stdexcept>

namespace datamodel {

RecordingSession::ImuTrajectoryId::ImuTrajectoryId(const std::string& name, std::uint32_t timeSec)
    : m_name(name)
    , m_timeSec(timeSec)
{
}

RecordingSession::ImuTrajectoryId::ImuTrajectoryId(const std::string& text)
{
    const std::size_t separator = text.find(';');
    if (separator == std::string::npos)
        throw std::runtime_error("Can't construct ImuTrajectoryId; string is invalid: \"" + text + "\".");
    const std::string timeText = text.substr(0, separator);
    bool ok = false;
    const qulonglong timeSec = QString::fromStdString(timeText).toULongLong(&ok, 10);
    if (!ok || timeSec > sUnsetTime)
        throw std::runtime_error("Can't convert to timestamp: " + timeText);
    m_timeSec = static_cast<std::uint32_t>(timeSec);
    m_name = text.substr(separator + 1);
}

bool RecordingSession::ImuTrajectoryId::operator==(const ImuTrajectoryId& other) const
{
    return m_name == other.m_name && m_timeSec == other.m_timeSec;
}

bool RecordingSession::ImuTrajectoryId::operator<(const ImuTrajectoryId& other) const
{
    return m_name != other.m_name ? m_name < other.m_name : m_timeSec < other.m_timeSec;
}

std::string RecordingSession::ImuTrajectoryId::toString() const
{
    return std::to_string(m_timeSec) + ";" + m_name;
}

std::string RecordingSession::ImuTrajectoryId::description() const
{
    const QString when = QDateTime::fromSecsSinceEpoch(qint64(m_timeSec)).toLocalTime().toString(
        QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const std::string text = m_name + " modified on " + when.toStdString();
    return isRealtime() ? "REALTIME: " + text : text;
}

bool RecordingSession::ImuTrajectoryId::isRealtime() const
{
    if (m_name.size() < 3)
        return false;
    return QString::fromStdString(m_name.substr(m_name.size() - 3)).toLower() == QLatin1String("rnv");
}

RecordingSession::RecordingSession(const std::string& path)
{
    const QString qpath = QString::fromStdString(path);
    m_sessionPath = QDir(qpath).canonicalPath().toStdString();
    if (!path.empty() && m_sessionPath.empty())
        throw std::runtime_error("Can't find path provided for RecordingSession: " + path);
    const QFileInfo info(qpath);
    if (!info.isDir())
        throw std::runtime_error("Cannot find directory: " + info.canonicalFilePath().toStdString());
    m_directory = info.canonicalFilePath().toStdString();
}

RecordingSession::~RecordingSession()
{
    for (Take* take : m_takes)
        delete take;
    deleteGroundPoints();
}

std::string RecordingSession::directory(const Take&) const
{
    return m_directory;
}

std::string RecordingSession::name() const
{
    return QFileInfo(QString::fromStdString(m_directory)).fileName().toStdString();
}

void RecordingSession::addTake(Take* take)
{
    m_takes.push_back(take);
}

std::vector<ImageCollection*> RecordingSession::collections() const
{
    return std::vector<ImageCollection*>(m_takes.begin(), m_takes.end());
}

std::vector<std::string> RecordingSession::availableBands() const
{
    std::vector<std::string> bands;
    for (const Take* take : m_takes) {
        if (!take)
            continue;
        for (const std::string& band : take->availableBands())
            if (std::find(bands.begin(), bands.end(), band) == bands.end())
                bands.push_back(band);
    }
    return bands;
}

void RecordingSession::remove(ImageCollection* collection)
{
    Take* take = dynamic_cast<Take*>(collection);
    if (!take)
        throw std::runtime_error("Not a take.");
    auto found = std::find(m_takes.begin(), m_takes.end(), take);
    if (found == m_takes.end())
        throw std::runtime_error("Trying to remove a take not in this session.");
    m_takes.erase(found);
    delete take;
}

void RecordingSession::remove(Image*)
{
    throw std::runtime_error("No images in RecordingSessions.");
}

void RecordingSession::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
