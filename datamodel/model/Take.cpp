#include <datamodel/model/Take.h>

#include <datamodel/model/CacheManager.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <stdexcept>

namespace datamodel {

Take::Take(TakeManager& manager)
    : m_manager(manager)
{
}

Take::~Take()
{
    for (L0Image* image : m_imagesL0)
        delete image;
    for (L2Image* image : m_imagesL2)
        delete image;
}

std::vector<std::string> Take::availableBands() const
{
    if (m_availableBands.empty()) {
        for (const L0Image* image : m_imagesL0) {
            if (image && std::find(m_availableBands.begin(), m_availableBands.end(), image->bandName())
                    == m_availableBands.end())
                m_availableBands.push_back(image->bandName());
        }
    }
    return m_availableBands;
}

void Take::remove(ImageCollection*)
{
    throw std::runtime_error("A take holds no collections: " + name());
}

void Take::remove(Image* image)
{
    auto l0 = std::find_if(m_imagesL0.begin(), m_imagesL0.end(),
                           [image](L0Image* candidate) { return static_cast<Image*>(candidate) == image; });
    if (l0 != m_imagesL0.end()) {
        m_imagesL0.erase(l0);
    } else {
        auto l2 = std::find_if(m_imagesL2.begin(), m_imagesL2.end(),
                               [image](L2Image* candidate) { return static_cast<Image*>(candidate) == image; });
        if (l2 == m_imagesL2.end())
            throw std::runtime_error("Trying to remove an Image not in this Take.");
        m_imagesL2.erase(l2);
    }
    delete image;
    m_availableBands.clear();
}

std::string Take::name() const
{
    if (m_nameSet)
        return m_name;
    // Band file names end in channel, look direction, two digits and the
    // staggered-line letter; what stands before is the strip name.
    static const QRegularExpression bandFile(
        QStringLiteral("^(.+)(RED|BLU|GRN|PAN|NIR)(F|B|N)([0-9]{2,2})(A|B)$"));
    QString candidate;
    for (const L0Image* image : m_imagesL0) {
        if (!image)
            continue;
        const QString baseName = QFileInfo(QString::fromStdString(image->filename())).baseName();
        const QRegularExpressionMatch match = bandFile.match(baseName);
        if (!match.hasMatch())
            continue;
        const QString strip = match.captured(1);
        if (candidate.isNull())
            candidate = strip;
        else if (strip != candidate)
            throw std::runtime_error("While trying to derive strip name, found conflicting values: "
                                     + candidate.toStdString() + " vs. " + strip.toStdString());
    }
    if (candidate.isNull())
        throw std::runtime_error("Cannot derive strip name.");
    m_name = candidate.toStdString();
    m_nameSet = true;
    return m_name;
}

void Take::setName(const std::string& name)
{
    m_name = name;
    m_nameSet = true;
}

void Take::addImage(L0Image* image)
{
    m_imagesL0.push_back(image);
    m_availableBands.clear();
}

void Take::addImage(L2Image* image)
{
    m_imagesL2.push_back(image);
}

void Take::addDarkTake(Take* take)
{
    m_darkTakes.push_back(take);
}

void Take::write(Serializer&) const
{
    throw std::runtime_error("Writing a take as a strip element is not supported yet: " + name());
}

void Take::write(QDomElement&, QDomDocument&) const
{
    throw std::runtime_error("Writing a take as a strip element is not supported yet: " + name());
}

void Take::read(Serializer&)
{
    throw std::runtime_error("Reading a take from a strip element is not supported yet.");
}

void Take::uncache()
{
    // Nothing is cached on a take yet.
}

void Take::traverse(CacheManager& manager)
{
    manager.traverse(*this);
}

void Take::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
