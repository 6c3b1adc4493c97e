#pragma once

class QString;

namespace Kavor::HandheldGui {

class PanelHost;

/// Shows a text in the window's toast, if it has one yet.
void showToast(PanelHost& host, const QString& text);

/// Tells the user that the module did not take a command.
void showCommandFailure(PanelHost& host);

} // namespace Kavor::HandheldGui
