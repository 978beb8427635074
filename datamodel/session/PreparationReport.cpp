#include <datamodel/session/PreparationReport.h>

#include <algorithm>

namespace datamodel {

std::size_t PreparationReport::ctgCount(CtgStatus status) const
{
    std::size_t count = 0;
    for (const TakePreparation& take : takes)
        count += std::size_t(std::count_if(take.bands.begin(), take.bands.end(),
                                           [status](const BandPreparation& band) { return band.ctg == status; }));
    return count;
}

std::size_t PreparationReport::messageCount(PreparationMessage::Severity severity) const
{
    return std::size_t(std::count_if(messages.begin(), messages.end(),
                                     [severity](const PreparationMessage& m) { return m.severity == severity; }));
}

void PreparationReport::add(PreparationMessage::Severity severity, std::string subject, std::string text)
{
    // A failure met again (the takes asked for by the sensor after the
    // takes themselves failed) is said once.
    for (const PreparationMessage& known : messages)
        if (known.severity == severity && known.subject == subject && known.text == text)
            return;
    messages.push_back({severity, std::move(subject), std::move(text)});
}

void PreparationReport::error(std::string subject, std::string text)
{
    add(PreparationMessage::Severity::Error, std::move(subject), std::move(text));
}

void PreparationReport::warning(std::string subject, std::string text)
{
    add(PreparationMessage::Severity::Warning, std::move(subject), std::move(text));
}

const char* toString(CtgStatus status)
{
    switch (status) {
    case CtgStatus::Written:
        return "written";
    case CtgStatus::Present:
        return "present";
    case CtgStatus::Failed:
        return "failed";
    case CtgStatus::NotChecked:
        break;
    }
    return "not checked";
}

const char* toString(PreparationMessage::Severity severity)
{
    switch (severity) {
    case PreparationMessage::Severity::Information:
        return "information";
    case PreparationMessage::Severity::Warning:
        return "warning";
    case PreparationMessage::Severity::Error:
        break;
    }
    return "error";
}

} // namespace datamodel
