// Feeds arbitrary bytes to the strip-file reader as a strip file in the raw
// folder of a session. Any exception other than std::runtime_error, any
// crash or sanitizer finding is a bug. Strips that read are written back.

#include "FuzzSupport.h"

#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>

#include <QDir>
#include <QDomDocument>
#include <QDomElement>

#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool made = QDir().mkpath(QString::fromStdString(fuzzsupport::scratchDirectory() + "/session/raw"));
    (void)made;
    const std::string path = fuzzsupport::writeInput("session/raw/L12.stp", data, size);
    datamodel::RecordingSession session(fuzzsupport::scratchDirectory() + "/session");
    auto* take = new datamodel::Take(session);
    session.addTake(take);
    try {
        take->parseStpFile(path);
        QDomDocument document;
        QDomElement root = document.createElement(QStringLiteral("Strip"));
        document.appendChild(root);
        take->write(root, document, true);
    } catch (const std::runtime_error&) {
    }
    return 0;
}
