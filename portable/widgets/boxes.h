#pragma once

#include "portable/widgets/dialogs.h"

#include <QString>

class QMessageBox;
class QWidget;

namespace Kavor::HandheldGui {

/// What a message box says. Texts are plain, whatever they hold. One that does not fit on the screen is shortened in
/// its middle, so that the buttons are always in reach.
struct BoxTexts {
    QString name;    ///< object name
    QString heading; ///< above the text, for boxes that belong to something named; may be empty
    QString text;
    QString note; ///< below the text, smaller; may be empty
};

/// Tells something, with a button to go on. kind: Information or Critical. Waits for its end.
void tellInBox(QWidget* parent, DialogKind kind, const BoxTexts& texts);

/// Tells something that went well.
void showInformation(QWidget* parent, const QString& title, const QString& text);

enum class Answer {
    Harmless,
    Destroys ///< "Yes" deletes, overwrites or resets: it has a red edge
};

/// Asks a yes/no question with an optional smaller note below it; true for yes. Esc and Return answer no.
bool confirmAction(QWidget* parent, const QString& question, const QString& note = QString(),
                   Answer yes = Answer::Harmless);

/// Gives a box with its text, note and buttons the panel's look and its size.
void dressBox(QMessageBox& box);

} // namespace Kavor::HandheldGui
