#pragma once

#include <datamodel/timing/TdiData.h>

namespace datamodel {

/// One TDI stage on every scan line.
class TdiDataZelV1 : public TdiData {
public:
    static constexpr float TDI_1 = 1.0f;
    static const std::string EMPTY_NAME;

    float value() const override { return TDI_1; }
    float value(float) const override { return TDI_1; }
    float minValue() const override { return TDI_1; }
    float maxValue() const override { return TDI_1; }
    const std::string& fileName() const override { return EMPTY_NAME; }
    /// Nothing is written; returns false.
    bool write(const std::string&) override { return false; }
    /// Writes no attribute.
    void addXmlAttribute(QDomElement&) const override {}
    void cache() override {}
    TdiData* copy() const override { return new TdiDataZelV1(*this); }
};

} // namespace datamodel
