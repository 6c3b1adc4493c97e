#pragma once

#include "portable/screens/readoutscreen.h"

namespace Kavor::HandheldGui {

/// The versions of panel, module and libraries.
class aboutScreen : public ReadoutScreen {
    Q_OBJECT

public:
    aboutScreen(QWidget* parent, std::vector<STATE> states);
};

} // namespace Kavor::HandheldGui
