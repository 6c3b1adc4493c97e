#include "sim/scpi_text.h"

#include "common/wire/scpi_words.h"

#include <QLocale>
#include <QString>
#include <algorithm>
#include <cmath>
#include <string_view>

namespace Sim {
namespace {

using View = std::string_view;

View viewOf(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isSmall(char c) {
    return c >= 'a' && c <= 'z';
}

/// Without the leading colon, the question mark and the blanks around.
View bareHeader(View header) {
    while (!header.empty() && header.back() == ' ')
        header.remove_suffix(1);
    if (!header.empty() && header.front() == ':')
        header.remove_prefix(1);
    if (!header.empty() && header.back() == '?')
        header.remove_suffix(1);
    return header;
}

bool matchesInFull(View pattern, View word) {
    return std::equal(pattern.begin(), pattern.end(), word.begin(), word.end(),
                      [](char a, char b) { return upper(a) == upper(b); });
}

bool matchesShortForm(View pattern, View word) {
    for (const char c : pattern) {
        if (isSmall(c))
            continue;
        if (word.empty() || upper(word.front()) != c)
            return false;
        word.remove_prefix(1);
    }
    return word.empty();
}

bool nodeMatches(View pattern, View node) {
    return matchesInFull(pattern, node) || matchesShortForm(pattern, node);
}

/// Takes the first node off a header.
View takeNode(View& header) {
    const std::size_t end = std::min(header.find(':'), header.size());
    const View node = header.substr(0, end);
    header.remove_prefix(std::min(end + 1, header.size()));
    return node;
}

} // namespace

ScpiLine splitLine(const QByteArray& line) {
    const QByteArray text = line.trimmed();
    int end = 0;
    while (end < text.size() && text.at(end) != ' ' && text.at(end) != '\t')
        ++end;
    const QByteArray header = text.left(end);
    const View bare = bareHeader(viewOf(header));
    return {QByteArray(bare.data(), static_cast<int>(bare.size())), text.mid(end).trimmed(), header.endsWith('?')};
}

bool wordMatches(const QByteArray& pattern, const QByteArray& word) {
    return nodeMatches(viewOf(pattern), viewOf(word));
}

bool headerMatches(const char* pattern, const QByteArray& header) {
    View expected = bareHeader(pattern);
    View given = viewOf(header);
    if (std::count(expected.begin(), expected.end(), ':') != std::count(given.begin(), given.end(), ':'))
        return false;
    while (!expected.empty()) {
        if (!nodeMatches(takeNode(expected), takeNode(given)))
            return false;
    }
    return given.empty();
}

std::optional<double> parseNumber(const QByteArray& text) {
    bool ok = false;
    const double number = text.toDouble(&ok);
    if (!ok || !std::isfinite(number))
        return std::nullopt;
    return number;
}

QByteArray unquoted(const QByteArray& text) {
    const bool quoted = text.size() >= 2 && text.startsWith('"') && text.endsWith('"');
    return quoted ? text.mid(1, text.size() - 2) : text;
}

QByteArray numberText(double value) {
    return QString::number(value, 'g', QLocale::FloatingPointShortest).toUtf8();
}

QByteArray refusal(int code, const QByteArray& sentence) {
    return QByteArray(Scpi::Refusal) + ' ' + QByteArray::number(code) + ',' + sentence;
}

} // namespace Sim
