#include "portable/widgets/breakable.h"

namespace Kavor::HandheldGui {

QString breakable(const QString& text, int longestWord) {
    constexpr QChar ZeroWidthSpace(0x200B);
    QString broken;
    int wordSize = 0; // of the word that the next character belongs to
    int run = 0;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (i == 0 || text.at(i - 1).isSpace()) {
            wordSize = 0;
            while (i + wordSize < text.size() && !text.at(i + wordSize).isSpace())
                ++wordSize;
        }
        broken += c;
        const bool isSlash = c == QLatin1Char('/');
        run = c.isSpace() || isSlash ? 0 : run + 1;
        if (wordSize > longestWord && (isSlash || run >= longestWord))
            broken += ZeroWidthSpace;
    }
    return broken;
}

} // namespace Kavor::HandheldGui
