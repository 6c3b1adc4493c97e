#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointF>
#include <QSet>

class QWidget;

namespace Kavor::HandheldGui {

/// Makes one action of one press. Watches the whole application; GUI thread.
///
/// A touch screen may report a press twice, as a touch (of which Qt makes a mouse press where nobody accepts it) and,
/// through the driver's mouse emulation, as a mouse press of its own. Whichever comes second at the same place within a
/// moment is dropped.
///
/// The second press of a double tap is nobody's: the press that opened or closed a keyboard, list or box would let the
/// next one hit what came into its place. Within 400 ms (by the events' own times) and 40 pixels of it a press is
/// dropped, but on a control that takes every press.
///
/// What is dropped is dropped up to its release, wherever that goes meanwhile.
class PressFilter : public QObject {
    Q_OBJECT

public:
    static constexpr int DoubleTapMs = 400;
    static constexpr int DoubleTapPixels = 40;

    /// momentMs: how far apart two reports of one press can be.
    explicit PressFilter(QObject* parent, int momentMs = 300);

    /// A keyboard, list or box has been opened or closed: by the last press.
    static void noteChange();

    /// For a control that switches something off.
    static void takeEveryPress(QWidget* control);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum Source { None, Touch, Mouse };

    struct Press {
        Source source = None;
        QPointF place;
        ulong time = 0; ///< ms, by the clock of its source; 0: not known
        QElapsedTimer age;
    };

    bool isDropped(const QObject& watched, Source source, const QPointF& place, ulong time);
    bool isRepeated(Source source, const QPointF& place) const;
    bool isSecondTap(Source source, const QPointF& place, ulong time) const;

    int m_momentMs;
    Press m_last;    ///< the last that was not dropped
    Press m_changer; ///< the last that opened or closed something
    bool m_dropping[3] = {false, false,
                          false};          ///< by source of the mouse events: a press was dropped and has not ended
    QSet<const QObject*> m_droppedTouches; ///< receivers of touches that were dropped and have not ended
};

} // namespace Kavor::HandheldGui
