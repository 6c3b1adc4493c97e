#pragma once

#include <QObject>

class QAbstractButton;
class QTouchEvent;

namespace Kavor::HandheldGui {

/// Lets a button be pressed by touch itself, where Qt would make a mouse press of the first finger alone: each finger
/// that comes down on such a button presses it, whatever others rest elsewhere. It acts when the finger is let go while
/// still on it. Lives as long as the button; GUI thread.
class TouchPress : public QObject {
    Q_OBJECT

public:
    explicit TouchPress(QAbstractButton* button);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void handle(const QTouchEvent& touch);
    void setDown(bool down);

    QAbstractButton* m_button;
    int m_finger = -1; ///< id of the touch point that presses the button
};

} // namespace Kavor::HandheldGui
