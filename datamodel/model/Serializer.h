#pragma once

#include <QDomDocument>
#include <QDomElement>

namespace datamodel {

/// Carries the XML document and element that a Serializable reads itself from
/// or writes itself into. Files are saved as UTF-8 with an indentation of 4.
class Serializer {
public:
    Serializer(QDomDocument& document, QDomElement& element)
        : m_document(document)
        , m_element(element)
    {
    }
    virtual ~Serializer() = default;

    QDomDocument& document() { return m_document; }
    QDomElement& element() { return m_element; }

private:
    QDomDocument& m_document;
    QDomElement& m_element;
};

} // namespace datamodel
