#pragma once

#include <datamodel/timing/ScanLineData.h>
#include <datamodel/timing/TdiData.h>

#include <memory>

namespace datamodel {

/// TDI stage counts per scan line from a TDI file, loaded on first use.
class TdiDataZelV2 : public TdiData {
public:
    explicit TdiDataZelV2(const std::string& fileName);
    TdiDataZelV2(const TdiDataZelV2& other);
    ~TdiDataZelV2() override;

    float value() const override;
    float value(float line) const override;
    float minValue() const override;
    float maxValue() const override;
    const std::string& fileName() const override { return m_fileName; }
    /// Loads the values, writes them to `path` and takes `path` as the file.
    bool write(const std::string& path) override;
    /// "tdi" = the file name without directory.
    void addXmlAttribute(QDomElement& element) const override;
    void cache() override;
    TdiData* copy() const override { return new TdiDataZelV2(*this); }

    /// The loaded values; loads them on first use (throws as ScanLineData::read).
    const ScanLineData& data() const;

private:
    std::string m_fileName;
    mutable std::unique_ptr<ScanLineData> m_data;
};

} // namespace datamodel
