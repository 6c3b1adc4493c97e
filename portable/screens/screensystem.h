#pragma once

#include "portable/screens/readoutscreen.h"

class QTimer;

namespace Kavor::HandheldGui {

/// System information, and the panel's periodic look at the module: once a second the record, the battery and the
/// screens are brought into line. It sends nothing.
class systemScreen : public ReadoutScreen {
    Q_OBJECT

public:
    systemScreen(QWidget* parent, std::vector<STATE> states);

    /// Starts the periodic look.
    virtual void postInit();

    /// One look: the record, the information panel, the battery.
    void updateValues();

    void update_from_config(STATE state) override;

private:
    void handOnBattery();

    QTimer* m_timer;
    bool m_batterySeen = false;
    int m_charge = 0;
    bool m_discharging = false;
    unsigned m_threshold = 0;
};

} // namespace Kavor::HandheldGui
