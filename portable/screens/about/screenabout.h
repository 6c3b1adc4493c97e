#pragma once

#include "portable/host/iguiscreen.h"

class QLabel;
class QPushButton;

namespace Kavor::HandheldGui {

class ListPage;
class ReadoutGroup;

/// The product's picture, the versions of panel, module and libraries, their licences on a sub-page, and diagnostics to
/// a stick.
class aboutScreen : public IGuiScreen {
    Q_OBJECT

public:
    aboutScreen(QWidget* parent, std::vector<STATE> states);

    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

    /// Does nothing: the sub-page is the screen's own affair.
    void update_controls(STATE state);

private:
    void buildPicture();
    void buildVersions();
    void showLicences();
    void saveDiagnostics();
    void onSaved(const QString& archive, const QString& problem);

    QWidget* m_page;
    QLabel* m_picture = nullptr;
    ReadoutGroup* m_versions = nullptr;
    QPushButton* m_save = nullptr;
    ListPage* m_licences = nullptr; ///< made when it is first looked at
};

} // namespace Kavor::HandheldGui
