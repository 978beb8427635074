#include <datamodel/model/Image.h>

#include <datamodel/model/Band.h>
#include <datamodel/model/CacheManager.h>
#include <datamodel/validation/ValidationTraverser.h>

namespace datamodel {

Image::Image(Take& take)
    : m_take(take)
{
}

Image::~Image()
{
    for (Band* band : m_bands)
        delete band;
}

void Image::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

void Image::traverse(CacheManager& manager)
{
    manager.uncache(static_cast<Cacheable&>(*this));
}

void Image::addBand(Band* band)
{
    m_bands.push_back(band);
}

} // namespace datamodel
