#pragma once

#include "portable/host/iguiscreen.h"

class QLabel;

namespace Kavor::HandheldGui {

class ReadoutGroup;

/// The product's picture and the versions of panel, module and libraries.
class aboutScreen : public IGuiScreen {
    Q_OBJECT

public:
    aboutScreen(QWidget* parent, std::vector<STATE> states);

    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

    /// Does nothing: the screen has no sub-views.
    void update_controls(STATE state);

private:
    QWidget* m_page;
    QLabel* m_picture;
    ReadoutGroup* m_versions;
};

} // namespace Kavor::HandheldGui
