#pragma once

#include <map>
#include <string>
#include <vector>

namespace datamodel {

class GroundPoint;
class Take;

/// The owner of takes: a RecordingSession or a Block. It also holds a map of
/// ground points by name. The base never deletes the points in its map; the
/// concrete managers delete the points they hold when they are destroyed.
class TakeManager {
public:
    using GroundPointMap = std::map<std::string, GroundPoint*>;

    virtual ~TakeManager();
    virtual std::vector<Take*> takes() const = 0;
    /// The directory the take's files live in.
    virtual std::string directory(const Take& take) const = 0;
    virtual std::string name() const = 0;

    virtual GroundPointMap& groundPoints();
    virtual const GroundPointMap& groundPoints() const;
    /// Stores `point` under its id, replacing (not deleting) any point held
    /// under that name.
    virtual void addGroundPoint(GroundPoint* point);
    /// The point of that name; an unknown name adds a new tie point at
    /// (0, 0, 0) in the shared Mercator system and returns it.
    virtual GroundPoint* groundPoint(const std::string& name);
    /// The point of that name, or null.
    virtual GroundPoint* groundPoint(const std::string& name) const;

protected:
    TakeManager() = default;
    TakeManager(const TakeManager&) = delete;
    TakeManager& operator=(const TakeManager&) = delete;

    /// Deletes every point in the map and empties it.
    void deleteGroundPoints();
    /// The distinct band names of the takes, in the order first met.
    static std::vector<std::string> bandsOf(const std::vector<Take*>& takes);

private:
    GroundPointMap m_groundPoints;
};

} // namespace datamodel
