#pragma once

#include "common/update/datafw.h"
#include "portable/host/iguiscreen.h"

class QLabel;
class QPushButton;
class QTimer;

namespace Kavor::HandheldGui {

class cfgList;
class ChoiceGroup;
class ethScreen;
class ListPage;
class ReadoutGroup;

/// Instrument state, reference, LAN and update entries, and the information panel; with the panel's periodic look at
/// the module: once a second the record, the battery and the screens are brought into line, which sends nothing. Saved
/// configurations, packages and LAN settings are sub-pages of it, left by "Back" or by any function button.
class systemScreen : public IGuiScreen {
    Q_OBJECT

public:
    systemScreen(QWidget* parent, std::vector<STATE> states);
    ~systemScreen() override;

    virtual void postInit();

    /// One look: the record, the information panel, the battery.
    void updateValues();

    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

public slots:
    void onStoreButton();
    void onRecallButton();
    void onPresetButton();
    void onEraseButton();
    void onLanButton();
    void onUpdButton();

    /// Carry out what a list's row was chosen for, after the questions that belong to it.
    void onMsgLoadCfgList(const QString& file);
    void onMsgSaveCfgList(const QString& file);
    void onMsgDeleteCfgList(const QString& file);
    void onMsgLoadFWList(MANIFEST_DATA* package);

private:
    enum SubPage { None = -1, Main, Configurations, Lan, Packages };
    struct Button;

    void buildState();
    void buildReference();
    void buildEntries();
    void buildInformation();
    void buildSubPages();
    QPushButton* placeButton(QWidget* group, const QRect& place, const Button& button);
    void showSubPage(SubPage page);
    void openConfigurations(const QString& mode);
    QString askForName();
    QString nameToUse(const QString& file);
    bool end(bool taken, bool reload);
    void chooseReference(int index);
    void showProtection();
    void showReference();
    void showInformation();
    void handOnBattery();

    QWidget* m_page;
    QPushButton* m_update = nullptr;
    ChoiceGroup* m_reference = nullptr;
    ReadoutGroup* m_information = nullptr;
    QLabel* m_protection = nullptr;
    QLabel* m_empty = nullptr;
    ListPage* m_configurationPage = nullptr;
    ListPage* m_packagePage = nullptr;
    cfgList* m_configurations = nullptr;
    ethScreen* m_lan;
    QTimer* m_timer;
    bool m_batterySeen = false;
    int m_charge = 0;
    bool m_discharging = false;
    unsigned m_threshold = 0;
};

} // namespace Kavor::HandheldGui
