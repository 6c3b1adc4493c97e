#pragma once

#include "portable/screens/readoutscreen.h"

namespace Kavor::HandheldGui {

/// The frequency list.
class listScreen : public ReadoutScreen {
    Q_OBJECT

public:
    listScreen(QWidget* parent, std::vector<STATE> states);
};

} // namespace Kavor::HandheldGui
