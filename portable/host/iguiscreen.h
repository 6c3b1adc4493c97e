#pragma once

#include "portable/widgets/state.h"

#include <QObject>
#include <vector>

class EventHandler;
class QWidget;

namespace Kavor::HandheldGui {

class PanelHost;

/// A screen: not a widget, but an object that puts its widgets on the main window and shows or hides them as a group.
/// GUI thread.
class IGuiScreen : public QObject {
    Q_OBJECT

public:
    /// parent: the main window, a PanelHost. states: those for which the screen is visible.
    IGuiScreen(QWidget* parent, std::vector<STATE> states);

    /// Reloads all controls from the cached record. Sends nothing.
    virtual void update_from_config(STATE state) = 0;
    /// Shows the screen's widgets and sets the header text.
    virtual void show() = 0;
    virtual void hide() = 0;

    const std::vector<STATE>& states() const { return m_states; }

protected:
    PanelHost& host() const { return *m_host; }
    EventHandler& handler() const;

    /// An empty, hidden page over the whole content area, on which the screen builds.
    QWidget* makePage(const QString& name);

    int m_subState = -1; ///< the screen's last sub-state (a tab, a page), for its own use

private:
    std::vector<STATE> m_states;
    PanelHost* m_host;
};

} // namespace Kavor::HandheldGui
