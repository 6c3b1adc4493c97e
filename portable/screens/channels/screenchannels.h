#pragma once

#include "portable/host/iguiscreen.h"

class QLabel;
class QPushButton;

namespace Kavor::HandheldGui {

class ChannelRow;
class PageGroup;

/// The overview of the channels of a region that holds several: what each puts out, which one the screens show, and
/// one key that switches all of them off. GUI thread.
class channelsScreen : public IGuiScreen {
    Q_OBJECT

public:
    channelsScreen(QWidget* parent, std::vector<STATE> states);

    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

private:
    void switchAllOff();

    QWidget* m_page;
    PageGroup* m_group;
    std::vector<ChannelRow*> m_rows;
    QLabel* m_count = nullptr;
    QPushButton* m_allOff = nullptr;
};

} // namespace Kavor::HandheldGui
