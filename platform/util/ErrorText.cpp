#include <platform/util/ErrorText.h>

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

} // namespace util
