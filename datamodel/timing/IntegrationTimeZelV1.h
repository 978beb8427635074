#pragma once

#include <datamodel/timing/IntegrationTime.h>

namespace datamodel {

/// A constant integration time; -1 s (or any value not above 0) is unknown.
class IntegrationTimeZelV1 : public IntegrationTime {
public:
    static const std::string EMPTY_NAME;

    explicit IntegrationTimeZelV1(Seconds value);

    Seconds value() const override { return seconds(m_valueSec); }
    Seconds value(double) const override { return seconds(m_valueSec); }
    Seconds nominalValue() const override { return seconds(m_valueSec); }
    Seconds minValue() const override { return seconds(m_valueSec); }
    Seconds maxValue() const override { return seconds(m_valueSec); }
    const std::string& fileName() const override { return EMPTY_NAME; }
    /// The value is greater than 0.
    bool isValid() const override { return m_valueSec > 0.0f; }
    /// Nothing is written; returns false.
    bool write(const std::string& path) override;
    /// When valid: "it" = the value in milliseconds, fixed with 3 decimals.
    void addXmlAttribute(QDomElement& element) const override;
    void cache() override {}
    /// Takes the integration time that the flight data recorded for the
    /// image's band when the session has flight data; otherwise, or when the
    /// flight data cannot answer, the value stays as it is.
    void init(const L0Image& image) override;
    IntegrationTime* copy() const override { return new IntegrationTimeZelV1(*this); }

private:
    float m_valueSec;
};

} // namespace datamodel
