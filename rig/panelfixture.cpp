#include "rig/panelfixture.h"

#include "platform/devicepaths.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/styles/styles.h"
#include "rig/agreement.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTouchDevice>
#include <QWindow>
#include <atomic>
#include <unistd.h>

using namespace Kavor::HandheldGui;

namespace {

constexpr int SettledMs = 20000;

std::string ownRegionName() {
    static std::atomic<int> next{0};
    return "/veldaGui-" + std::to_string(::getpid()) + "-" + std::to_string(next++);
}

QTouchDevice* finger() {
    static QTouchDevice* device = QTest::createTouchDevice();
    return device;
}

} // namespace

PanelFixture::PanelFixture() : PanelFixture(Setup()) {}

PanelFixture::PanelFixture(const Setup& setup) {
    static const bool styled = [] {
        applyApplicationStyle(*qobject_cast<QApplication*>(QCoreApplication::instance()));
        return true;
    }();
    Q_UNUSED(styled)

    if (qEnvironmentVariableIsEmpty("VELDA_HOME")) {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("VELDA_HOME", QFile::encodeName(m_home->path()));
    }

    Sim::Options options;
    options.channels = setup.channels;
    options.disconnectedChannels = setup.disconnected;
    options.regionName = ownRegionName();
    options.configurationFolder = setup.configurationFolder;
    m_module = std::make_unique<Sim::ModuleSimulator>(options);
    if (setup.startModule && !m_module->start())
        qFatal("The simulated module does not start.");

    InstrumentSettings instrument;
    instrument.regionName = options.regionName;
    instrument.commandTimeoutMs = setup.commandTimeoutMs;
    instrument.linkWatchMs = 50;
    instrument.retryFirstMs = 20;
    instrument.retryMs = 50;
    instrument.connectWaitMs = setup.startModule ? 1000 : 10;
    instrument.connectSettleMs = 0;
    m_handler = std::make_unique<EventHandler>(instrument);
    m_handler->InitChannels();

    PanelSettings panel;
    panel.refreshMs = setup.refreshMs;
    panel.readNetwork = setup.readNetwork;
    panel.updateEntry = setup.updateEntry;
    m_window = std::make_unique<MainWindow>(nullptr, m_handler.get(), panel);
    m_window->postInit();
    m_window->show();
    if (!QTest::qWaitForWindowExposed(m_window.get()))
        qFatal("The window does not come up.");
    m_module->clearReceived();
}

PanelFixture::~PanelFixture() {
    m_window.reset();
    m_handler.reset();
    if (m_home)
        qunsetenv("VELDA_HOME");
}

QString PanelFixture::home() const {
    return DevicePaths::dataRoot();
}

ChannelRecord PanelFixture::record() const {
    return m_module->record(m_handler->currentChannel());
}

bool PanelFixture::settle() {
    return QTest::qWaitFor([] { return ActionGate::panel().isIdle(); }, SettledMs);
}

bool PanelFixture::press(const QString& name) {
    auto* target = widget<QWidget>(name);
    if (!target || !target->isVisible() || !target->isEnabled())
        return false;
    QTest::mouseClick(target, Qt::LeftButton, Qt::NoModifier, target->rect().center());
    return true;
}

bool PanelFixture::touch(const QString& name) {
    auto* target = widget<QWidget>(name);
    if (!target || !target->isVisible() || !target->isEnabled())
        return false;
    // Through the platform's window, as the touch screen's events come: Qt makes mouse events of what nobody accepts.
    QWindow* handle = m_window->windowHandle();
    const QPoint middle = target->mapTo(m_window.get(), target->rect().center());
    QTest::touchEvent(handle, finger()).press(0, middle, handle);
    QTest::touchEvent(handle, finger()).release(0, middle, handle);
    return true;
}

bool PanelFixture::enter(const QString& editor, const QString& number, const QString& endKey) {
    m_dialogs.expectNumber(QString(), number, endKey);
    return press(editor);
}

QString PanelFixture::text(const QString& name) {
    if (auto* label = widget<QLabel>(name))
        return label->text();
    if (auto* edit = widget<QLineEdit>(name))
        return edit->text();
    if (auto* box = widget<QComboBox>(name))
        return box->currentText();
    if (auto* button = widget<QAbstractButton>(name))
        return button->text();
    return QStringLiteral("(no such widget)");
}

QString PanelFixture::toast() {
    const ToastOverlay* overlay = m_window->toast();
    return overlay->isTelling() ? overlay->text() : QString();
}

bool PanelFixture::hasStyle(const QString& name, const QString& sheet) {
    auto* target = widget<QWidget>(name);
    return target && target->styleSheet() == sheet;
}

QStringList PanelFixture::disagreements() {
    if (m_module->port() == 0)
        return {};
    return settle() ? ::disagreements(*m_window, record()) : QStringList{QStringLiteral("never at rest")};
}

QStringList PanelFixture::sent() {
    QStringList lines;
    for (const QByteArray& line : m_module->received())
        lines << QString::fromUtf8(line);
    m_module->clearReceived();
    return lines;
}
