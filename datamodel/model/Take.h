#pragma once

#include <datamodel/model/Cacheable.h>
#include <datamodel/model/ImageCollection.h>
#include <datamodel/model/Serializable.h>
#include <datamodel/model/Validatable.h>

#include <string>
#include <vector>

namespace datamodel {

class L0Image;
class L2Image;
class TakeManager;

/// One recorded flight line (strip) of a take manager: its level-0 images
/// (one per band), optional level-2 images and its dark takes. The take owns
/// its images; dark takes are listed, not owned.
class Take : public ImageCollection, public Serializable, public virtual Validatable, public virtual Cacheable {
public:
    /// An empty take of `manager`; the manager takes ownership when the take
    /// is added to it.
    explicit Take(TakeManager& manager);
    /// Deletes every level-0 and level-2 image (null entries are skipped).
    ~Take() override;
    Take(const Take&) = delete;
    Take& operator=(const Take&) = delete;

    std::vector<L0Image*> imagesL0() const override { return m_imagesL0; }
    std::vector<L2Image*> imagesL2() const override { return m_imagesL2; }
    /// A take holds no nested collections.
    std::vector<ImageCollection*> collections() const override { return {}; }
    /// Band names of the level-0 images, in image order, each once.
    std::vector<std::string> availableBands() const override;
    /// Always throws: a take holds no nested collections.
    void remove(ImageCollection* collection) override;
    /// Takes the image out (level-0 images are searched first) and deletes
    /// it. Throws "Trying to remove an Image not in this Take." otherwise.
    void remove(Image* image) override;
    /// The strip name: the name set, else derived from the level-0 image
    /// file names. Throws "Cannot derive strip name." and "While trying to
    /// derive strip name, found conflicting values: " + a + " vs. " + b.
    std::string name() const override;
    virtual void setName(const std::string& name);

    /// Appends the image; the take takes ownership.
    void addImage(L0Image* image);
    void addImage(L2Image* image);

    /// Lists `take` as a dark take of this one (not owned).
    void addDarkTake(Take* take);
    const std::vector<Take*>& darkTakes() const { return m_darkTakes; }

    TakeManager& manager() { return m_manager; }
    const TakeManager& manager() const { return m_manager; }

    void write(Serializer& serializer) const override;
    void write(QDomElement& parent, QDomDocument& document) const override;
    void read(Serializer& serializer) override;

    /// Releases the take's own cached data (not its images').
    void uncache() override;
    /// Calls the manager's traverse(Take&).
    void traverse(CacheManager& manager) override;
    /// Calls the traverser's validate(Take&).
    void traverse(ValidationTraverser& traverser) override;

private:
    mutable std::string m_name;
    mutable bool m_nameSet = false;
    std::vector<L2Image*> m_imagesL2;
    std::vector<L0Image*> m_imagesL0;
    std::vector<Take*> m_darkTakes;
    TakeManager& m_manager;
    mutable std::vector<std::string> m_availableBands;
};

} // namespace datamodel
