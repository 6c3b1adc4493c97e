#include "common/instrument/reply_text.h"

#include <string_view>

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

} // namespace

std::string trim(const std::string& text) {
    return std::string(trimmed(text));
}

std::string cleanResponse(const std::string& text) {
    const std::string_view whole = trimmed(text);
    return std::string(whole.substr(0, whole.find(';')));
}
