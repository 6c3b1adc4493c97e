#include "portable/host/screentexts.h"

#include "portable/host/panelhost.h"
#include "portable/widgets/ToastOverlay.h"

namespace Kavor::HandheldGui {

void showToast(PanelHost& host, const QString& text) {
    tell(host.toast(), text);
}

void showCommandFailure(PanelHost& host) {
    showToast(host, QStringLiteral("command send failure"));
}

} // namespace Kavor::HandheldGui
