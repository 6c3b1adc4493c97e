#include "portable/screens/system/screensystem.h"

#include "common/instrument/handlerscpi.h"
#include "portable/fields/readoutgroup.h"
#include "portable/host/panelhost.h"
#include "portable/host/updateentry.h"
#include "portable/screens/lan/wdgethernet.h"
#include "portable/screens/system/listcfg.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/freshness.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/listpage.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <cmath>

// The pages of the system screen and what they show. What its buttons do is in screensystem_actions.cpp.

namespace Kavor::HandheldGui {

struct systemScreen::Button {
    const char* text;
    const char* name;
    void (systemScreen::*slot)();
    LineIcon sign;
    bool asks = false;  ///< opens a dialog
    bool leads = false; ///< to a page of its own
};

namespace {

constexpr int LeftWidth = 416;
constexpr int ButtonX = 24;
constexpr int ButtonWidth = 178;
constexpr int ButtonPitch = ButtonWidth + Style::Gap;
constexpr int FirstRow = 46;
constexpr int StateHeight = 216;
constexpr int ReferenceHeight = 128;
constexpr int ReferenceRow = 43;
constexpr int EntriesTop = StateHeight + ReferenceHeight + 2 * Style::Gap;
constexpr int EntriesRow = 16;
constexpr int ValueX = 292;
constexpr int ProtectionWidth = 330;
constexpr double NoTemperature = 1000; ///< degrees; what is no less is no reading

QString temperatureText(const ChannelRecord& record) {
    if (!(std::abs(record.temperature) < NoTemperature))
        return QStringLiteral("--- °C");
    // Rounded first, so that a little below zero does not read as "-0.0".
    const double tenths = std::round(record.temperature * 10);
    return QString::number(tenths == 0 ? 0.0 : tenths / 10, 'f', 1) + QStringLiteral(" °C");
}

bool isDischarging(const ChannelRecord& record) {
    return record.batteryCurrent < 0;
}

} // namespace

systemScreen::systemScreen(QWidget* parent, std::vector<STATE> states)
    : IGuiScreen(parent, std::move(states)),
      m_page(makePage(QStringLiteral("pageSystem"))),
      m_lan(new ethScreen(parent, this->states())),
      m_timer(new QTimer(this)) {
    m_lan->setParent(this);
    m_subState = Main;
    buildState();
    buildReference();
    buildEntries();
    buildInformation();
    buildSubPages();
    connect(m_timer, &QTimer::timeout, this, &systemScreen::updateValues);
    m_timer->start(host().settings().refreshMs);
}

systemScreen::~systemScreen() = default;

QPushButton* systemScreen::placeButton(QWidget* group, const QRect& place, const Button& button) {
    QPushButton* made = makeButton(group, QString::fromLatin1(button.text), QString::fromLatin1(button.name));
    made->setGeometry(place);
    made->setProperty("side", "left");
    made->setIconSize(LineIconRoom);
    made->setIcon(lineIcon(button.sign, Style::Text));
    if (button.leads) {
        auto* sign = new QLabel(made);
        sign->setAttribute(Qt::WA_TransparentForMouseEvents);
        sign->setPixmap(linePixmap(LineIcon::Forward, Style::Disabled));
        sign->setGeometry(place.width() - LineIconSize - 8, 0, LineIconSize, place.height());
    }
    connect(made, &QPushButton::clicked, this, [this, made, slot = button.slot, asks = button.asks] {
        asks ? ActionGate::panel().ask(made, [this, slot] { (this->*slot)(); }) : (this->*slot)();
    });
    return made;
}

void systemScreen::buildState() {
    static const Button buttons[] = {{"Store", "sysStore", &systemScreen::onStoreButton, LineIcon::Save},
                                     {"Recall", "sysRecall", &systemScreen::onRecallButton, LineIcon::Upload},
                                     {"Preset", "sysPreset", &systemScreen::onPresetButton, LineIcon::Undo, true},
                                     {"Erase", "sysErase", &systemScreen::onEraseButton, LineIcon::Bin}};
    auto* group =
        new PageGroup(m_page, QStringLiteral("Instrument State"), QRect(Style::PageMargin, 0, LeftWidth, StateHeight));
    int index = 0;
    for (const Button& button : buttons) {
        placeButton(group,
                    QRect(ButtonX + index % 2 * ButtonPitch, FirstRow + index / 2 * Style::RowPitch, ButtonWidth,
                          Style::ButtonHeight),
                    button);
        ++index;
    }
}

void systemScreen::buildReference() {
    auto* group = new PageGroup(m_page, QStringLiteral("Reference Settings"),
                                QRect(Style::PageMargin, StateHeight + Style::Gap, LeftWidth, ReferenceHeight));
    std::vector<ChoiceGroup::Button> words;
    words.reserve(ReferenceOscillatorToString.size());
    for (const char* word : ReferenceOscillatorToString)
        words.push_back({QString::fromLatin1(word), QStringLiteral("reference") + QLatin1String(word), QString()});
    m_reference = new ChoiceGroup(group, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE, words);
    m_reference->followModule();
    m_reference->place(ButtonX, ReferenceRow, ButtonWidth, Style::ButtonHeight);
    connect(m_reference, &ChoiceGroup::asked, this, &systemScreen::chooseReference);
}

void systemScreen::buildEntries() {
    auto* group = new PageGroup(m_page, QString(),
                                QRect(Style::PageMargin, EntriesTop, LeftWidth, Style::ContentHeight - EntriesTop));
    const QRect first(ButtonX, EntriesRow, LeftWidth - 2 * ButtonX, Style::ButtonHeight);
    placeButton(group, first, {"LAN settings", "sysLan", &systemScreen::onLanButton, LineIcon::Network, false, true});
    m_update = placeButton(group, first.translated(0, Style::RowPitch),
                           {"Update SW", "sysUpdate", &systemScreen::onUpdButton, LineIcon::Upload, false, true});
    m_update->setEnabled(host().settings().updateEntry != nullptr);
}

void systemScreen::buildInformation() {
    const int left = Style::PageMargin + LeftWidth + Style::Gap;
    const QRect place(left, 0, Style::WindowWidth - Style::PageMargin - left, Style::ContentHeight);
    using R = ChannelRecord;
    m_information = new ReadoutGroup(
        m_page, QStringLiteral("System Information"), place, ValueX,
        {{QStringLiteral("Model"), QStringLiteral("sysModel"), textField(&R::model)},
         {QStringLiteral("Serial"), QStringLiteral("sysSerial"), textField(&R::serial)},
         {QStringLiteral("Temperature"), QStringLiteral("sysTemperature"), temperatureText},
         {QStringLiteral("Options"), QStringLiteral("sysOptions"), textField(&R::options)},
         {QStringLiteral("FW/FPGA Version"), QStringLiteral("sysVersion"), textField(&R::firmwareVersion)},
         {QStringLiteral("Calibration Date"), QStringLiteral("sysCalibration"), textField(&R::calibrationDate)}});
    const int y = m_information->rowsEnd();
    m_information->addLabel(ButtonX, y, LineIconSize, ReadoutGroup::RowHeight, QString())
        ->setPixmap(linePixmap(LineIcon::Shield, Style::Label));
    const int protectionX = ButtonX + LineIconSize + Style::Gap;
    m_protection = m_information->addLabel(protectionX, y, ProtectionWidth, ReadoutGroup::RowHeight, QString());
    m_protection->setObjectName(QStringLiteral("sysBatteryProtection"));
    connect(&Freshness::panel(), &Freshness::changed, this, &systemScreen::showProtection);
    const int emptyX = protectionX + ProtectionWidth;
    m_empty = m_information->addLabel(emptyX, y, place.width() - emptyX - ButtonX, ReadoutGroup::RowHeight,
                                      QStringLiteral("Battery is Empty: module is OFF!"));
    m_empty->setObjectName(QStringLiteral("sysBatteryEmpty"));
    m_empty->setStyleSheet(DYN_VALUE_STYLE2 + QStringLiteral("QLabel { color: %1; }").arg(Style::css(Style::Wrong)));
    m_empty->hide();
}

void systemScreen::buildSubPages() {
    m_configurationPage =
        new ListPage(makePage(QStringLiteral("pageConfigurations")), QStringLiteral("Saved Configurations"),
                     QStringLiteral("No saved configuration"), QStringLiteral("configurationsBack"));
    m_configurations = new cfgList(m_configurationPage->group());
    m_configurationPage->setTable(m_configurations);
    const auto act = [this](void (cfgList::*chosen)(const QString&), void (systemScreen::*slot)(const QString&)) {
        connect(m_configurations, chosen, this, [this, slot](const QString& file) {
            ActionGate::panel().ask(m_configurations, [this, slot, file] { (this->*slot)(file); });
        });
    };
    act(&cfgList::loadCfg, &systemScreen::onMsgLoadCfgList);
    act(&cfgList::saveCfg, &systemScreen::onMsgSaveCfgList);
    act(&cfgList::deleteCfg, &systemScreen::onMsgDeleteCfgList);
    connect(m_configurationPage, &ListPage::back, this, [this] { showSubPage(Main); });
    connect(m_lan, &ethScreen::back, this, [this] { showSubPage(Main); });

    UpdateEntry* update = host().settings().updateEntry;
    if (!update)
        return;
    m_packagePage = new ListPage(makePage(QStringLiteral("pagePackages")), QStringLiteral("Update Packages"),
                                 QStringLiteral("No update package found"), QStringLiteral("packagesBack"));
    m_packagePage->setFooter(update->makeHistory(m_packagePage->group()));
    m_packagePage->setTable(update->makeList(m_packagePage->group(), host()));
    connect(update, &UpdateEntry::chosen, this, &systemScreen::onMsgLoadFWList);
    connect(update, &UpdateEntry::noteChanged, m_packagePage, &ListPage::setNote);
    connect(m_packagePage, &ListPage::back, this, [this] { showSubPage(Main); });
}

void systemScreen::showSubPage(SubPage page) {
    m_subState = page;
    const auto showIf = [](auto* shown, bool visible) {
        if (shown && visible)
            shown->show();
        else if (shown)
            shown->hide();
    };
    showIf(m_page, page == Main);
    showIf(m_configurationPage, page == Configurations);
    showIf(static_cast<IGuiScreen*>(m_lan), page == Lan);
    showIf(m_packagePage, page == Packages);
}

void systemScreen::show() {
    showSubPage(Main);
}

void systemScreen::hide() {
    showSubPage(None);
}

void systemScreen::postInit() {
    updateValues();
}

void systemScreen::updateValues() {
    host().refreshFromModule();
    showInformation();
    handOnBattery();
}

void systemScreen::update_from_config(STATE state) {
    showReference();
    showInformation();
    handOnBattery();
    m_lan->update_from_config(state);
}

void systemScreen::showInformation() {
    const ChannelRecord& record = handler().snapshot();
    m_information->readFrom(record);
    showProtection();
    m_empty->setVisible(record.batteryCharge == 0 && isDischarging(record));
}

void systemScreen::showProtection() {
    const Freshness& freshness = Freshness::panel();
    const bool on = handler().snapshot().batteryProtection == 1;
    m_protection->setText(QStringLiteral("Battery protection ") +
                          freshness.shown(on ? QStringLiteral("ON") : QStringLiteral("OFF")));
    applySheet(m_protection,
               freshness.isStale()
                   ? WIDGET_LBL_STYLE + QStringLiteral("QLabel { color: %1; }").arg(Style::css(Style::Stale))
                   : WIDGET_LBL_STYLE);
}

void systemScreen::showReference() {
    const std::string held = recordText(handler().snapshot().referenceOscillator);
    int chosen = -1;
    for (std::size_t i = 0; i < ReferenceOscillatorToString.size(); ++i) {
        if (held == ReferenceOscillatorToString[i])
            chosen = static_cast<int>(i);
    }
    m_reference->choose(chosen);
}

void systemScreen::handOnBattery() {
    const ChannelRecord& record = handler().snapshot();
    const bool discharging = isDischarging(record);
    const unsigned threshold = record.lowBatteryThreshold;
    if (m_batterySeen && record.batteryCharge == m_charge && discharging == m_discharging && threshold == m_threshold)
        return;
    m_batterySeen = true;
    m_charge = record.batteryCharge;
    m_discharging = discharging;
    m_threshold = threshold;
    // Outside 0 to 100 there is no battery to show.
    const bool known = handler().hasRecord() && record.batteryCharge >= 0 && record.batteryCharge <= 100;
    host().set_battery_level(known ? static_cast<unsigned short>(record.batteryCharge) : 101);
}

} // namespace Kavor::HandheldGui
