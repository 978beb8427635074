#include <datamodel/session/PreparationReport.h>

#include <algorithm>
#include <tuple>

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

std::vector<PreparationMessage> PreparationReport::groupedMessages() const
{
    // Rank of a take and of a band within it: by the report's order, then
    // unknown names in the order met.
    const auto rank = [](std::vector<std::string>& names, const std::string& name) {
        const auto at = std::find(names.begin(), names.end(), name);
        if (at != names.end())
            return std::size_t(at - names.begin());
        names.push_back(name);
        return names.size() - 1;
    };
    std::vector<std::string> takeNames{std::string()};
    std::vector<std::vector<std::string>> bandNames;
    for (const TakePreparation& take : takes) {
        takeNames.push_back(take.name);
        bandNames.emplace_back(1, std::string());
        for (const BandPreparation& band : take.bands)
            bandNames.back().push_back(band.band);
    }
    struct Key {
        std::size_t take;
        std::size_t band;
        int severity;
        std::size_t found;
    };
    std::vector<std::pair<Key, const PreparationMessage*>> keyed;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        const PreparationMessage& message = messages[i];
        const std::size_t take = rank(takeNames, message.take);
        if (bandNames.size() < takeNames.size())
            bandNames.resize(takeNames.size(), std::vector<std::string>(1));
        const std::size_t band = take == 0 ? 0 : rank(bandNames[take - 1], message.band);
        // Errors first.
        const int severity = 2 - int(message.severity);
        keyed.push_back({Key{take, band, severity, i}, &message});
    }
    std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        return std::tie(a.first.take, a.first.band, a.first.severity, a.first.found)
               < std::tie(b.first.take, b.first.band, b.first.severity, b.first.found);
    });
    std::vector<PreparationMessage> grouped;
    for (const auto& entry : keyed)
        grouped.push_back(*entry.second);
    return grouped;
}

void PreparationReport::add(PreparationMessage::Severity severity, std::string subject, std::string text)
{
    add(PreparationMessage{severity, std::move(subject), std::move(text), {}, {}});
}

void PreparationReport::add(PreparationMessage message)
{
    // A failure met again (the takes asked for by the sensor after the
    // takes themselves failed, a trajectory the preparation and the checks
    // both open) is said once, with the most it knows.
    const auto tells = [&message](const std::string& known) {
        const std::string& text = message.text;
        return known == text
               || (known.size() > text.size() + 2 && known.compare(0, text.size(), text) == 0
                   && known.compare(text.size(), 2, ": ") == 0);
    };
    for (const PreparationMessage& known : messages)
        if (known.severity == message.severity && known.take == message.take && known.band == message.band
            && (known.text == message.text ? message.subject.empty() || known.subject == message.subject
                                           : tells(known.text)))
            return;
    if (message.subject.empty())
        message.subject = sessionDirectory.empty() ? input : sessionDirectory;
    messages.push_back(std::move(message));
}

void PreparationReport::error(std::string subject, std::string text)
{
    add(PreparationMessage::Severity::Error, std::move(subject), std::move(text));
}

void PreparationReport::warning(std::string subject, std::string text)
{
    add(PreparationMessage::Severity::Warning, std::move(subject), std::move(text));
}

void PreparationReport::information(std::string subject, std::string text)
{
    add(PreparationMessage::Severity::Information, std::move(subject), std::move(text));
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
