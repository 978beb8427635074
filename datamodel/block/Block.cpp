#include <datamodel/block/Block.h>

#include <datamodel/model/Take.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <QFileInfo>

#include <algorithm>
#include <stdexcept>

namespace datamodel {

Block::Block() = default;

Block::~Block()
{
    for (Take* take : m_takes)
        delete take;
    deleteGroundPoints();
}

std::string Block::blockDirectory() const
{
    return QFileInfo(QString::fromStdString(m_filename)).absolutePath().toStdString();
}

std::string Block::directory(const Take& take) const
{
    return blockDirectory() + "/strips/" + take.name();
}

void Block::addTake(Take* take)
{
    m_takes.push_back(take);
}

std::vector<ImageCollection*> Block::collections() const
{
    return std::vector<ImageCollection*>(m_takes.begin(), m_takes.end());
}

std::vector<std::string> Block::availableBands() const
{
    return bandsOf(m_takes);
}

void Block::remove(ImageCollection* collection)
{
    Take* take = dynamic_cast<Take*>(collection);
    if (!take)
        throw std::runtime_error("Not a take.");
    auto found = std::find(m_takes.begin(), m_takes.end(), take);
    if (found == m_takes.end())
        throw std::runtime_error("Trying to remove a take not in this block.");
    m_takes.erase(found);
    delete take;
}

void Block::remove(Image*)
{
    throw std::runtime_error("No images in Blocks.");
}

void Block::write(Serializer&) const
{
    throw std::runtime_error("Writing a block file is not supported yet: " + m_filename);
}

void Block::write(QDomElement&, QDomDocument&) const
{
    throw std::runtime_error("Writing a block file is not supported yet: " + m_filename);
}

void Block::read(Serializer&)
{
    throw std::runtime_error("Reading a block file is not supported yet: " + m_filename);
}

void Block::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
