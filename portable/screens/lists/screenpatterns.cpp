#include "portable/screens/lists/screenpatterns.h"

#include "common/instrument/handlerscpi.h"
#include "portable/screens/lists/list_limits.h"

namespace Kavor::HandheldGui {

patternScreen::patternScreen(QWidget* parent, std::vector<STATE> states)
    : StepListScreen(parent, std::move(states), TimingPattern) {
    showList();
}

patternScreen::~patternScreen() {
    table().setListConfig(nullptr); // the widgets outlive the screen and its patterns
}

PatternListConfig& patternScreen::pattern() {
    return m_patterns.at(handler().currentChannel(), patternLimitsOf(handler().snapshot()));
}

int patternScreen::upload() {
    return handler().sendPatternListDATAX(pattern().points());
}

} // namespace Kavor::HandheldGui
