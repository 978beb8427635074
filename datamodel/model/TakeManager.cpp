#include <datamodel/model/TakeManager.h>

#include <datamodel/ground/TiePoint.h>
#include <datamodel/model/Take.h>

#include <platform/geo/coordSysFactory.h>

#include <algorithm>
#include <set>

namespace datamodel {

namespace {

// The one Mercator system shared by every tie point made on demand. Created
// on first use; the first call must not race.
const geo::coordSys& sharedMercator()
{
    static const std::unique_ptr<geo::coordSys> mercator = geo::coordSysFactory::getInstance().createMercator(0);
    return *mercator;
}

} // namespace

TakeManager::~TakeManager() = default;

TakeManager::GroundPointMap& TakeManager::groundPoints()
{
    return m_groundPoints;
}

const TakeManager::GroundPointMap& TakeManager::groundPoints() const
{
    return m_groundPoints;
}

void TakeManager::addGroundPoint(GroundPoint* point)
{
    m_groundPoints[point->id()] = point;
}

GroundPoint* TakeManager::groundPoint(const std::string& name)
{
    auto found = m_groundPoints.find(name);
    if (found != m_groundPoints.end())
        return found->second;
    auto* point = new TiePoint(name, sharedMercator(), 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
    m_groundPoints.emplace(name, point);
    return point;
}

GroundPoint* TakeManager::groundPoint(const std::string& name) const
{
    auto found = m_groundPoints.find(name);
    return found == m_groundPoints.end() ? nullptr : found->second;
}

void TakeManager::deleteGroundPoints()
{
    // A point stored under two names (its id changed after it was added) is
    // deleted once.
    std::set<GroundPoint*> points;
    for (auto& entry : m_groundPoints)
        points.insert(entry.second);
    for (GroundPoint* point : points)
        delete point;
    m_groundPoints.clear();
}

std::vector<std::string> TakeManager::bandsOf(const std::vector<Take*>& takes)
{
    std::vector<std::string> bands;
    for (const Take* take : takes) {
        if (!take)
            continue;
        for (const std::string& band : take->availableBands())
            if (std::find(bands.begin(), bands.end(), band) == bands.end())
                bands.push_back(band);
    }
    return bands;
}

} // namespace datamodel
