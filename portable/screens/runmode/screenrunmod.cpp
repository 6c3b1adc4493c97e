#include "portable/screens/runmode/screenrunmod.h"

#include "common/instrument/handlerscpi.h"
#include "portable/fields/valueentry.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <cmath>

namespace Kavor::HandheldGui {

/// Buttons and words of a parameter, in the order of the buttons. A word that matches none presses the fallback.
struct runmodeScreen::WordChoice {
    const char* label;
    std::vector<ChoiceGroup::Button> buttons;
    std::vector<const char*> words;
    int fallback;
    char (ChannelRecord::*field)[32];
    void (EventHandler::*setCached)(const char*);
    int (EventHandler::*send)(bool);
};

namespace {

enum SourceButton { Internal, External, Bus };
enum AdvanceButton { Once, Step };
enum SlopeButton { Positive, Negative };
enum RunModeButton { Continuous, Triggered };

constexpr PageGroup::Column EntryColumn{704, 888, 200, 108};
constexpr PageGroup::Column CountColumn{704, 888, 320, 0};
constexpr int ChoiceX = 240;
constexpr int ChoicesWidth = 432;
constexpr int CardTop = 46;
constexpr int CardWidth = 478;
constexpr int CardHeight = 148;
constexpr int TallCardHeight = Style::ContentHeight - CardTop - Style::Gap; ///< with nothing below them
constexpr int GroupHeight = 206;
constexpr int FirstRow = 44;

QPixmap waveBefore(const QPainterPath& before, qreal waveX, int waves, qreal end, QRgb colour) {
    constexpr QSize Size(200, 64);
    constexpr int Period = 36;
    constexpr qreal Height = 23;
    QPainterPath path = before;
    const qreal middle = Size.height() / 2.0;
    path.moveTo(waveX, middle);
    for (int x = 0; x <= waves * Period; ++x)
        path.lineTo(waveX + x, middle - Height * std::sin(x * 2 * M_PI / Period));
    path.lineTo(end, middle);
    QPixmap pixmap(Size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(colour), 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);
    return pixmap;
}

/// A wave that never ends.
QPixmap continuousPicture(QRgb colour) {
    return withGap(waveBefore(QPainterPath(), 4, 5, 184, colour));
}

/// An edge, and a wave that it sets off.
QPixmap triggerPicture(QRgb colour) {
    QPainterPath edge;
    edge.moveTo(12, 54);
    edge.lineTo(32, 54);
    edge.lineTo(32, 10);
    edge.lineTo(44, 10);
    edge.moveTo(25, 38);
    edge.lineTo(32, 28);
    edge.lineTo(39, 38);
    edge.moveTo(46, 32);
    edge.lineTo(60, 32);
    return withGap(waveBefore(edge, 60, 2, 160, colour));
}

} // namespace

const runmodeScreen::WordChoice& runmodeScreen::wordChoice(Parameter parameter) {
    static const WordChoice choices[ParameterCount] = {
        {"Trigger Source:",
         {{"Internal", "sourceTimer", ""}, {"External", "sourceExt", ""}, {"Bus", "sourceBus", ""}},
         {TriggerSourceToString[2], TriggerSourceToString[0], TriggerSourceToString[1]},
         External,
         &ChannelRecord::triggerSource,
         &EventHandler::setCachedTriggerSource,
         &EventHandler::setTriggerSource},
        {"Trigger Advance:",
         {{"Once", "advanceOnce", ""}, {"Step", "advanceStep", ""}},
         {TriggerAdvToString[0], TriggerAdvToString[1]},
         -1,
         &ChannelRecord::triggerAdvance,
         &EventHandler::setCachedTriggerAdvance,
         &EventHandler::setTRGadv},
        {"Trigger Slope:",
         {{"Positive", "slopePositive", "", pictureOf(LineIcon::EdgeRising)},
          {"Negative", "slopeNegative", "", pictureOf(LineIcon::EdgeFalling)}},
         {TriggerEdgeToString[0], TriggerEdgeToString[1]},
         -1,
         &ChannelRecord::triggerEdge,
         &EventHandler::setCachedTriggerEdge,
         &EventHandler::setTRGedge},
    };
    return choices[parameter];
}

runmodeScreen::runmodeScreen(QWidget* parent, std::vector<STATE> states)
    : IGuiScreen(parent, std::move(states)), m_page(makePage(QStringLiteral("pageRunMode"))) {
    buildRunMode();
    buildParameters();
}

void runmodeScreen::buildRunMode() {
    m_runModeGroup = new PageGroup(m_page, QStringLiteral("Run mode Settings"),
                                   QRect(Style::PageMargin, 0, Style::ContentWidth, GroupHeight));
    m_runModeLabel = m_runModeGroup->addLabel(PageGroup::Left.labelX, CardTop, ChoiceX - PageGroup::Left.labelX,
                                              CardHeight, QStringLiteral("Run Mode:"));
    m_runMode =
        new ChoiceGroup(m_runModeGroup, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
                        {{QStringLiteral("Continous"), QStringLiteral("runContinuous"), QString(), continuousPicture},
                         {QStringLiteral("Trigger"), QStringLiteral("runTrigger"), QString(), triggerPicture}});
    m_runMode->followModule();
    for (const int index : {Continuous, Triggered})
        m_runMode->button(index)->setProperty("card", true);
    m_runMode->place(ChoiceX, CardTop, CardWidth, CardHeight);
    connect(m_runMode, &ChoiceGroup::asked, this, [this](int index) {
        if (index == Continuous)
            onContButton();
        else
            onTrigButton();
    });
}

void runmodeScreen::buildParameters() {
    constexpr int top = GroupHeight + Style::Gap;
    m_parameters = new PageGroup(m_page, QStringLiteral("Trigger Parameters"),
                                 QRect(Style::PageMargin, top, Style::ContentWidth, Style::ContentHeight - top));
    for (int i = 0; i < ParameterCount; ++i) {
        const auto parameter = static_cast<Parameter>(i);
        const WordChoice& choice = wordChoice(parameter);
        const int y = FirstRow + i * Style::RowPitch;
        m_parameters->addLabel(PageGroup::Left.labelX, y, ChoiceX - PageGroup::Left.labelX, Style::ButtonHeight,
                               QString::fromLatin1(choice.label));
        m_choices[i] =
            new ChoiceGroup(m_parameters, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE, choice.buttons);
        m_choices[i]->followModule();
        const int count = static_cast<int>(choice.buttons.size());
        m_choices[i]->place(ChoiceX, y, (ChoicesWidth - (count - 1) * Style::Gap) / count, Style::ButtonHeight);
        connect(m_choices[i], &ChoiceGroup::asked, this,
                [this, parameter](int index) { chooseWord(parameter, index); });
    }

    const auto timeEntry = [this](int row, const char* label, const char* name, const char* title, DeviceValueId id) {
        return addValueField(*m_parameters, host(), EntryColumn, FirstRow + row * Style::RowPitch,
                             {QString::fromLatin1(label), QString::fromLatin1(name), QString::fromLatin1(title)},
                             ValueField{ValueField::Kind::Time, ValueModel::device(handler(), id)});
    };
    m_delay = timeEntry(2, "Trigger Delay:", "trigDelay", "Trigger Delay", DeviceValueId::TriggerDelay);
    m_timer = timeEntry(0, "Trigger Timer:", "trigTimer", "Trigger Timer time", DeviceValueId::TriggerTimer);
    ValueField count{ValueField::Kind::Number, ValueModel::device(handler(), DeviceValueId::TriggerCount)};
    count.whole = true;
    count.rangeText = QStringLiteral("Range %1 to %2");
    m_count = addValueField(
        *m_parameters, host(), CountColumn, FirstRow + Style::RowPitch,
        {QStringLiteral("Once Count:"), QStringLiteral("trigCount"), QStringLiteral("Trigger Count")}, count);
}

void runmodeScreen::chooseRunMode(bool continuous) {
    if (handler().setRunMode(continuous) != 0) {
        showCommandFailure(host());
        return;
    }
    showRunMode(continuous);
    showRunModeText(continuous);
}

void runmodeScreen::showRunMode(bool continuous) {
    m_runMode->choose(continuous ? Continuous : Triggered);
    // Without triggers there is nothing below the cards: they take the room.
    const int height = continuous ? TallCardHeight : CardHeight;
    m_parameters->setVisible(!continuous);
    m_runModeGroup->resize(Style::ContentWidth, continuous ? Style::ContentHeight : GroupHeight);
    m_runModeLabel->resize(m_runModeLabel->width(), height);
    m_runMode->place(ChoiceX, CardTop, CardWidth, height);
    host().SetManualBnEnable(!continuous);
    showRows();
}

void runmodeScreen::showRunModeText(bool continuous) {
    m_continuousSeen = continuous;
    if (continuous)
        host().OnRunModeCont();
    else
        host().OnRunModeTrig();
}

void runmodeScreen::chooseWord(Parameter parameter, int button) {
    const WordChoice& choice = wordChoice(parameter);
    (handler().*choice.setCached)(choice.words[static_cast<std::size_t>(button)]);
    if ((handler().*choice.send)(false) != 0) {
        showCommandFailure(host());
        return;
    }
    showWord(parameter);
    showRows();
}

void runmodeScreen::showWord(Parameter parameter) {
    const WordChoice& choice = wordChoice(parameter);
    const std::string word = recordText(handler().snapshot().*choice.field);
    int pressed = choice.fallback;
    for (std::size_t i = 0; i < choice.words.size(); ++i) {
        if (word == choice.words[i])
            pressed = static_cast<int>(i);
    }
    m_choices[parameter]->choose(pressed);
}

void runmodeScreen::showRows() {
    m_timer.setVisible(m_choices[Source]->chosen() == Internal);
    m_count.setVisible(m_choices[Advance]->chosen() == Once);
}

void runmodeScreen::update_from_config(STATE) {
    for (const Parameter parameter : {Source, Advance, Slope})
        showWord(parameter);
    for (const BoundField& row : {m_delay, m_timer, m_count})
        row.entry->reload();
    const bool continuous = handler().snapshot().runMode == 1;
    showRunMode(continuous);
    // The function button has its own word for the run mode, which stays until the module's run mode changes.
    if (m_continuousSeen != continuous)
        showRunModeText(continuous);
}

void runmodeScreen::update_controls(STATE) {}

void runmodeScreen::show() {
    host().setHeaderBar(QStringLiteral("   Run Mode"));
    m_page->show();
}

void runmodeScreen::hide() {
    m_page->hide();
}

} // namespace Kavor::HandheldGui
