#pragma once

#include <string>

class QDomElement;

namespace datamodel {

/// The number of TDI (time-delay integration) stages of a level-0 band: one
/// stage throughout (TdiDataZelV1) or per scan line from a file (TdiDataZelV2).
class TdiData {
public:
    virtual ~TdiData() = default;

    /// The stage count in force over the most scan lines.
    virtual float value() const = 0;
    /// The stage count at a scan line (fractional lines fall on the line they are in).
    virtual float value(float line) const = 0;
    virtual float minValue() const = 0;
    virtual float maxValue() const = 0;
    /// The file the values come from; empty for a constant.
    virtual const std::string& fileName() const = 0;
    /// Writes the values to `path`; false when there is nothing to write.
    virtual bool write(const std::string& path) = 0;
    /// Sets the image element's "tdi" attribute when there is a file.
    virtual void addXmlAttribute(QDomElement& element) const = 0;
    /// Loads what is loaded lazily.
    virtual void cache() = 0;
    /// A copy that the caller owns.
    virtual TdiData* copy() const = 0;
};

} // namespace datamodel
