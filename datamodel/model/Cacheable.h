#pragma once

namespace datamodel {

class CacheManager;

/// Something that holds data it can read again from disk.
class Cacheable {
public:
    virtual ~Cacheable() = default;
    /// Releases everything that can be re-read from disk.
    virtual void uncache() = 0;
    /// Calls back `manager` with the object's own class.
    virtual void traverse(CacheManager& manager) = 0;
};

} // namespace datamodel
