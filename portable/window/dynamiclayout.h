#pragma once

#include "portable/widgets/state.h"

#include <memory>
#include <vector>

class QWidget;

namespace Kavor::HandheldGui {

class IGuiScreen;

/// All screens of the panel, in the fixed order of every walk. GUI thread.
class dynamicLayout {
public:
    /// An empty collection: every operation on it does nothing.
    dynamicLayout();

    /// Creates every screen on the main window.
    explicit dynamicLayout(QWidget* parent);
    ~dynamicLayout();

    /// Shows the screens that list the state and hides the others, screen by screen.
    void setScreen(STATE state);

    /// Reloads every screen from the cache.
    void update_from_config(STATE state);

    /// Lets the system and the CW screen finish their start, then reloads all and shows the state's screen.
    void postInit(STATE state);

private:
    std::vector<std::unique_ptr<IGuiScreen>> m_screens;
};

} // namespace Kavor::HandheldGui
