#include "portable/widgets/breakable.h"

namespace Kavor::HandheldGui {

QString breakable(const QString& text, int longestWord) {
    QString broken;
    QString word;
    const auto endWord = [&] {
        int run = 0;
        for (const QChar c : word) {
            broken += c;
            run = c == QLatin1Char('/') ? 0 : run + 1;
            if (word.size() > longestWord && (run == 0 || run % longestWord == 0))
                broken += QChar(0x200B);
        }
        word.clear();
    };
    for (const QChar c : text) {
        if (!c.isSpace()) {
            word += c;
            continue;
        }
        endWord();
        broken += c;
    }
    endWord();
    return broken;
}

} // namespace Kavor::HandheldGui
