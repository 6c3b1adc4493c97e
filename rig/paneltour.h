#pragma once

#include <QPixmap>
#include <QRect>
#include <QString>
#include <functional>

class QWidget;

/// Walks a panel through all that it can show: every screen, tab and sub-page, the states of the header and of the
/// controls, every dialog, toast and box. The gallery takes its pictures on this way, the look test measures on it.
class PanelTour {
public:
    struct Stop {
        QString name;
        const QWidget* shown; ///< what the user can touch: the window, or the dialog above it; null for a bare picture
        QPoint origin;        ///< of what is shown, in the picture
        QPixmap picture;      ///< the screen as the instrument composes it, 1280 x 800
        QRect toast;          ///< where a message stands above it, empty without one
    };
    using Visit = std::function<void(const Stop&)>;

    explicit PanelTour(Visit visit);

    /// Takes about ten seconds. GUI thread.
    void run();
    int count() const { return m_count; }

private:
    Visit m_visit;
    int m_count = 0;
};
