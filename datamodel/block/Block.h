#pragma once

#include <datamodel/model/ImageCollection.h>
#include <datamodel/model/Serializable.h>
#include <datamodel/model/TakeManager.h>
#include <datamodel/model/Validatable.h>

#include <string>
#include <vector>

namespace datamodel {

/// A photogrammetric project: takes (strips) copied out of recording
/// sessions, kept in a block directory beside the block file. Each take lives
/// in strips/<take name>/ under that directory. The block owns its takes and
/// its ground points.
class Block : public TakeManager, public ImageCollection, public Serializable, public virtual Validatable {
public:
    Block();
    /// Deletes every take (null entries are skipped) and every ground point.
    ~Block() override;

    std::vector<Take*> takes() const override { return m_takes; }
    /// The block directory + "/strips/" + the take's name.
    std::string directory(const Take& take) const override;
    /// The display name.
    std::string name() const override { return m_displayName; }

    void setDisplayName(const std::string& name) { m_displayName = name; }
    /// Path of the block file; its directory is the block directory.
    const std::string& filename() const { return m_filename; }
    void setFilename(const std::string& filename) { m_filename = filename; }
    /// The directory that holds the block file.
    std::string blockDirectory() const;

    /// Appends `take`; the block takes ownership.
    void addTake(Take* take);

    std::vector<L0Image*> imagesL0() const override { return {}; }
    std::vector<L2Image*> imagesL2() const override { return {}; }
    /// The takes.
    std::vector<ImageCollection*> collections() const override;
    std::vector<std::string> availableBands() const override;
    /// Takes `collection` (a take of this block) out and deletes it. Throws
    /// "Not a take." and "Trying to remove a take not in this block.".
    void remove(ImageCollection* collection) override;
    /// Always throws "No images in Blocks.".
    void remove(Image* image) override;

    void write(Serializer& serializer) const override;
    void write(QDomElement& parent, QDomDocument& document) const override;
    void read(Serializer& serializer) override;

    /// Calls the traverser's validate(Block&).
    void traverse(ValidationTraverser& traverser) override;

private:
    std::string m_displayName;
    std::string m_filename;
    std::vector<Take*> m_takes;
};

} // namespace datamodel
