#include "portable/screens/sweep/screensweep.h"

#include "portable/fields/enablebox.h"
#include "portable/host/panelhost.h"
#include "portable/screens/sweep/sweepdrawing.h"
#include "portable/widgets/buttonintf.h"
#include "portable/widgets/styles/tokens.h"

#include <QCheckBox>

namespace Kavor::HandheldGui {

namespace {

constexpr int FrequencyTabWidth = 280;
constexpr int PowerTabWidth = 220;
constexpr int TabHeight = Style::ButtonHeight;
constexpr int ExportMark = 23435;

} // namespace

sweepScreen::sweepScreen(QWidget* parent, std::vector<STATE> states)
    : IGuiScreen(parent, std::move(states)), m_page(makePage(QStringLiteral("pageSweep"))) {
    m_subState = STATE_FRSW;
    const auto tab = [this](STATE state, const QString& text, const QString& name, int x, int width) {
        auto* button = new IntfButtonMod(m_page, {state}, text, width, TabHeight);
        button->setObjectName(name);
        button->move(x, 0);
        return button;
    };
    const int left = Style::PageMargin;
    m_frswTab = tab(STATE_FRSW, QStringLiteral("Frequency Sweep"), QStringLiteral("tabFrsw"), left, FrequencyTabWidth);
    m_prswTab = tab(STATE_PRSW, QStringLiteral("Power Sweep"), QStringLiteral("tabPrsw"),
                    left + FrequencyTabWidth + Style::Gap, PowerTabWidth);
    connect(m_frswTab, &IntfButtonMod::clicked, this, &sweepScreen::onFrswButton);
    connect(m_frswTab, &IntfButtonMod::clicked, &host(), &PanelHost::UpdateFRSWState);
    connect(m_prswTab, &IntfButtonMod::clicked, this, &sweepScreen::onPrswButton);
    connect(m_prswTab, &IntfButtonMod::clicked, &host(), &PanelHost::UpdatePRSWState);

    const QRect place(left, TabHeight, Style::ContentWidth, Style::ContentHeight - TabHeight);
    m_frsw = new SweepPage(m_page, host(), FrequencySweep, place);
    m_prsw = new SweepPage(m_page, host(), PowerSweep, place);
    const int drawingX = left + FrequencyTabWidth + PowerTabWidth + 2 * Style::Gap;
    for (SweepPage* page : {m_frsw, m_prsw}) {
        page->drawing().setParent(m_page);
        page->drawing().setGeometry(drawingX, 0, Style::WindowWidth - 2 * left - drawingX, TabHeight);
        connect(page, &SweepPage::exportToList, this, &sweepScreen::sweep_export_list);
    }
    connect(&host(), &PanelHost::SweepModOnSignal, this, &sweepScreen::onStartButton);
    connect(&host(), &PanelHost::SweepModOffSignal, this, &sweepScreen::onModOffButton);
    update_controls(STATE_FRSW);
}

void sweepScreen::update_controls(STATE state) {
    if (state != STATE_FRSW && state != STATE_PRSW)
        return;
    m_subState = state;
    m_frswTab->toggleButton(state);
    m_prswTab->toggleButton(state);
    for (SweepPage* page : {m_frsw, m_prsw}) {
        const bool shown = page == (state == STATE_FRSW ? m_frsw : m_prsw);
        page->setVisible(shown);
        page->drawing().setVisible(shown);
    }
}

void sweepScreen::update_from_config(STATE) {
    m_frsw->reload();
    m_prsw->reload();
    m_frswTab->setTicked(m_frsw->enable().box()->isChecked());
    m_prswTab->setTicked(m_prsw->enable().box()->isChecked());
}

void sweepScreen::show() {
    host().setHeaderBar(QStringLiteral("   Sweep Mode - Create Frequency or Power sweep"));
    update_controls(host().currentState());
    m_page->show();
}

void sweepScreen::hide() {
    m_page->hide();
}

void sweepScreen::onFrswButton() {
    update_controls(STATE_FRSW);
}

void sweepScreen::onPrswButton() {
    update_controls(STATE_PRSW);
}

void sweepScreen::onCheckboxClicked(int state) {
    m_frsw->enable().onStateChanged(state);
}

void sweepScreen::onCalculateButton() {
    current().setStopIsEntered(!current().stopIsEntered());
}

void sweepScreen::onSweepButton() {
    current().setStopIsEntered(true);
}

void sweepScreen::onStepButton() {
    current().setStopIsEntered(false);
}

void sweepScreen::onStartButton() {
    const PanelHost::Starting starting(host());
    for (SweepPage* page : {m_frsw, m_prsw})
        page->run(true);
    handler().isModulationsOn();
    host().UpdateStatusBar();
}

void sweepScreen::onStopButton() {
    for (SweepPage* page : {m_frsw, m_prsw})
        page->run(false);
}

void sweepScreen::onModOffButton() {
    onStopButton();
    handler().isModulationsOn();
    host().UpdateStatusBar();
}

void sweepScreen::sweep_export_list() {
    emit qwerty(ExportMark);
}

} // namespace Kavor::HandheldGui
