#include <flightsim/SessionLayout.h>

#include <QDir>

#include <stdexcept>

namespace flightsim {

SessionLayout::SessionLayout(const QString& root, const QString& sessionId)
    : m_root(root)
    , m_sessionId(sessionId)
{
}

QString SessionLayout::relative(const QString& path) const
{
    return path.startsWith(m_root + QLatin1Char('/')) ? path.mid(m_root.size() + 1) : path;
}

void SessionLayout::create() const
{
    const QString folders[] = {raw(), images(), mm(), dem(), extract(), proc(),
                               gpsImu() + QStringLiteral("/gps"), gpsImu() + QStringLiteral("/ground"),
                               gpsImu() + QStringLiteral("/raw")};
    for (const QString& folder : folders)
        if (!QDir().mkpath(folder))
            throw std::runtime_error("Failed to create: " + folder.toStdString());
}

} // namespace flightsim
