#pragma once

#include <QByteArray>
#include <array>
#include <optional>

namespace Sim {

/// A request line taken apart. The header has lost its leading colon and its question mark.
struct ScpiLine {
    QByteArray header;
    QByteArray argument; ///< trimmed
    bool isQuery = false;
};

ScpiLine splitLine(const QByteArray& line);

/// Whether a header is the one that the pattern names, node by node, in any case. A node may be written in full or in
/// its short form, the pattern's letters without the small ones. The header is one of splitLine's; the pattern's
/// leading colon, question mark and blanks at the end do not count.
bool headerMatches(const char* pattern, const QByteArray& header);

/// As headerMatches for a single word of an argument.
bool wordMatches(const QByteArray& pattern, const QByteArray& word);

/// The word of the table that the text names, null when there is none.
template <std::size_t N>
const char* findWord(const std::array<const char*, N>& words, const QByteArray& text) {
    for (const char* word : words) {
        if (wordMatches(word, text))
            return word;
    }
    return nullptr;
}

/// The number that the whole text is, in decimal; none for anything else, infinities included.
std::optional<double> parseNumber(const QByteArray& text);

/// The text without the double quotes around it, if it has both.
QByteArray unquoted(const QByteArray& text);

/// The shortest decimal text that reads back as the very number.
QByteArray numberText(double value);

/// "-ERR code,sentence", with the codes of IEEE 488.2 / SCPI-99.
QByteArray refusal(int code, const QByteArray& sentence);

enum RefusalCode {
    SyntaxError = -102,
    DataTypeError = -104,
    ParameterNotAllowed = -108,
    MissingParameter = -109,
    UndefinedHeader = -113,
    InvalidBlock = -161,
    ExecutionError = -200,
    SettingsConflict = -221,
    OutOfRange = -222,
    IllegalValue = -224,
    HardwareMissing = -241,
    FileNotFound = -256,
    InputOverrun = -363
};

} // namespace Sim
