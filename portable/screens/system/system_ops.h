#pragma once

class EventHandler;
class QString;
class QWidget;

namespace Kavor::HandheldGui {

// The operations on the configurations that the module keeps. Each sends one command, blocking as every setter does,
// and returns whether the module took it; only then the widget (which may be null) gets the focus. GUI thread.

bool doStore(EventHandler* handler, QWidget* focus, const QString& name);
bool doErase(EventHandler* handler, QWidget* focus, const QString& name);

/// Also takes the records of the first `channels` channels anew and forgets what was running; nothing is redrawn.
bool doRecall(EventHandler* handler, QWidget* focus, unsigned channels, const QString& name);

/// Recalls configuration 0, the factory's.
bool doPreset(EventHandler* handler, QWidget* focus, unsigned channels);

} // namespace Kavor::HandheldGui
