#pragma once

#include "lists/pattern_list_config.h"
#include "portable/screens/lists/list_store.h"
#include "portable/screens/lists/steplistscreen.h"

namespace Kavor::HandheldGui {

/// The on/off timing pattern. It runs as the modulations do, by MOD on and off.
class patternScreen : public StepListScreen {
    Q_OBJECT

public:
    patternScreen(QWidget* parent, std::vector<STATE> states);
    ~patternScreen() override;

protected:
    IListConfig& list() override { return pattern(); }
    int upload() override;

private:
    PatternListConfig& pattern();

    ListStore<PatternListConfig, PatternListLimits, pattern_point> m_patterns;
};

} // namespace Kavor::HandheldGui
