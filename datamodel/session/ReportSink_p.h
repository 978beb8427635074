#pragma once

#include <datamodel/session/PreparationReport.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <string>

namespace datamodel {

/// Files the messages of validators into a preparation report, with the
/// take and band they are told of.
class ReportSink : public ValidationTraverser::Information,
                   public ValidationTraverser::Warning,
                   public ValidationTraverser::Error {
public:
    explicit ReportSink(PreparationReport& report)
        : m_report(report)
    {
    }

    /// Messages from now on belong to `take` (empty: the session) and `band`
    /// (empty: the whole take); `subject` empty makes them the session's.
    void at(std::string take, std::string band = {})
    {
        m_take = std::move(take);
        m_band = std::move(band);
    }
    void about(std::string subject) { m_subject = std::move(subject); }

    void information(const std::string& message) override { add(PreparationMessage::Severity::Information, message); }
    void warning(const std::string& message) override { add(PreparationMessage::Severity::Warning, message); }
    void error(const std::string& message) override { add(PreparationMessage::Severity::Error, message); }

private:
    void add(PreparationMessage::Severity severity, const std::string& text)
    {
        std::string subject = m_subject;
        if (!m_take.empty())
            subject = "take " + m_take + (m_band.empty() ? std::string() : ", band " + m_band);
        m_report.add(PreparationMessage{severity, std::move(subject), text, m_take, m_band});
    }

    PreparationReport& m_report;
    std::string m_subject;
    std::string m_take;
    std::string m_band;
};

} // namespace datamodel
