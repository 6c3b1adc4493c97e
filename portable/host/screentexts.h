#pragma once

#include <QString>

namespace Kavor::HandheldGui {

class PanelHost;

/// Shows a text in the window's toast, if it has one yet.
void showToast(PanelHost& host, const QString& text);

/// Tells the user that the module did not take a command.
void showCommandFailure(PanelHost& host);

/// A text from elsewhere on one line: what can not be seen is a blank.
QString onOneLine(const QString& text);

/// A text from elsewhere as part of a sentence: on one line and, when it is longer than any that is meant, shortened in
/// its middle, since names often differ at their ends.
QString shortened(const QString& text);

} // namespace Kavor::HandheldGui
