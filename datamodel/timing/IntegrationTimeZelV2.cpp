#include <datamodel/timing/IntegrationTimeZelV2.h>

#include <QDomElement>
#include <QFileInfo>

#include <stdexcept>

namespace datamodel {

namespace {
constexpr double sMicrosecondsToSeconds = 1e-6;
}

IntegrationTimeZelV2::IntegrationTimeZelV2(const std::string& fileName)
    : m_fileName(fileName)
{
}

IntegrationTimeZelV2::IntegrationTimeZelV2(const IntegrationTimeZelV2& other)
    : IntegrationTime(other)
    , m_fileName(other.m_fileName)
    , m_data(other.m_data ? std::make_unique<ScanLineData>(*other.m_data) : nullptr)
{
}

IntegrationTimeZelV2::~IntegrationTimeZelV2() = default;

const ScanLineData& IntegrationTimeZelV2::data() const
{
    if (!m_data)
        m_data = std::make_unique<ScanLineData>(ScanLineData::read(m_fileName, sMicrosecondsToSeconds));
    return *m_data;
}

Seconds IntegrationTimeZelV2::value() const { return nominalValue(); }
Seconds IntegrationTimeZelV2::value(double line) const { return seconds(data().value(line)); }
Seconds IntegrationTimeZelV2::nominalValue() const { return seconds(data().nominalValue()); }
Seconds IntegrationTimeZelV2::minValue() const { return seconds(data().minValue()); }
Seconds IntegrationTimeZelV2::maxValue() const { return seconds(data().maxValue()); }

bool IntegrationTimeZelV2::isValid() const
{
    if (m_fileName.empty())
        return false;
    try {
        data();
    } catch (const std::runtime_error&) {
        return false;
    }
    return true;
}

bool IntegrationTimeZelV2::write(const std::string& path)
{
    ScanLineData copy = data();
    copy.write(path);
    *m_data = copy;
    m_fileName = path;
    return true;
}

void IntegrationTimeZelV2::addXmlAttribute(QDomElement& element) const
{
    element.setAttribute(QStringLiteral("it"), QFileInfo(QString::fromStdString(m_fileName)).fileName());
}

void IntegrationTimeZelV2::cache()
{
    data();
}

} // namespace datamodel
