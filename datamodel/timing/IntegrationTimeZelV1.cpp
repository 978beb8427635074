#include <datamodel/timing/IntegrationTimeZelV1.h>

#include <QDomElement>

namespace datamodel {

const std::string IntegrationTimeZelV1::EMPTY_NAME;

IntegrationTimeZelV1::IntegrationTimeZelV1(Seconds value)
    : m_valueSec(static_cast<float>(value.value()))
{
}

bool IntegrationTimeZelV1::write(const std::string&)
{
    return false;
}

void IntegrationTimeZelV1::addXmlAttribute(QDomElement& element) const
{
    if (isValid())
        element.setAttribute(QStringLiteral("it"), QString::number(double(m_valueSec) * 1000.0, 'f', 3));
}

void IntegrationTimeZelV1::init(const L0Image&)
{
    // Sessions do not read flight data yet: the value stays as it is, as it
    // does when the flight data cannot answer.
}

} // namespace datamodel
