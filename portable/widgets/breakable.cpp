#include "portable/widgets/breakable.h"

namespace Kavor::HandheldGui {

QString breakable(const QString& text, int longestWord) {
    constexpr QChar ZeroWidthSpace(0x200B);
    QString broken;
    int run = 0;
    for (const QChar c : text) {
        broken += c;
        const bool ends = c.isSpace() || c == QLatin1Char('/');
        run = ends ? 0 : run + 1;
        if (c == QLatin1Char('/') || run >= longestWord)
            broken += ZeroWidthSpace;
    }
    return broken;
}

} // namespace Kavor::HandheldGui
