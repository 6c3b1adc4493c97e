#include "portable/screens/lan/wdgethernet.h"

#include "common/instrument/handlerscpi.h"
#include "platform/logger.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
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
    const PageGroup::Column* column;
    int row;
};

namespace {

constexpr PageGroup::Column LeftColumn{24, 216, 320, 0};
constexpr PageGroup::Column RightColumn{616, 808, 400, 0};
constexpr int FirstRow = 60;
constexpr int RowPitch = 80;
constexpr int ButtonTop = 464;
constexpr int ButtonWidth = 240;
constexpr unsigned HighestPort = 65535;
enum DhcpButton { Dynamic, Static };

constexpr int rowTop(int row) {
    return FirstRow + row * RowPitch;
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
      m_group(new PageGroup(
          m_page, QStringLiteral("LAN settings"),
          QRect(Style::PageMargin, 0, Style::WindowWidth - 2 * Style::PageMargin, Style::PageHeight - 8))),
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
        {{"IP Address", "lanAddress", "Enter static IP for device", &LeftColumn, 0},
         {"Subnet Mask", "lanMask", "Enter static IP mask for device", &LeftColumn, 1},
         {"Defaut Gateway", "lanGateway", "Enter Defaut Gateway for device", &LeftColumn, 2},
         {"SCPI Port", "lanPort", "Enter TCP SCPI port for device", &RightColumn, 1}}};
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
        m_group->addField(*texts.column, rowTop(texts.row), QString::fromLatin1(texts.label), edit);
        connect(edit, &ValueEdit::valueChanged, this, [this, field] { onEntered(field); });
        connect(edit, &ValueEdit::keyboardClosed, this, &ethScreen::showRows);
        m_edits[field] = edit;
    }
    m_group->addLabel(RightColumn.labelX, rowTop(0), RightColumn.valueX - RightColumn.labelX, Style::ButtonHeight,
                      QStringLiteral("DHCP"));
    m_dhcp = new ChoiceGroup(m_group, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                             {{QStringLiteral("Dynamic"), QStringLiteral("lanDynamic"), QString()},
                              {QStringLiteral("Static IP"), QStringLiteral("lanStatic"), QString()}});
    m_dhcp->place(RightColumn.valueX, rowTop(0), (RightColumn.valueWidth - Style::Gap) / 2, Style::ButtonHeight);
    connect(m_dhcp, &ChoiceGroup::clicked, this, [this](int index) {
        if (index != m_dhcp->chosen())
            onDhcpBnClicked();
    });
}

void ethScreen::buildReadouts() {
    const auto readout = [this](const PageGroup::Column& column, int row, const QString& label, const QString& name,
                                int width) {
        m_group->addLabel(column.labelX, rowTop(row), column.valueX - column.labelX, Style::EntryHeight, label);
        QLabel* value = m_group->addLabel(column.valueX, rowTop(row), width, Style::EntryHeight, QString());
        value->setObjectName(name);
        value->setTextFormat(Qt::PlainText);
        applySheet(value, DYN_VALUE_STYLE);
        return value;
    };
    m_hardwareAddress = readout(RightColumn, 2, QStringLiteral("MAC Address"), QStringLiteral("lanHardwareAddress"),
                                RightColumn.valueWidth);
    // A host name may have 64 characters: it gets a line of its own.
    m_hostName = readout(LeftColumn, 3, QStringLiteral("Host Name"), QStringLiteral("lanHostName"),
                         m_group->width() - LeftColumn.valueX - LeftColumn.labelX);
}

void ethScreen::buildButtons() {
    int x = m_group->width() - LeftColumn.labelX - ButtonWidth;
    const auto button = [this, &x](const QString& text, const QString& name) {
        QPushButton* made = makeButton(m_group, text, name);
        made->setGeometry(x, ButtonTop, ButtonWidth, Style::ButtonHeight);
        x -= ButtonWidth + Style::Gap;
        return made;
    };
    connect(button(QStringLiteral("Back"), QStringLiteral("lanBack")), &QPushButton::clicked, this, &ethScreen::back);
    x = LeftColumn.valueX;
    m_apply = button(QStringLiteral("Applay Changes"), QStringLiteral("lanApply"));
    x = LeftColumn.valueX + ButtonWidth + Style::Gap;
    m_cancel = button(QStringLiteral("Cancel"), QStringLiteral("lanCancel"));
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
    m_hostName->setText(m_found.hostName);
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
    }
    m_dhcp->choose(isDynamic() ? Dynamic : Static);
    updateApplyCancel();
}

void ethScreen::updateApplyCancel() {
    m_apply->setEnabled(hasEdits());
    m_cancel->setEnabled(hasEdits());
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
