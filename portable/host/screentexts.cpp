#include "portable/host/screentexts.h"

#include "portable/host/panelhost.h"

namespace Kavor::HandheldGui {

void showToast(PanelHost& host, const QString& text) {
    host.tellUser(text);
}

void showCommandFailure(PanelHost& host) {
    showToast(host, QStringLiteral("command send failure"));
}

} // namespace Kavor::HandheldGui
