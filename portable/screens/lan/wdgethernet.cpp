#include "portable/screens/lan/wdgethernet.h"

#include "common/instrument/handlerscpi.h"
#include "platform/logger.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/actioncolumn.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/listpage.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vkeditors.h"
#include "portable/widgets/vkeyboard.h"

#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <algorithm>

// The LAN page itself. What it sends is in wdgethernet_apply.cpp, its checks in wdgethernet_checks.cpp.

namespace Kavor::HandheldGui {

struct ethScreen::FieldTexts {
    const char* label;
    const char* name;
    const char* prompt;
};

namespace {

constexpr PageGroup::Column FieldColumn{24, 248, 384, 0};
constexpr int HeldX = 664; ///< what is in use
constexpr int FirstRow = 48;
constexpr int LineHeight = 36; ///< of the readouts at the end of the page
constexpr int ReadoutTop = FirstRow + 5 * Style::RowPitch + 6;
constexpr int ApplyPlace = 5; ///< in the column of buttons
constexpr int CancelPlace = 6;
constexpr unsigned HighestPort = 65535;
constexpr int FirstFieldRow = 1;
enum DhcpButton { Dynamic, Static };

constexpr int rowTop(int row) {
    return FirstRow + row * Style::RowPitch;
}

/// A TCP port: neither a sign nor a point.
class PortEdit : public vkNoUnitsEdit {
public:
    using vkNoUnitsEdit::vkNoUnitsEdit;

protected:
    void prepare(VirtKeyboard& keyboard) override {
        keyboard.setSignEnabled(false);
        keyboard.setPointEnabled(false);
    }
};

bool isPort(const QString& text) {
    bool isNumber = false;
    const unsigned port = text.toUInt(&isNumber);
    return isNumber && port >= 1 && port <= HighestPort;
}

} // namespace

ethScreen::ethScreen(QWidget* parent, std::vector<STATE> states)
    : IGuiScreen(parent, std::move(states)),
      m_page(makePage(QStringLiteral("pageLan"))),
      m_group(new PageGroup(m_page, QStringLiteral("LAN settings"),
                            QRect(Style::PageMargin, 0, ActionColumn::MainWidth, Style::ContentHeight))),
      m_timer(new QTimer(this)),
      m_thread(host().settings().readNetwork) {
    buildFields();
    buildReadouts();
    buildButtons();
    connect(&m_thread, &dhcpThread::factsRead, this, [this](const NetworkFacts& facts) { m_found = facts; });
    connect(&m_thread, &dhcpThread::ipSet, this, &ethScreen::getSysteminfo);
    // An address that a DHCP server gives comes seconds after it was asked for.
    connect(m_timer, &QTimer::timeout, &m_thread, [this] { m_thread.lookUp(); });
    m_timer->setInterval(host().settings().refreshMs);
}

void ethScreen::buildFields() {
    static const std::array<FieldTexts, FieldCount> fields{
        {{"IP Address", "lanAddress", "Enter static IP for device"},
         {"Subnet Mask", "lanMask", "Enter static IP mask for device"},
         {"Defaut Gateway", "lanGateway", "Enter Defaut Gateway for device"},
         {"SCPI Port", "lanPort", "Enter TCP SCPI port for device"}}};
    for (int i = 0; i < FieldCount; ++i) {
        const auto field = static_cast<Field>(i);
        const FieldTexts& texts = fields[field];
        ValueEdit* edit = nullptr;
        if (field == Port)
            edit = new PortEdit(m_group);
        else
            edit = new vkIPEdit(m_group);
        edit->setObjectName(QString::fromLatin1(texts.name));
        edit->setTitle(QString::fromLatin1(texts.prompt));
        edit->setStyleSheet(WIDGET_EDIT_STYLE);
        const int y = rowTop(FirstFieldRow + i);
        m_labels[field] = m_group->addField(FieldColumn, y, QString::fromLatin1(texts.label), edit);
        m_held[field] = addHeld(y, QString::fromLatin1(texts.name) + QStringLiteral("InUse"));
        m_marks[field] = new QFrame(m_group);
        m_marks[field]->setGeometry(0, y, 5, Style::EntryHeight);
        m_marks[field]->setStyleSheet(QStringLiteral("background-color: %1;").arg(Style::css(Style::Active)));
        connect(edit, &ValueEdit::valueChanged, this, [this, field] { onEntered(field); });
        connect(edit, &ValueEdit::keyboardClosed, this, &ethScreen::showRows);
        m_edits[field] = edit;
    }
    m_group->addLabel(FieldColumn.labelX, rowTop(0), FieldColumn.valueX - FieldColumn.labelX, Style::ButtonHeight,
                      QStringLiteral("DHCP"));
    applySheet(m_group->addLabel(HeldX, 0, m_group->width() - HeldX, Style::CaptionHeight, QStringLiteral("In use")),
               WIDGET_LBL_STYLE);
    m_heldDhcp = addHeld(rowTop(0), QStringLiteral("lanDhcpInUse"));
    m_dhcp = new ChoiceGroup(m_group, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                             {{QStringLiteral("Dynamic"), QStringLiteral("lanDynamic"), QString()},
                              {QStringLiteral("Static IP"), QStringLiteral("lanStatic"), QString()}});
    m_dhcp->place(FieldColumn.valueX, rowTop(0), (FieldColumn.valueWidth - Style::Gap) / 2, Style::ButtonHeight);
    connect(m_dhcp, &ChoiceGroup::clicked, this, [this](int index) {
        if (index != m_dhcp->chosen())
            onDhcpBnClicked();
    });
}

QLabel* ethScreen::addHeld(int y, const QString& name) {
    QLabel* label = m_group->addLabel(HeldX, y, m_group->width() - HeldX - 24, Style::EntryHeight, QString());
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    return label;
}

void ethScreen::buildReadouts() {
    m_group->addLine({FieldColumn.labelX, ReadoutTop - 6, m_group->width() - 2 * FieldColumn.labelX, 1});
    const auto readout = [this](int y, const QString& label, const QString& name, int end) {
        m_group->addLabel(FieldColumn.labelX, y, FieldColumn.valueX - FieldColumn.labelX, LineHeight, label);
        QLabel* value = m_group->addLabel(FieldColumn.valueX, y, end - FieldColumn.valueX, LineHeight, QString());
        value->setObjectName(name);
        value->setTextFormat(Qt::PlainText);
        applySheet(value, DYN_VALUE_STYLE2);
        return value;
    };
    m_hardwareAddress = readout(ReadoutTop, QStringLiteral("MAC Address"), QStringLiteral("lanHardwareAddress"), HeldX);
    m_cable = m_group->addLabel(HeldX, ReadoutTop, m_group->width() - HeldX - 24, LineHeight, QString());
    m_cable->setObjectName(QStringLiteral("lanCable"));
    m_hostName = readout(ReadoutTop + LineHeight, QStringLiteral("Host Name"), QStringLiteral("lanHostName"),
                         m_group->width() - FieldColumn.labelX);
}

/// A host name may have 64 characters: it then begins right behind its label.
void ethScreen::showHostName(const QString& name) {
    const int end = m_group->width() - FieldColumn.labelX;
    const QFontMetrics metrics = m_hostName->fontMetrics();
    const int wanted = metrics.horizontalAdvance(name) + 1;
    const int nearest = FieldColumn.labelX + metrics.horizontalAdvance(QStringLiteral("Host Name")) + 2 * Style::Gap;
    const int x = qBound(nearest, end - wanted, FieldColumn.valueX);
    m_hostName->setGeometry(x, m_hostName->y(), end - x, LineHeight);
    m_hostName->setText(metrics.elidedText(name, Qt::ElideMiddle, end - x));
}

void ethScreen::buildButtons() {
    QPushButton* back =
        ActionColumn::addButton(m_page, 0, LineIcon::Back, QStringLiteral("Back"), QStringLiteral("lanBack"));
    connect(back, &QPushButton::clicked, this, &ethScreen::back);
    const auto button = [this](int place, const QString& text, const QString& name) {
        QPushButton* made = makeButton(m_page, text, name);
        made->setGeometry(ActionColumn::place(place));
        return made;
    };
    m_apply = button(ApplyPlace, QStringLiteral("Applay Changes"), QStringLiteral("lanApply"));
    m_cancel = button(CancelPlace, QStringLiteral("Cancel"), QStringLiteral("lanCancel"));
    m_changes = new QLabel(m_page);
    m_changes->setObjectName(QStringLiteral("lanChanges"));
    m_changes->setGeometry(ActionColumn::place(ApplyPlace).translated(0, -64));
    m_changes->setAlignment(Qt::AlignCenter);
    m_changes->setStyleSheet(DYN_VALUE_STYLE2);
    connect(m_apply, &QPushButton::clicked, this,
            [this] { ActionGate::panel().ask(m_apply, [this, wanted = wantedNow()] { applyChanges(wanted); }); });
    connect(m_cancel, &QPushButton::clicked, this, &ethScreen::onCancelChangesBnClicked);
}

void ethScreen::onIPBnClicked() {
    m_edits[Address]->openKeyboard();
}

void ethScreen::onMaskBnClicked() {
    m_edits[Mask]->openKeyboard();
}

void ethScreen::onDefaultGatewayBnClicked() {
    m_edits[Gateway]->openKeyboard();
}

void ethScreen::onPortBnClicked() {
    m_edits[Port]->openKeyboard();
}

void ethScreen::onDhcpBnClicked() {
    const bool wanted = !isDynamic();
    m_pendingDhcp.reset();
    if (wanted != m_currentDhcp)
        m_pendingDhcp = wanted;
    if (!hasEdits())
        forgetNetwork();
    showRows();
}

void ethScreen::onEntered(Field field) {
    const QString entered = m_edits[field]->text();
    const QString text = field == Port ? QString::number(entered.toUInt()) : plainAddress(entered);
    const bool valid = field == Port ? isPort(entered) : isIPAddress(entered);
    if (!valid) {
        showToast(host(), field == Port ? QStringLiteral("Range 1 to %1").arg(HighestPort)
                                        : QStringLiteral("Invalid numeric value"));
        return; // the row is put right when the keyboard has closed
    }
    m_pending[field].reset();
    if (text != m_current[field])
        m_pending[field] = text;
    // Whoever enters an address, a mask or a gateway means a static configuration: only that sends them.
    if (field != Port && isDynamic())
        onDhcpBnClicked();
    else if (!hasEdits())
        forgetNetwork();
}

bool ethScreen::hasEdits() const {
    return m_pendingDhcp.has_value() ||
           std::any_of(m_pending.begin(), m_pending.end(), [](const auto& edit) { return edit.has_value(); });
}

void ethScreen::readModule() {
    if (hasEdits())
        return;
    m_current[Gateway] = QString::fromStdString(handler().getGateway());
    m_current[Port] = QString::fromStdString(handler().getPort());
    m_currentDhcp = handler().getDhcpMode() != 0;
    const QString published = QString::fromStdString(handler().getIP());
    if (!dhcpThread::ownPart(m_found, published).address) {
        m_current[Address] = published;
        m_current[Mask] = QString::fromStdString(handler().getMask());
    }
}

void ethScreen::getSysteminfo() {
    const dhcpThread::Own own = dhcpThread::ownPart(m_found, QString::fromStdString(handler().getIP()));
    const QString hardwareAddress = own.interface ? own.interface->hardwareAddress : QString();
    const NetworkFacts::Address address = own.address ? *own.address : NetworkFacts::Address();
    const QString all =
        QStringList{m_found.hostName, address.ipv4, hardwareAddress, address.mask}.join(QLatin1Char('\n'));
    // What was just applied stays on show until the interface has followed.
    if (all == m_takenOver)
        return;
    m_takenOver = all;
    VELDA_LOG("lan", QtInfoMsg, "Localhost name: %s", m_found.hostName);
    VELDA_LOG("lan", QtInfoMsg, "IP = %s", address.ipv4);
    VELDA_LOG("lan", QtInfoMsg, "MAC = %s", hardwareAddress);
    VELDA_LOG("lan", QtInfoMsg, "Netmask = %s", address.mask);
    if (!hasEdits()) {
        m_current[Address] = address.ipv4;
        m_current[Mask] = address.mask;
    }
    m_hardwareAddress->setText(hardwareAddress);
    m_cable->setText(own.interface == nullptr ? QString()
                     : own.interface->carrier ? QStringLiteral("Cable connected")
                                              : QStringLiteral("No cable"));
    showHostName(m_found.hostName);
    readModule();
    showRows();
}

void ethScreen::forgetNetwork() {
    m_takenOver = QString();
    m_thread.lookUp();
}

void ethScreen::showRows() {
    for (int i = 0; i < FieldCount; ++i) {
        const auto field = static_cast<Field>(i);
        if (!m_edits[field]->isEditing())
            m_edits[field]->setText(shown(field));
        // What is pending differs from what is in use by a bar, an edge and weight, not by colour alone.
        const bool pending = m_pending[field].has_value();
        applySheet(m_edits[field], pending ? WIDGET_EDIT_PENDING_STYLE : WIDGET_EDIT_STYLE);
        applySheet(m_labels[field], pending ? WIDGET_LBL_BOLD_STYLE : WIDGET_LBL_STYLE);
        m_marks[field]->setVisible(pending);
        applySheet(m_held[field], pending ? WIDGET_LBL_BRIGHT_STYLE : WIDGET_LBL_STYLE);
        m_held[field]->setText(m_current[field]);
    }
    applySheet(m_heldDhcp, m_pendingDhcp ? WIDGET_LBL_BRIGHT_STYLE : WIDGET_LBL_STYLE);
    m_heldDhcp->setText(m_currentDhcp ? QStringLiteral("Dynamic") : QStringLiteral("Static IP"));
    m_dhcp->choose(isDynamic() ? Dynamic : Static);
    updateApplyCancel();
}

void ethScreen::updateApplyCancel() {
    m_apply->setEnabled(hasEdits());
    m_cancel->setEnabled(hasEdits());
    applySheet(m_apply, hasEdits() ? PUSH_BN_SEL_STYLE : PUSH_BN_STYLE);
    const auto changes =
        std::count_if(m_pending.begin(), m_pending.end(), [](const auto& edit) { return edit.has_value(); }) +
        (m_pendingDhcp ? 1 : 0);
    m_changes->setText(changes == 0   ? QString()
                       : changes == 1 ? QStringLiteral("1 change pending")
                                      : QStringLiteral("%1 changes pending").arg(changes));
}

void ethScreen::dropEdits() {
    for (std::optional<QString>& edit : m_pending)
        edit.reset();
    m_pendingDhcp.reset();
}

void ethScreen::onCancelChangesBnClicked() {
    dropEdits();
    readModule();
    forgetNetwork();
    showRows();
}

void ethScreen::update_from_config(STATE) {
    readModule();
    showRows();
}

void ethScreen::show() {
    onCancelChangesBnClicked();
    m_timer->start();
    m_page->show();
}

void ethScreen::hide() {
    m_timer->stop();
    m_page->hide();
}

} // namespace Kavor::HandheldGui
