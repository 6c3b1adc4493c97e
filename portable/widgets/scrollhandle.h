#pragma once

#include <QScrollBar>

namespace Kavor::HandheldGui {

/// A vertical scroll bar to be worked by a finger: a handle with a grip, a page at a tap beside it. Shows where the
/// handle stands by its place alone. GUI thread.
class ScrollHandle : public QScrollBar {
    Q_OBJECT

public:
    explicit ScrollHandle(QWidget* parent);

    /// Stands elsewhere than in its view: follows the view's own bar, which is not shown, and moves it. Is not there
    /// while there is nothing to scroll.
    void follow(QScrollBar& other);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace Kavor::HandheldGui
