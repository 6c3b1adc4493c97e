#pragma once

#include <QEvent>
#include <QObject>
#include <QPointF>

class QAbstractItemView;
class QMouseEvent;
class QWidget;

namespace Kavor::HandheldGui {

/// Lets a finger scroll a table or a list: a swipe over its rows moves them, and they run on when it is let go. One way
/// for every table, list and list of a unit box of the panel.
///
/// A press marks what is under the finger at once, and nothing else: the view hears of it, as a press and a release at
/// the place of the press, only when the finger is let go within 12 pixels of it. So a swipe, however slow it begins,
/// never selects a row or opens an editor. A press on rows that run stops them and is no tap. What else scrolls the
/// view (a new step, the handle) ends the running, too. Lives as long as the view; GUI thread.
class Swipe : public QObject {
    Q_OBJECT

public:
    static constexpr int TapTravel = 12; ///< pixels: a way from here on is a swipe

    /// Also makes the view scroll by pixels, with a ScrollHandle.
    static void install(QAbstractItemView& view);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit Swipe(QAbstractItemView& view);
    void begin(const QMouseEvent& press);
    void follow(const QMouseEvent& move);
    void end(const QMouseEvent& release);
    void cancel();
    void stopRunning();
    void deliver(QEvent::Type type, const QMouseEvent& like);
    void markPressed();

    QAbstractItemView& m_view;
    QWidget* m_mark;
    QPointF m_pressed;
    bool m_isDown = false;
    bool m_isTap = false;
    bool m_scrolls = false;            ///< the scroll bar is being moved by the swipe
    const QEvent* m_passing = nullptr; ///< on its way to the view
};

} // namespace Kavor::HandheldGui
