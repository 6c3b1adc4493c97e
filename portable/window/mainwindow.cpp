#include "portable/window/mainwindow.h"

#include "common/instrument/handlerscpi.h"
#include "portable/host/channels.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/buttonintf.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/dialogs.h"
#include "portable/widgets/freshness.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/pressfilter.h"
#include "portable/widgets/scrim.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/window/channelkey.h"
#include "portable/window/controlrow.h"
#include "portable/window/dynamiclayout.h"
#include "portable/window/statustexts.h"
#include "portable/window/wdgfuncbuttons.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>
#include <array>
#include <utility>

namespace Kavor::HandheldGui {

namespace {

// Mode texts by STATE; null where a state leaves the mode text alone.
constexpr std::array<const char*, 14> ModeTexts{"CW",   "AM",   "FM",    "PM",    "Pulse", "Pattern", "Pattern",
                                                "FRSW", "PRSW", nullptr, nullptr, nullptr, "LIST",    "LIST"};

constexpr int ModeX = 644;
constexpr int ModeEnd = 930;
constexpr int RunningMark = 20; ///< pixels of the mark before what runs

QString runModeText(bool continuous) {
    return continuous ? QStringLiteral("Continuous") : QStringLiteral("Trigger");
}

} // namespace

MainWindow::MainWindow(QWidget* parent, EventHandler* handler, const PanelSettings& settings)
    : PanelHost(parent), m_handler(handler), m_settings(settings), m_errors(this) {
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    setWindowModality(Qt::NonModal);
    setContextMenuPolicy(Qt::NoContextMenu);
    setStyleSheet(MAIN_WINDOW_STYLE);
    setFixedSize(Style::WindowWidth, Style::WindowHeight);
    setBaseSize(Style::WindowWidth, Style::WindowHeight);
    resize(Style::WindowWidth, Style::WindowHeight);
    new PressFilter(this);
    buildLayout();
    buildStatusBar();
    m_toast = new ToastOverlay(this);
    m_screens = std::make_unique<dynamicLayout>(this);
    connectControls();
}

MainWindow::~MainWindow() {
    ActionGate::panel().clear();
}

void MainWindow::buildLayout() {
    auto* central = new QWidget(this);
    m_functions = new FuncButtonWidget(this);
    m_header = new QLabel(central);
    m_header->setObjectName(QStringLiteral("header"));
    m_header->setFixedHeight(Style::HeaderLabelHeight);
    m_header->setStyleSheet(CONTENT_BAR_STYLE);
    m_content = new QWidget(central);
    m_controls = new ControlRow(central);

    auto* grid = new QGridLayout(central);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    grid->addWidget(m_functions, 0, 0);
    grid->addWidget(m_header, 1, 0);
    grid->addWidget(m_content, 2, 0);
    grid->addWidget(m_controls, 3, 0);
    grid->setRowStretch(2, 1);
    setCentralWidget(central);
}

void MainWindow::buildStatusBar() {
    QStatusBar* bar = statusBar();
    bar->setFixedHeight(Style::StatusBarHeight);
    bar->setSizeGripEnabled(false);
    keepUndimmed(bar);
    bar->setStyleSheet(STATUS_BAR_STYLE);
    const auto add = [bar](const QString& name, int x, int end) {
        auto* label = new QLabel(bar);
        label->setObjectName(name);
        label->setGeometry(x, 0, end - x, Style::StatusBarHeight);
        return label;
    };
    m_statusFrequency = add(QStringLiteral("statusFrequency"), 12, 408);
    m_statusPower = add(QStringLiteral("statusPower"), 414, 632);
    m_statusRunning = add(QStringLiteral("statusRunning"), ModeX, ModeX + RunningMark);
    m_statusRunning->setPixmap(linePixmap(LineIcon::Run, Style::Active)
                                   .scaled(RunningMark, RunningMark, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    m_statusModulation = add(QStringLiteral("statusModulation"), ModeX, ModeEnd);
    m_statusRunMode = add(QStringLiteral("statusRunMode"), 936, Style::WindowWidth - 12);
    connect(&Freshness::panel(), &Freshness::changed, this, &MainWindow::UpdateStatusBar);
}

void MainWindow::connectControls() {
    ActionGate& gate = ActionGate::panel();
    const auto act = [&gate](const ChoiceGroup& pair, int index, ActionGate::Kind kind,
                             const ActionGate::Action& action) {
        QPushButton* button = pair.button(index);
        connect(button, &QPushButton::clicked, button,
                [&gate, button, kind, action] { gate.ask(button, action, kind); });
    };
    using Kind = ActionGate::Kind;
    act(m_controls->modulation(), ControlRow::On, Kind::SwitchOn, [this] { onModOnButton(true); });
    act(m_controls->modulation(), ControlRow::Off, Kind::Off, [this] { onModOffButton(true); });
    act(m_controls->rf(), ControlRow::On, Kind::SwitchOn, [this] { onRfOnButton(true); });
    act(m_controls->rf(), ControlRow::Off, Kind::OffAll, [this] { onRfOffButton(true); });
    QPushButton* trigger = m_controls->trigger();
    connect(trigger, &QPushButton::clicked, this,
            [this, &gate, trigger] { gate.ask(trigger, [this] { onTrgButton(); }); });
    connect(trigger, &QPushButton::pressed, this, &MainWindow::onTrgPress);
    connect(trigger, &QPushButton::released, this, &MainWindow::onTrgRelease);
    for (IntfButton* button : m_functions->buttons())
        connect(button, &IntfButton::clicked, this, &MainWindow::onFuncBnClicked);

    connect(m_handler, &EventHandler::linkChanged, this, &MainWindow::showLink);
    connect(m_handler, &EventHandler::answeringChanged, this, &MainWindow::showLink);
    connect(m_handler, &EventHandler::moduleConnectedChanged, this, &MainWindow::showLink);
    connect(m_handler, &EventHandler::waitingChanged, &gate, &ActionGate::setWaiting);
    connect(m_handler, &EventHandler::timedOut, &gate, &ActionGate::noteTimeout);
    connect(&gate, &ActionGate::settled, this, &MainWindow::refreshFromModule);
    connect(m_handler, &EventHandler::channelChanged, this, &MainWindow::channelChanged);
    connect(m_functions->channelKey(), &QPushButton::clicked, this, &MainWindow::toggleChannels);
    m_handler->setResumeCheck([&gate] { return gate.maySwitchOn(); });
}

void MainWindow::postInit() {
    ActionGate::panel().run([this] { update_from_config(STATE_NONE); });
    UpdateStatusBar();
    change_state(STATE_CW, STATE_NONE);
    showLink();
}

void MainWindow::change_state(STATE state, STATE) {
    m_state = state; // first: a screen with sub-views asks for it when it is shown
    if (m_screens) {
        if (ActionGate::panel().isOpen())
            followRecord();
        m_screens->setScreen(state);
    }
    if (m_functions)
        m_functions->update_static_controls(state);
}

void MainWindow::onFuncBnClicked() {
    const auto* button = qobject_cast<IntfButton*>(sender());
    if (!button || button->states().empty())
        return;
    const STATE first = button->states().front();
    UpdateDeviceState(first);
    change_state(first, STATE_NONE);
}

void MainWindow::UpdateDeviceState(STATE state) {
    if (state < 0 || state >= static_cast<int>(ModeTexts.size()))
        return;
    if (state == STATE_RUNMODE)
        status().runMode = runModeText(true);
    else if (const char* text = ModeTexts[static_cast<std::size_t>(state)])
        status().mode = QString::fromLatin1(text);
}

void MainWindow::update_from_config(STATE state) {
    m_screens->update_from_config(state);
    const ChannelRecord& record = m_handler->snapshot();
    status().runMode = runModeText(record.runMode == 1);
    if (record.rfOutput == 1) {
        onRfOnButton(false);
        update_modulations();
        UpdateStatusBar();
    } else {
        onRfOffButton(false);
        UpdateStatusBar();
    }
}

void MainWindow::refreshFromModule() {
    if (!ActionGate::panel().isOpen() || DialogRunner::anyOpen())
        return;
    m_errors.showKept();
    followRecord();
}

void MainWindow::followRecord() {
    const unsigned former = m_handler->currentChannel();
    m_handler->keepChannelInside();
    if (m_handler->currentChannel() != former)
        ActionGate::panel().dropAllButOffs();
    m_handler->revert_preset(static_cast<int>(m_handler->currentChannel()));
    showOutputs();
    m_screens->update_from_config(m_state);
}

/// The looks of the controls and the status bar, from the snapshot. What has not changed costs nothing.
void MainWindow::showOutputs() {
    showLink();
    showChannel();
    setRfLook(m_handler->snapshot().rfOutput == 1);
    setModulationLook(m_handler->isModulationsOn() != 0);
    UpdateStatusBar();
}

/// The key of the channels; a region that holds one only has no overview.
void MainWindow::showChannel() {
    const unsigned channels = m_handler->publishedChannels() > 0 ? m_handler->publishedChannels() : m_channels;
    m_channels = channels;
    if (m_state == STATE_CHANNELS && channels < 2)
        change_state(m_stateBefore);
    const bool any = channels > 1 && !radiatingChannels(*m_handler).empty();
    m_functions->showChannel(channels, m_handler->currentChannel(), any, m_state == STATE_CHANNELS);
}

void MainWindow::toggleChannels() {
    if (m_state != STATE_CHANNELS) {
        m_stateBefore = m_state;
        change_state(STATE_CHANNELS);
    } else {
        change_state(m_stateBefore);
    }
    showChannel();
}

void MainWindow::selectChannel(unsigned channel) {
    const unsigned former = m_handler->currentChannel();
    if (channel != former && m_handler->chooseChannel(channel) != 0) {
        ActionGate::panel().dropAllButOffs(); // it was meant for the channel that was touched
        showCommandFailure(*this);
    }
    // Who touched Off meanwhile had the former channel before his eyes; the one now selected is switched off next.
    if (m_handler->currentChannel() != former && ActionGate::panel().isOvertaken()) {
        const Channels failed = switchOff(*this, {former});
        if (!failed.empty())
            showToast(*this, QStringLiteral("RF is not off: channel %1").arg(channelNumbers(failed)));
    }
    status().runMode = runModeText(m_handler->snapshot().runMode == 1);
    followRecord();
}

bool MainWindow::enablesLocked() const {
    return m_starting > 0 || m_handler->isModulationsOn() != 0;
}

void MainWindow::countStarting(int change) {
    m_starting += change;
    emit enablesChanged();
}

void MainWindow::UpdateStatusBar() {
    const ChannelRecord& record = m_handler->snapshot();
    const Freshness& freshness = Freshness::panel();
    m_statusFrequency->setText(freshness.isKnown() ? statusFrequencyText(record.frequency.value, status().unit)
                                                   : QStringLiteral("  Frequency: ---"));
    m_statusPower->setText(freshness.isKnown() ? statusPowerText(record.power.value) : QStringLiteral("Power: ---"));
    const unsigned running = m_handler->getModulationsState();
    const bool marked = running != 0 && !freshness.isStale();
    const QString ordinary = freshness.isStale() ? STATUS_STALE_STYLE : STATUS_VALUE_STYLE;
    for (QLabel* label : {m_statusFrequency, m_statusPower, m_statusRunMode})
        applySheet(label, ordinary);
    applySheet(m_statusModulation, marked ? STATUS_RUNNING_STYLE : ordinary);
    m_statusRunning->setVisible(marked);
    const int modeX = marked ? ModeX + RunningMark + 4 : ModeX;
    m_statusModulation->setGeometry(modeX, 0, ModeEnd - modeX, Style::StatusBarHeight);
    const QFontMetrics metrics = m_statusModulation->fontMetrics();
    m_statusModulation->setText(shortenedAtComma(GetStatusBarMode(running), [this, &metrics](const QString& text) {
        return metrics.horizontalAdvance(text) <= m_statusModulation->width();
    }));
    m_statusRunMode->setText(QStringLiteral("Run Mode: ") + status().runMode);
}

QString MainWindow::GetStatusBarMode(unsigned mask) const {
    return statusModeText(mask, status().mode);
}

void MainWindow::onRfOnButton(bool fromUser) {
    if (fromUser && m_handler->set_rf_onoff(OnOff::on) != 0) {
        showCommandFailure(*this);
        UpdateStatusBar();
        return;
    }
    setRfLook(m_handler->snapshot().rfOutput == 1);
    UpdateStatusBar();
}

void MainWindow::onRfOffButton(bool fromUser) {
    const bool modOffOwed = std::exchange(m_modOffOwed, false);
    if (fromUser && m_handler->set_rf_onoff(OnOff::off) != 0) {
        showCommandFailure(*this);
        if (modOffOwed)
            onModOffButton(true);
        UpdateStatusBar();
        return;
    }
    setRfLook(false);
    if (fromUser)
        m_handler->revert_preset(static_cast<int>(m_handler->currentChannel()));
    onModOffButton(false);
    UpdateStatusBar();
}

void MainWindow::setRfLook(bool on) {
    m_controls->setRf(on);
    m_controls->modulation().setEnabled(on);
    emit modulationLookChanged(m_controls->modulation().chosen() == ControlRow::On, on);
}

void MainWindow::setModulationLook(bool on) {
    m_controls->modulation().choose(on ? ControlRow::On : ControlRow::Off);
    emit enablesChanged();
    emit modulationLookChanged(on, m_controls->modulation().button(ControlRow::On)->isEnabled());
}

void MainWindow::onModOnButton(bool fromUser) {
    const unsigned mask = m_handler->snapshot().modulationEnable;
    if (const int conflict = canModulate(modEnableBitMask(0), mask)) {
        reportScpiError(0, conflict);
        return;
    }
    {
        const Starting starting(*this);
        emit MainModOnSignal();
        emit SweepModOnSignal();
        emit ListOnOffSignal(1);
    }
    const unsigned on = m_handler->isModulationsOn();
    const unsigned missing = mask & ~on;
    // What an Off has taken back needs no word: the user has asked for it.
    const bool takenBack = !ActionGate::panel().maySwitchOn() && ActionGate::panel().mayGoOn();
    if (fromUser && missing != 0 && !takenBack)
        showToast(*this, QStringLiteral("Couldn't start %1 modulations").arg(GetStatusBarMode(missing)));
    if (!fromUser || missing == 0 || on != 0)
        setModulationLook(true);
}

void MainWindow::onModOffButton(bool fromUser) {
    // Another client may have started something since the last look.
    if (fromUser)
        m_handler->revert_preset(static_cast<int>(m_handler->currentChannel()));
    emit MainModOffSignal();
    emit SweepModOffSignal();
    emit ListOnOffSignal(0);
    // The Off of the RF output has cut this one short and stops the rest itself, unless it fails.
    m_modOffOwed = fromUser && ActionGate::panel().isOvertaken();
    if (fromUser) {
        const unsigned mask = m_handler->snapshot().modulationEnable;
        const unsigned on = m_handler->isModulationsOn();
        if (on != 0 && !ActionGate::panel().isOvertaken()) {
            showToast(*this, QStringLiteral("Couldn't stop %1 modulations").arg(GetStatusBarMode(on)));
            if (on == mask) {
                UpdateDeviceState(STATE_CW);
                UpdateStatusBar();
                return;
            }
        }
    }
    setModulationLook(false);
    UpdateDeviceState(STATE_CW);
    UpdateStatusBar();
}

void MainWindow::update_modulations() {
    if (m_handler->isModulationsOn() == 0)
        onModOffButton(false);
    else
        onModOnButton(false);
}

void MainWindow::onModOnOff(int on, STATE state) {
    UpdateDeviceState(on != 0 ? state : STATE_CW);
    UpdateStatusBar();
}

void MainWindow::onTrgPress() {
    m_controls->setTriggerPressed(true);
}

void MainWindow::onTrgRelease() {
    m_controls->setTriggerPressed(false);
}

void MainWindow::onTrgButton() {
    if (m_handler->setTrigger() != 0)
        showCommandFailure(*this);
}

void MainWindow::SetManualBnEnable(bool enable) {
    m_controls->trigger()->setEnabled(enable);
}

void MainWindow::OnRunModeCont() {
    status().runMode = runModeText(true);
    UpdateStatusBar();
}

void MainWindow::OnRunModeTrig() {
    status().runMode = runModeText(false);
    UpdateStatusBar();
}

void MainWindow::set_battery_level(unsigned short percent) {
    if (m_functions)
        m_functions->set_battery_level(percent);
}

void MainWindow::setHeaderBar(const QString& title) {
    m_header->setText(title);
}

void MainWindow::setStatusBar(const QString&) {}

void MainWindow::reportScpiError(int requested, int conflict) {
    showToast(*this, conflictText(requested, conflict));
}

void MainWindow::tellUser(const QString& text) {
    m_handler->history().noteMessage(text);
    if (isVisible())
        tell(m_toast, text);
    else if (m_keptToast.isEmpty()) // the first says what went wrong, the others follow from it
        m_keptToast = text;
}

void MainWindow::reportError(const QString& text) {
    m_handler->history().noteMessage(text);
    m_errors.report(text);
}

void MainWindow::reportWhenFree(const QString& text) {
    m_handler->history().noteMessage(text);
    m_errors.reportWhenFree(text);
}

void MainWindow::showLink() {
    const bool reachable = m_handler->isLinkUp() && m_handler->isModuleConnected() && m_handler->isAnswering();
    Freshness::panel().set(!m_handler->hasRecord() ? Freshness::Unknown
                           : reachable             ? Freshness::Current
                                                   : Freshness::Stale);
    m_functions->setMark(!m_handler->isLinkUp()            ? QStringLiteral("No link")
                         : !m_handler->isModuleConnected() ? QStringLiteral("No module")
                         : !m_handler->isAnswering()       ? QStringLiteral("No answer")
                                                           : QString());
}

bool MainWindow::event(QEvent* event) {
    const bool handled = PanelHost::event(event);
    // What was reported while the splash stood in front comes once the window is up and the loop is back in charge.
    // Here and not in showEvent(), which hands on and nothing else.
    if (event->type() == QEvent::Show)
        QTimer::singleShot(0, this, [this] {
            if (!m_keptToast.isEmpty())
                tellUser(std::exchange(m_keptToast, QString()));
            m_errors.showKept();
        });
    return handled;
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
}

void MainWindow::showEvent(QShowEvent* event) {
    PanelHost::showEvent(event);
}

} // namespace Kavor::HandheldGui
