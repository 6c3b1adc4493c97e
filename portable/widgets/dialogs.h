#pragma once

#include <QString>

class QDialog;
class QMessageBox;
class QWidget;

namespace Kavor::HandheldGui {

enum class DialogKind { Keyboard, Question, Information, Critical, Progress };

/// The one place through which every modal dialog of the panel runs: keyboards, questions, boxes. It dims what lies
/// below, counts what is open, and can be replaced by a test, which then answers by pressing the dialog's own buttons.
/// GUI thread only.
class DialogRunner {
public:
    virtual ~DialogRunner() = default;

    /// Runs a dialog modally and returns QDialog's result. text says what the user is asked or told.
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

/// Room for a whole question on one line.
inline constexpr int WideBoxText = 600;

/// Gives a box the panel's look: frameless, room around its centred text, which is at least so many pixels wide,
/// buttons half as large again as they ask for, without icons. After its text and buttons are set.
void dressBox(QMessageBox& box, int narrowestText = 480);

/// Tells something that went well, with a button to go on.
void showInformation(QWidget* parent, const QString& title, const QString& text);

/// Asks a yes/no question with an optional smaller note below it; true for yes. The default is no.
bool confirmAction(QWidget* parent, const QString& question, const QString& note = QString());

} // namespace Kavor::HandheldGui
