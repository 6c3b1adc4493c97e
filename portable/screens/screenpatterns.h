#pragma once

#include "portable/screens/readoutscreen.h"

namespace Kavor::HandheldGui {

/// The on/off timing pattern.
class patternScreen : public ReadoutScreen {
    Q_OBJECT

public:
    patternScreen(QWidget* parent, std::vector<STATE> states);
};

} // namespace Kavor::HandheldGui
