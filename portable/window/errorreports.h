#pragma once

#include <QStringList>

class QWidget;

namespace Kavor::HandheldGui {

/// The modal boxes of the main window: never two at a time, and none before the window is on screen. GUI thread.
class ErrorReports {
public:
    /// window: the main window, parent of the boxes and the one that must be visible.
    explicit ErrorReports(QWidget* window);

    /// Shows a box and waits for its end. Nothing for an empty text or while a box is open. While the window is not
    /// visible yet, the text is kept and shown by showKept().
    void report(const QString& text);

    /// Keeps the text and returns; its box comes from the event loop, when no other dialog is open.
    void reportWhenFree(const QString& text);

    /// Shows what was kept, one box after the other.
    void showKept();

private:
    void showBox(const QString& text);

    QWidget* m_window;
    QStringList m_kept;
    static bool msgboxOn;
};

} // namespace Kavor::HandheldGui
