#pragma once

#include <datamodel/model/Seconds.h>

#include <string>

class QDomElement;

namespace datamodel {

class L0Image;

/// The integration time of a level-0 band: one constant (IntegrationTimeZelV1)
/// or per scan line from a file (IntegrationTimeZelV2).
class IntegrationTime {
public:
    virtual ~IntegrationTime() = default;

    /// The band's integration time: the constant, or the nominal value of
    /// the file (the value in force over the most scan lines).
    virtual Seconds value() const = 0;
    /// The integration time at a scan line (0-based, fractional lines fall
    /// on the line they are in).
    virtual Seconds value(double line) const = 0;
    virtual Seconds nominalValue() const = 0;
    virtual Seconds minValue() const = 0;
    virtual Seconds maxValue() const = 0;
    /// The file the values come from; empty for a constant.
    virtual const std::string& fileName() const = 0;
    virtual bool isValid() const = 0;
    /// Writes the values to `path`; false when there is nothing to write.
    virtual bool write(const std::string& path) = 0;
    /// Sets the image element's "it" attribute.
    virtual void addXmlAttribute(QDomElement& element) const = 0;
    /// Loads what is loaded lazily.
    virtual void cache() = 0;
    /// Completes the value from what the image's session recorded.
    virtual void init(const L0Image& image) = 0;
    /// A copy that the caller owns.
    virtual IntegrationTime* copy() const = 0;
};

} // namespace datamodel
