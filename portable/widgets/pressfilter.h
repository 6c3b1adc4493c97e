#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointF>

namespace Kavor::HandheldGui {

/// Makes one action of one press. A touch screen may report a press twice, as a touch (of which Qt makes a mouse press
/// where nobody accepts it) and, through the driver's mouse emulation, as a mouse press of its own. Whichever comes
/// second at the same place within a moment is dropped, with everything up to its release, wherever that goes
/// meanwhile: a dialog that the first one closed cannot let the second one hit what lies below. Watches the whole
/// application; GUI thread.
class PressFilter : public QObject {
    Q_OBJECT

public:
    /// momentMs: how far apart two reports of one press can be.
    explicit PressFilter(QObject* parent, int momentMs = 300);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum Source { None, Touch, Mouse };

    bool isRepeated(Source source, const QPointF& place);

    int m_momentMs;
    Source m_lastSource = None;
    QPointF m_lastPlace;
    QElapsedTimer m_sinceLast;
    bool m_dropping[3] = {false, false, false}; ///< by source: a press was dropped and has not ended
};

} // namespace Kavor::HandheldGui
