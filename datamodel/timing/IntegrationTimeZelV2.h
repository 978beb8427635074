#pragma once

#include <datamodel/timing/IntegrationTime.h>
#include <datamodel/timing/ScanLineData.h>

#include <memory>

namespace datamodel {

/// Integration times per scan line from an integration-time file (values in
/// microseconds in the file), loaded on first use.
class IntegrationTimeZelV2 : public IntegrationTime {
public:
    explicit IntegrationTimeZelV2(const std::string& fileName);
    IntegrationTimeZelV2(const IntegrationTimeZelV2& other);
    ~IntegrationTimeZelV2() override;

    Seconds value() const override;
    Seconds value(double line) const override;
    Seconds nominalValue() const override;
    Seconds minValue() const override;
    Seconds maxValue() const override;
    const std::string& fileName() const override { return m_fileName; }
    /// False for an empty file name or a file that cannot be loaded.
    bool isValid() const override;
    /// Loads the values, writes them to `path` and takes `path` as the file.
    bool write(const std::string& path) override;
    /// "it" = the file name without directory.
    void addXmlAttribute(QDomElement& element) const override;
    void cache() override;
    void init(const L0Image&) override {}
    IntegrationTime* copy() const override { return new IntegrationTimeZelV2(*this); }

    /// The loaded values; loads them on first use (throws as ScanLineData::read).
    const ScanLineData& data() const;

private:
    std::string m_fileName;
    mutable std::unique_ptr<ScanLineData> m_data;
};

} // namespace datamodel
