#include "portable/window/dynamiclayout.h"

#include "portable/screens/about/screenabout.h"
#include "portable/screens/channels/screenchannels.h"
#include "portable/screens/cw/screenrfmod.h"
#include "portable/screens/lists/screenlist.h"
#include "portable/screens/lists/screenpatterns.h"
#include "portable/screens/runmode/screenrunmod.h"
#include "portable/screens/sweep/screensweep.h"
#include "portable/screens/system/screensystem.h"

#include <algorithm>

namespace Kavor::HandheldGui {

dynamicLayout::dynamicLayout() = default;

dynamicLayout::dynamicLayout(QWidget* parent) {
    using States = std::vector<STATE>;
    m_screens.push_back(std::make_unique<rfmodScreen>(parent, States{STATE_CW}));
    m_screens.push_back(std::make_unique<sweepScreen>(parent, States{STATE_FRSW, STATE_PRSW}));
    m_screens.push_back(std::make_unique<listScreen>(parent, States{STATE_LIST, STATE_LIST_FILES}));
    m_screens.push_back(std::make_unique<patternScreen>(parent, States{STATE_PATTERN, STATE_PATTERN_FILES}));
    m_screens.push_back(std::make_unique<runmodeScreen>(parent, States{STATE_RUNMODE}));
    m_screens.push_back(std::make_unique<systemScreen>(parent, States{STATE_SYSTEM}));
    m_screens.push_back(std::make_unique<aboutScreen>(parent, States{STATE_ABOUT}));
    m_screens.push_back(std::make_unique<channelsScreen>(parent, States{STATE_CHANNELS}));
}

dynamicLayout::~dynamicLayout() = default;

void dynamicLayout::setScreen(STATE state) {
    for (const auto& screen : m_screens) {
        const std::vector<STATE>& states = screen->states();
        if (std::find(states.begin(), states.end(), state) != states.end())
            screen->show();
        else
            screen->hide();
    }
}

void dynamicLayout::update_from_config(STATE state) {
    for (const auto& screen : m_screens)
        screen->update_from_config(state);
}

void dynamicLayout::postInit(STATE state) {
    for (const auto& screen : m_screens) {
        if (auto* system = qobject_cast<systemScreen*>(screen.get()))
            system->postInit();
        if (auto* rfmod = qobject_cast<rfmodScreen*>(screen.get()))
            rfmod->postInit();
    }
    update_from_config(state);
    setScreen(state);
}

} // namespace Kavor::HandheldGui
