#include "common/instrument/reply_text.h"

#include <algorithm>
#include <string_view>

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::string_view cleaned(std::string_view text) {
    const std::string_view whole = trimmed(text);
    return whole.substr(0, whole.find(';'));
}

// By pieces that stay in the cache, instead of a second buffer as large as the reply.
std::string toUtf8(const QString& text) {
    constexpr int kPiece = 0x4000;
    std::string utf8;
    utf8.reserve(static_cast<std::size_t>(text.size()));
    for (int at = 0; at < text.size();) {
        int length = std::min(kPiece, text.size() - at);
        if (at + length < text.size() && text.at(at + length - 1).isHighSurrogate())
            --length;
        const QByteArray piece = QStringView(text).mid(at, length).toUtf8();
        utf8.append(piece.constData(), static_cast<std::size_t>(piece.size()));
        at += length;
    }
    return utf8;
}

} // namespace

std::string trim(const std::string& text) {
    return std::string(trimmed(text));
}

std::string cleanResponse(const std::string& text) {
    return std::string(cleaned(text));
}

std::string cleanedReply(const QString& reply) {
    std::string text = toUtf8(reply);
    const std::string_view wanted = cleaned(text);
    const std::size_t length = wanted.size();
    if (length > 0)
        text.erase(0, static_cast<std::size_t>(wanted.data() - text.data()));
    text.resize(length);
    return text;
}
