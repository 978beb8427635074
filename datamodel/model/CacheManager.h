#pragma once

namespace datamodel {

class Cacheable;
class Image;
class L0Image;
class L2Image;
class Take;

/// Decides what cached data to release. The walk is double dispatch:
/// traverse(Cacheable&) lets the object call back the traverse() overload of
/// its own class, whose default releases the object's cache. Derive and
/// override the typed overloads to decide, image by image, what to release.
class CacheManager {
public:
    virtual ~CacheManager();
    /// Calls `cacheable.traverse(*this)`.
    virtual void traverse(Cacheable& cacheable);
    /// Walks the cacheable part of every level-0 image of `take` in order,
    /// then releases the take's own cache.
    virtual void uncache(Take& take);
    /// Calls `cacheable.uncache()`.
    virtual void uncache(Cacheable& cacheable);

    /// Called back by a level-0 image; releases its cache by default.
    virtual void traverse(L0Image& image);
    /// Called back by a level-2 image; releases its cache by default.
    virtual void traverse(L2Image& image);
    /// Called back by a take; `uncache(take)` by default.
    virtual void traverse(Take& take);
};

} // namespace datamodel
