#pragma once

#include <datamodel/model/Validatable.h>

#include <string>
#include <vector>

namespace datamodel {

class Image;
class L0Image;
class L2Image;

/// A collection of images, possibly nested: a take holds images, a session or
/// block holds takes.
class ImageCollection : public virtual Validatable {
public:
    virtual std::vector<L0Image*> imagesL0() const = 0;
    virtual std::vector<L2Image*> imagesL2() const = 0;
    /// The nested collections (a session's or block's takes).
    virtual std::vector<ImageCollection*> collections() const = 0;
    /// Names of the bands the collection holds.
    virtual std::vector<std::string> availableBands() const = 0;
    /// Takes `collection` out of this one and deletes it.
    virtual void remove(ImageCollection* collection) = 0;
    /// Takes `image` out of this collection and deletes it.
    virtual void remove(Image* image) = 0;
    virtual std::string name() const = 0;
};

} // namespace datamodel
