#include "portable/window/wdgfuncbuttons.h"

#include "common/instrument/handlerscpi.h"
#include "portable/host/panelhost.h"
#include "portable/widgets/buttonintf.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/window/channelkey.h"

#include <QLabel>
#include <QMovie>
#include <QPixmap>
#include <array>

namespace Kavor::HandheldGui {

namespace {

struct FunctionButton {
    const char* text;
    const char* name;
    int width;
    std::vector<STATE> states;
};

const std::vector<FunctionButton>& functionButtons() {
    static const std::vector<FunctionButton> buttons{
        {"CW && Modulation", "funcCw", 385, {STATE_CW, STATE_PATTERN, STATE_PATTERN_FILES}},
        {"Sweep", "funcSweep", 100, {STATE_FRSW, STATE_PRSW}},
        {"List", "funcList", 100, {STATE_LIST}},
        {"Run Mode", "funcRunMode", 145, {STATE_RUNMODE}},
        {"System", "funcSystem", 145, {STATE_SYSTEM}},
        {"About", "funcAbout", 145, {STATE_ABOUT}},
    };
    return buttons;
}

struct BatteryStep {
    int upTo; // percent
    const char* picture;
};

constexpr int EmptyUpTo = 10;
constexpr std::array<BatteryStep, 5> BatterySteps{{{20, ":/Battery1.png"},
                                                   {40, ":/Battery2.png"},
                                                   {60, ":/Battery3.png"},
                                                   {80, ":/Battery4.png"},
                                                   {100, ":/Battery5.png"}}};

} // namespace

FuncButtonWidget::FuncButtonWidget(PanelHost* parent) : QWidget(parent), m_host(parent) {
    setFixedSize(Style::WindowWidth, Style::HeaderRowHeight);
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(
        QStringLiteral("Kavor--HandheldGui--FuncButtonWidget { background-color: %1; }").arg(Style::css(Style::Panel)));
    int x = 0;
    for (const FunctionButton& description : functionButtons()) {
        auto* button = new IntfButton(this, description.states, QString::fromLatin1(description.text),
                                      description.width, Style::HeaderRowHeight);
        button->setObjectName(QString::fromLatin1(description.name));
        button->setGeometry(x, 0, description.width, Style::HeaderRowHeight);
        x += description.width;
        m_buttons.push_back(button);
    }

    m_temperature =
        addPicture(QStringLiteral("temperatureIcon"), {1070, 10, 32, 40}, QStringLiteral(":/Cold_Thermometer.png"));
    m_mark = new QLabel(this);
    m_mark->setObjectName(QStringLiteral("linkLost"));
    m_mark->setGeometry(1020, 8, 129, 44);
    m_mark->setAlignment(Qt::AlignCenter);
    m_mark->setStyleSheet(LINK_LOST_STYLE);
    m_mark->hide();
    m_channel = new ChannelKey(this);
    m_channel->setObjectName(QStringLiteral("funcChannel"));
    m_channel->setGeometry(1020, 0, 132, Style::HeaderRowHeight);
    m_channel->hide();
    m_charging = addPicture(QStringLiteral("chargingIcon"), {1200, 14, 16, 32}, QStringLiteral(":/charging_icon.png"));
    m_battery = addPicture(QStringLiteral("batteryIcon"), {1154, 14, 46, 32}, QStringLiteral(":/Battery5.png"));
    m_percent = new QLabel(QStringLiteral("100%"), this);
    m_percent->setObjectName(QStringLiteral("batteryPercent"));
    m_percent->setGeometry(1216, 10, 64, 40);
    m_percent->setAlignment(Qt::AlignVCenter | Qt::AlignLeft);
    m_percent->setStyleSheet(WIDGET_COMM_STYLE);
    m_lowBattery = new QMovie(QStringLiteral(":/lowBat.gif"), QByteArray(), this);
    m_lowBattery->setScaledSize(m_battery->pixmap(Qt::ReturnByValue).size());
}

QLabel* FuncButtonWidget::addPicture(const QString& name, const QRect& geometry, const QString& resource) {
    auto* label = new QLabel(this);
    label->setObjectName(name);
    label->setGeometry(geometry);
    label->setAlignment(Qt::AlignCenter);
    setPicture(label, resource);
    return label;
}

/// As large as the label's place lets it be.
void FuncButtonWidget::setPicture(QLabel* label, const QString& resource) {
    label->setProperty("picture", resource);
    const QPixmap picture(resource);
    const bool fits = picture.width() <= label->width();
    label->setPixmap(fits ? picture : picture.scaledToWidth(label->width(), Qt::SmoothTransformation));
}

void FuncButtonWidget::update_static_controls(STATE state) {
    for (IntfButton* button : m_buttons)
        button->toggleButton(state);
}

void FuncButtonWidget::setBatteryIcon(const QString& resource) {
    m_lowBattery->stop();
    setPicture(m_battery, resource);
}

void FuncButtonWidget::set_battery_level(unsigned short percent) {
    const ChannelRecord& record = m_host->handler().snapshot();
    const bool discharging = record.batteryCurrent < 0;
    const bool known = percent <= 100;
    m_battery->setVisible(known);
    m_percent->setVisible(known);
    m_charging->setVisible(known && !discharging);
    if (!discharging)
        setBatteryIcon(QStringLiteral(":/Battery0.png"));
    m_percent->setText(QString::number(percent) + QLatin1Char('%'));

    const bool roseOverEmpty = m_lastPercent <= EmptyUpTo && percent > EmptyUpTo;
    if (!discharging || roseOverEmpty || percent > record.lowBatteryThreshold)
        m_warnedSinceRise = false;
    m_lastPercent = percent;
    bool warn = false;
    if (discharging && percent <= record.lowBatteryThreshold) {
        m_battery->setAttribute(Qt::WA_NoSystemBackground);
        m_battery->setProperty("picture", QStringLiteral(":/lowBat.gif"));
        m_battery->setMovie(m_lowBattery);
        m_lowBattery->start();
        warn = m_warnArmed && !m_warnedSinceRise;
        m_warnArmed = false;
    }
    if (percent > EmptyUpTo) {
        for (const BatteryStep& step : BatterySteps) {
            if (percent <= step.upTo) {
                setBatteryIcon(QString::fromLatin1(step.picture));
                m_warnArmed = true;
                break;
            }
        }
    }
    if (warn) {
        m_warnedSinceRise = true;
        m_host->reportWhenFree(QStringLiteral("Warning: Low Battery!!"));
    }
}

void FuncButtonWidget::set_temp_level(unsigned char) {}

void FuncButtonWidget::setMark(const QString& words) {
    m_mark->setText(words);
    m_channel->setMark(words);
    showMark();
}

void FuncButtonWidget::showChannel(unsigned channels, unsigned current, bool anyRadiates, bool open) {
    m_several = channels > 1;
    m_channel->setText(QStringLiteral("CH %1").arg(current + 1));
    m_channel->setLook(anyRadiates, open);
    showMark();
}

void FuncButtonWidget::showMark() {
    const bool lost = !m_mark->text().isEmpty();
    m_channel->setVisible(m_several);
    m_mark->setVisible(lost && !m_several);
    m_temperature->setVisible(!lost && !m_several);
}

} // namespace Kavor::HandheldGui
