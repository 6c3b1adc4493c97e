#include "portable/window/errorreports.h"

#include "platform/logger.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/boxes.h"

#include <QTimer>
#include <QWidget>

namespace Kavor::HandheldGui {

bool ErrorReports::msgboxOn = false;

ErrorReports::ErrorReports(QWidget* window) : m_window(window) {}

void ErrorReports::report(const QString& text) {
    if (text.isEmpty() || msgboxOn)
        return;
    if (!m_window->isVisible()) {
        m_kept << text;
        return;
    }
    showBox(text);
    showKept();
}

void ErrorReports::reportWhenFree(const QString& text) {
    if (text.isEmpty() || m_kept.contains(text))
        return;
    m_kept << text;
    QTimer::singleShot(0, m_window, [this] { showKept(); });
}

void ErrorReports::showKept() {
    // Above a keyboard or a question a box would stand in the way of what the user is doing.
    // Inside a wait it would hold back the result.
    while (!m_kept.isEmpty() && m_window->isVisible() && !msgboxOn && !DialogRunner::anyOpen() &&
           ActionGate::panel().isOpen())
        showBox(m_kept.takeFirst());
}

void ErrorReports::showBox(const QString& text) {
    msgboxOn = true;
    // The splash and the toast are top-level windows too, and both go away by themselves: neither can own a box.
    VELDA_LOG("window", QtInfoMsg, "box: %s", text); // what the user was told, for those who repair the instrument
    tellInBox(m_window, DialogKind::Critical, {QStringLiteral("errorBox"), QString(), text, QString()});
    msgboxOn = false;
}

} // namespace Kavor::HandheldGui
