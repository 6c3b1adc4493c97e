#include "common/link/reply_text.h"

#include <string_view>

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view Blank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(Blank);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(Blank) - first + 1);
}

std::string_view cleaned(std::string_view text) {
    const std::string_view whole = trimmed(text);
    return whole.substr(0, whole.find(';'));
}

} // namespace

std::string trim(const std::string& text) {
    return std::string(trimmed(text));
}

std::string cleanResponse(const std::string& text) {
    return std::string(cleaned(text));
}

std::string cleanedReply(std::string reply) {
    const std::string_view wanted = cleaned(reply);
    const std::size_t length = wanted.size();
    if (length > 0)
        reply.erase(0, static_cast<std::size_t>(wanted.data() - reply.data()));
    reply.resize(length);
    return reply;
}
