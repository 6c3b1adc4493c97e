#include "portable/window/errorreports.h"

#include "platform/logger.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/dialogs.h"

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

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
    QWidget* active = QApplication::activeWindow();
    const bool fits =
        active && active->windowType() != Qt::Popup && !active->windowFlags().testFlag(Qt::WindowTransparentForInput);
    QMessageBox box(fits ? active : m_window);
    box.setObjectName(QStringLiteral("errorBox"));
    box.setText(text);
    QFont font = box.font();
    font.setPixelSize(24);
    box.setFont(font);
    box.setStandardButtons(QMessageBox::Ok);
    box.setDefaultButton(QMessageBox::Ok);
    dressBox(box);
    VELDA_LOG("window", QtInfoMsg, "box: %s", text); // what the user was told, for those who repair the instrument
    DialogRunner::current().run(box, DialogKind::Critical, text);
    msgboxOn = false;
}

} // namespace Kavor::HandheldGui
