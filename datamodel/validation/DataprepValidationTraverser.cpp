#include <datamodel/validation/DataprepValidationTraverser.h>

#include <datamodel/model/Settings.h>

#include <algorithm>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace datamodel {

namespace {

template <typename T>
void appendOnce(std::vector<T*>& list, T* item)
{
    if (item && std::find(list.begin(), list.end(), item) == list.end())
        list.push_back(item);
}

} // namespace

DataprepValidationTraverser::DataprepValidationTraverser(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
    , BasicValidationTraverser(information, warning, error)
{
    try {
        m_angularVelocityLimitDegPerSec = Settings::angularVelocityLimit();
    } catch (const std::exception& e) {
        this->error(e.what());
    }
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "Angular speed threshold used for validation: " << m_angularVelocityLimitDegPerSec << " degrees/second.";
    this->information(text.str());
}

DataprepValidationTraverser::DataprepValidationTraverser(Quiet) {}

DataprepValidationTraverser::~DataprepValidationTraverser() = default;

void DataprepValidationTraverser::error(const std::string& message)
{
    BasicValidationTraverser::error(message);
    appendOnce(m_takesWithErrors, m_currentTake);
    appendOnce(m_imagesWithErrors, m_currentImage);
}

void DataprepValidationTraverser::setCurrent(Take* take, L0Image* image)
{
    m_currentTake = take;
    m_currentImage = image;
}

} // namespace datamodel
