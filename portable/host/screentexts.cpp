#include "portable/host/screentexts.h"

#include "portable/host/panelhost.h"

namespace Kavor::HandheldGui {

void showToast(PanelHost& host, const QString& text) {
    host.tellUser(text);
}

void showCommandFailure(PanelHost& host) {
    showToast(host, QStringLiteral("command send failure"));
}

QString onOneLine(const QString& text) {
    QString line = text;
    for (QChar& c : line) {
        if (!c.isPrint() && !c.isSurrogate())
            c = QLatin1Char(' ');
    }
    return line;
}

QString shortened(const QString& text) {
    constexpr int End = 20;
    const QString line = onOneLine(text);
    return line.size() <= 2 * End + 1 ? line : line.left(End) + QChar(0x2026) + line.right(End);
}

} // namespace Kavor::HandheldGui
