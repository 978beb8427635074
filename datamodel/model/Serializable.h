#pragma once

class QDomDocument;
class QDomElement;

namespace datamodel {

class Serializer;

/// Something that is written to and read from XML.
class Serializable {
public:
    virtual ~Serializable() = default;
    virtual void write(Serializer& serializer) const = 0;
    /// Appends the object's own element to `parent`.
    virtual void write(QDomElement& parent, QDomDocument& document) const = 0;
    virtual void read(Serializer& serializer) = 0;

protected:
    Serializable() = default;
    /// For classes that build themselves from an XML element; `flags` is a
    /// version or flag word handed through. The base stores nothing.
    Serializable(QDomElement& element, int flags);
};

inline Serializable::Serializable(QDomElement&, int) {}

} // namespace datamodel
