#include <datamodel/validation/BasicValidationTraverser.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>

#include <QFileInfo>

#include <stdexcept>

namespace datamodel {

BasicValidationTraverser::BasicValidationTraverser(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
{
}

BasicValidationTraverser::~BasicValidationTraverser() = default;

void BasicValidationTraverser::validate(L0Image& image)
{
    // A take of a block has no session, and no raw recording either.
    const RecordingSession* session = dynamic_cast<const RecordingSession*>(&image.take().manager());
    if (!session || !session->isFromRaw()) {
        const std::string& file = image.filename();
        if (!QFileInfo(QString::fromStdString(file)).isFile())
            throw std::runtime_error("Can't find image data for band: " + image.bandName() + " (tried \"" + file
                                     + "\").");
    }
    ValidationTraverser::validate(static_cast<Image&>(image));
}

void BasicValidationTraverser::validate(InfoFile& file)
{
    InfoFile::Validator::validate(file);
}

} // namespace datamodel
