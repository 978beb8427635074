#include <datamodel/timing/TdiDataZelV2.h>

#include <QDomElement>
#include <QFileInfo>

namespace datamodel {

namespace {
constexpr double sStageScale = 1.0;
}

TdiDataZelV2::TdiDataZelV2(const std::string& fileName)
    : m_fileName(fileName)
{
}

TdiDataZelV2::TdiDataZelV2(const TdiDataZelV2& other)
    : TdiData(other)
    , m_fileName(other.m_fileName)
    , m_data(other.m_data ? std::make_unique<ScanLineData>(*other.m_data) : nullptr)
{
}

TdiDataZelV2::~TdiDataZelV2() = default;

const ScanLineData& TdiDataZelV2::data() const
{
    if (!m_data)
        m_data = std::make_unique<ScanLineData>(ScanLineData::read(m_fileName, sStageScale));
    return *m_data;
}

float TdiDataZelV2::value() const { return data().nominalValue(); }
float TdiDataZelV2::value(float line) const { return data().value(line); }
float TdiDataZelV2::minValue() const { return data().minValue(); }
float TdiDataZelV2::maxValue() const { return data().maxValue(); }

bool TdiDataZelV2::write(const std::string& path)
{
    ScanLineData copy = data();
    copy.write(path);
    *m_data = copy;
    m_fileName = path;
    return true;
}

void TdiDataZelV2::addXmlAttribute(QDomElement& element) const
{
    element.setAttribute(QStringLiteral("tdi"), QFileInfo(QString::fromStdString(m_fileName)).fileName());
}

void TdiDataZelV2::cache()
{
    data();
}

} // namespace datamodel
