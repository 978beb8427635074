#include <platform/util/ErrorText.h>

#include <algorithm>
#include <stdexcept>

namespace util {

std::string fullMessage(const std::exception& error)
{
    std::string text = error.what();
    try {
        std::rethrow_if_nested(error);
    } catch (const std::exception& inner) {
        text += ": " + fullMessage(inner);
    } catch (...) {
        text += ": an unknown failure";
    }
    return text;
}

void rethrowNaming(const std::string& what, const std::string& path)
{
    try {
        throw;
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        std::string reason;
        try {
            std::rethrow_if_nested(error);
        } catch (const std::exception& inner) {
            reason = fullMessage(inner);
        } catch (...) {
            reason = "an unknown failure";
        }
        if (text.find(path) != std::string::npos || reason.find(path) != std::string::npos)
            throw;
        const std::string location = "in " + what + " " + path;
        try {
            throw std::runtime_error(reason.empty() ? location : reason + " (" + location + ")");
        } catch (...) {
            std::throw_with_nested(std::runtime_error(text));
        }
    }
}

std::string excerpt(const QString& text)
{
    if (text.size() <= sMaxQuotedChars)
        return text.toStdString();
    qsizetype end = sMaxQuotedChars;
    // Keep a surrogate pair whole.
    if (text.at(end - 1).isHighSurrogate())
        --end;
    return text.left(end).toStdString() + "...";
}

std::string excerpt(const std::string& text)
{
    // Counting characters needs the decoded text; short texts are taken as
    // they are (a text of at most sMaxQuotedChars bytes has no more characters).
    if (text.size() <= std::size_t(sMaxQuotedChars))
        return text;
    return excerpt(QString::fromUtf8(text.data(), qsizetype(std::min<std::size_t>(text.size(), 4 * sMaxQuotedChars + 4))));
}

} // namespace util
