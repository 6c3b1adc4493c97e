#include "portable/fields/stepkeys.h"

#include "common/instrument/handlerscpi.h"
#include "platform/devicepaths.h"
#include "portable/fields/valueentry.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/dialogs.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vkeyboard.h"
#include "values/formatting.h"

#include <QPushButton>
#include <QSettings>

namespace Kavor::HandheldGui {

namespace {

constexpr int DownX = 872;
constexpr int SizeX = 972;
constexpr int UpX = 1120;
constexpr int KeyWidth = 88;
constexpr int SizeWidth = 136;
constexpr int SignSize = 52;
const char Decibel[] = "dB";

QSettings settings() {
    return QSettings(DevicePaths::dataRoot() + QStringLiteral("/kavor/panel.ini"), QSettings::IniFormat);
}

} // namespace

StepKeys::StepKeys(PageGroup& group, PanelHost& host, ValueEntry& entry, const StepKind& kind, int y, int height)
    : QObject(&group), m_group(group), m_host(host), m_entry(entry), m_kind(kind), m_y(y), m_height(height) {
    QPushButton* down = addKey("Down", DownX, KeyWidth);
    down->setIcon(linePixmap(LineIcon::StepDown, Style::Text, SignSize));
    m_sizeKey = addKey("Size", SizeX, SizeWidth);
    QPushButton* up = addKey("Up", UpX, KeyWidth);
    up->setIcon(linePixmap(LineIcon::StepUp, Style::Text, SignSize));
    connectKey(down, -1);
    connectKey(up, 1);
    connect(m_sizeKey, &QPushButton::clicked, this,
            [this] { ActionGate::panel().ask(m_sizeKey, [this] { askSize(); }); });
    connect(&m_timer, &QTimer::timeout, this, &StepKeys::repeat);
    reload();
}

QPushButton* StepKeys::addKey(const char* part, int x, int width) {
    auto* key = new QPushButton(&m_group);
    key->setObjectName(m_kind.name + QLatin1String(part));
    key->setGeometry(x, m_y, width, m_height);
    key->setIconSize(QSize(SignSize, SignSize));
    key->setFocusPolicy(Qt::NoFocus);
    key->setStyleSheet(PUSH_BN_STYLE);
    return key;
}

void StepKeys::connectKey(QPushButton* key, int direction) {
    connect(key, &QPushButton::pressed, this, [this, key, direction] {
        m_held = key;
        m_direction = direction;
        m_repeats = false;
        m_timer.start(RepeatAfterMs);
    });
    connect(key, &QPushButton::clicked, this, [this, key, direction] {
        if (!m_repeats)
            ActionGate::panel().ask(key, [this, direction] { step(direction); });
    });
    // Also when the finger slides off.
    connect(key, &QPushButton::released, this, [this] { m_timer.stop(); });
}

bool StepKeys::step(int direction) {
    return m_entry.step(direction * m_size);
}

/// A module that is slow is not given a second command while one waits: the key then keeps pace with it.
void StepKeys::repeat() {
    const bool held = m_held && m_held->isDown() && m_held->isEnabled() && m_held->isVisible();
    if (!held || DialogRunner::anyOpen())
        return m_timer.stop();
    m_repeats = true;
    m_timer.start(RepeatEveryMs);
    if (!ActionGate::panel().isOpen())
        return;
    ActionGate::panel().ask(m_held, [this] {
        if (!step(m_direction))
            m_timer.stop();
    });
}

void StepKeys::askSize() {
    const bool isFrequency = m_kind.quantity == UnitQuantity::Frequency;
    const QStringList units = isFrequency ? unitNames(UnitQuantity::Frequency) : QStringList{QLatin1String(Decibel)};
    const QString shown = text();
    const int blank = shown.indexOf(QLatin1Char(' '));
    const QString unit = shown.mid(blank + 1);
    VirtKeyboard keyboard(m_sizeKey->window(), m_kind.title, unit, shown.left(blank));
    for (int i = 0; i < units.size(); ++i)
        keyboard.setUnitsButtons(i, units.at(i));
    keyboard.setHighliteButton(units.indexOf(unit));
    keyboard.setSignEnabled(false);
    const auto named = [isFrequency](double size) {
        return isFrequency ? formatFrequency(size, "Hz")
                           : formatNumber(size, 2) + QLatin1Char(' ') + QLatin1String(Decibel);
    };
    const QString range = QStringLiteral("%1 to %2").arg(named(m_kind.least), named(m_kind.most));
    keyboard.setRange(range);
    double number = 0;
    if (!keyboard.ask() || !parseDouble(keyboard.text(), number))
        return;
    double size = number;
    if (isFrequency && !unitToCanonical(UnitQuantity::Frequency, number, keyboard.chosenUnit(), size))
        return;
    if (size < m_kind.least || size > m_kind.most) {
        showToast(m_host, QStringLiteral("%1: range %2").arg(m_kind.title, range));
        return;
    }
    m_size = size;
    m_sizeKey->setText(text());
    QSettings kept = settings();
    kept.setValue(setting(), size);
    kept.sync();
    if (kept.status() != QSettings::NoError)
        showToast(m_host, QStringLiteral("The step could not be kept for the next start"));
}

void StepKeys::reload() {
    const unsigned channel = m_host.handler().currentChannel();
    if (channel == m_channel)
        return;
    m_channel = channel;
    // A key that is held down was touched for the other channel.
    m_timer.stop();
    m_repeats = true;
    bool isNumber = false;
    const double kept = settings().value(setting()).toDouble(&isNumber);
    m_size = isNumber && kept >= m_kind.least && kept <= m_kind.most ? kept : m_kind.size;
    m_sizeKey->setText(text());
}

QString StepKeys::setting() const {
    return QStringLiteral("channel%1/step/%2").arg(m_channel + 1).arg(m_kind.name);
}

QString StepKeys::text() const {
    return m_kind.quantity == UnitQuantity::Frequency
               ? formatFrequency(m_size, "Hz")
               : formatNumber(m_size, 2) + QLatin1Char(' ') + QLatin1String(Decibel);
}

} // namespace Kavor::HandheldGui
