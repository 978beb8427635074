#include <datamodel/model/CacheManager.h>

#include <datamodel/model/Cacheable.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Take.h>

namespace datamodel {

CacheManager::~CacheManager() = default;

void CacheManager::traverse(Cacheable& cacheable)
{
    cacheable.traverse(*this);
}

void CacheManager::uncache(Take& take)
{
    for (L0Image* image : take.imagesL0()) {
        if (image)
            traverse(static_cast<Cacheable&>(*image));
    }
    take.uncache();
}

void CacheManager::uncache(Cacheable& cacheable)
{
    cacheable.uncache();
}

void CacheManager::traverse(L0Image& image)
{
    uncache(static_cast<Cacheable&>(image));
}

void CacheManager::traverse(L2Image& image)
{
    uncache(static_cast<Cacheable&>(image));
}

void CacheManager::traverse(Take& take)
{
    uncache(take);
}

} // namespace datamodel
