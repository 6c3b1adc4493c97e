#pragma once

#include <QObject>

class QApplication;

/// A debugging aid: logs which widget gets and loses the focus, and every press, touch and key that a widget sees. It
/// changes nothing. GUI thread.
namespace Kavor::HandheldGui {

class FocusTrace : public QObject {
    Q_OBJECT

public:
    /// Starts tracing an application until this object goes.
    explicit FocusTrace(QApplication* application);

    /// Traces the application for its whole life if the environment variable VELDA_FOCUS_TRACE is set and not empty.
    static void startIfAsked(QApplication* application);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace Kavor::HandheldGui
