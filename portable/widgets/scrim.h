#pragma once

#include <QPointer>
#include <QWidget>

namespace Kavor::HandheldGui {

/// The control works beside every dialog but those that let nothing be touched: a scrim leaves it out.
void keepLive(QWidget* control);

/// A scrim does not dim the widget from x on, in the widget's own pixels.
void keepUndimmed(QWidget* widget, int fromX = 0);

/// A control of the window of `beside` that is kept live and lies, in part, in an area of the screen; or null.
QWidget* liveControlIn(const QWidget& beside, const QRect& area);

/// Dims a window and takes what is pressed on it while a dialog stands above, for as long as this object lives.
/// GUI thread.
class Scrim {
public:
    /// live: leaves out the controls that are kept live.
    Scrim(QWidget& window, bool live);
    ~Scrim();

    Scrim(const Scrim&) = delete;
    Scrim& operator=(const Scrim&) = delete;

private:
    QPointer<QWidget> m_cover;
};

} // namespace Kavor::HandheldGui
