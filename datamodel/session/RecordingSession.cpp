#include <datamodel/session/RecordingSession.h>

#include <datamodel/model/Take.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <stdexcept>

namespace datamodel {

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
