#pragma once

#include <QString>

class QDialog;

namespace Kavor::HandheldGui {

enum class DialogKind { Keyboard, Question, Information, Critical, Progress };

/// The one place through which every modal dialog of the panel runs: keyboards, questions, boxes. A dialog becomes a
/// child of the window that it belongs to, above a scrim that takes what is pressed beside it, but for the controls
/// that are kept live (scrim.h); beside progress nothing is live. A keyboard stands in the window's upper left corner,
/// everything else in the middle above the control row. The runner counts what is open, and can be replaced by a test,
/// which then answers by pressing the dialog's own buttons. GUI thread only.
class DialogRunner {
public:
    virtual ~DialogRunner() = default;

    /// Runs a dialog modally and returns QDialog's result. text says what the user is asked or told. A dialog without a
    /// window on the screen is run as a window of its own.
    int run(QDialog& dialog, DialogKind kind, const QString& text);

    /// The runner in force: the panel's own unless another one is installed.
    static DialogRunner& current();

    /// Installs another runner, or the panel's own again with nullptr. Not owned.
    static void install(DialogRunner* runner);

    /// True while any dialog is open: periodic work that would change what lies below waits.
    static bool anyOpen() { return topmost() != nullptr; }

    /// The dialog that was opened last and is still open; null when there is none.
    static QDialog* topmost();

protected:
    /// Shows the dialog and waits for its end.
    virtual int execute(QDialog& dialog, DialogKind kind, const QString& text);
};

} // namespace Kavor::HandheldGui
