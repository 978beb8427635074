#include <datamodel/validation/ValidationTraverser.h>

#include <datamodel/block/Block.h>
#include <datamodel/model/Band.h>
#include <datamodel/model/ImageCollection.h>
#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L1Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>

namespace datamodel {

ValidationTraverser::ValidationTraverser(Information* information, Warning* warning, Error* error)
    : m_information(information)
    , m_warning(warning)
    , m_error(error)
{
}

ValidationTraverser::~ValidationTraverser() = default;

void ValidationTraverser::traverse(Validatable& object)
{
    object.traverse(*this);
}

void ValidationTraverser::validate(RecordingSession& session)
{
    validate(static_cast<ImageCollection&>(session));
}

void ValidationTraverser::validate(Block& block)
{
    validate(static_cast<ImageCollection&>(block));
}

void ValidationTraverser::validate(ImageCollection& collection)
{
    for (L0Image* image : collection.imagesL0())
        if (image)
            traverse(*image);
    for (L2Image* image : collection.imagesL2())
        if (image)
            traverse(*image);
    for (ImageCollection* child : collection.collections())
        if (child)
            traverse(*child);
}

void ValidationTraverser::validate(Take& take)
{
    validate(static_cast<ImageCollection&>(take));
}

void ValidationTraverser::validate(Image& image)
{
    for (Band* band : image.bands())
        if (band)
            traverse(*band);
}

void ValidationTraverser::validate(L0Image& image)
{
    validate(static_cast<Image&>(image));
}

void ValidationTraverser::validate(L1Image& image)
{
    validate(static_cast<Image&>(image));
}

void ValidationTraverser::validate(L2Image& image)
{
    validate(static_cast<Image&>(image));
}

void ValidationTraverser::validate(Band&) {}

void ValidationTraverser::validate(InfoFile&) {}

void ValidationTraverser::validate(CameraTime&) {}

void ValidationTraverser::validate(ImuTrajectory&) {}

void ValidationTraverser::validate(EopTrajectory&) {}

void ValidationTraverser::error(const std::string& message)
{
    if (m_error)
        m_error->error(message);
}

void ValidationTraverser::warning(const std::string& message)
{
    if (m_warning)
        m_warning->warning(message);
}

void ValidationTraverser::information(const std::string& message)
{
    if (m_information)
        m_information->information(message);
}

} // namespace datamodel
