#include "portable/screens/sweep/sweeppage.h"

#include "platform/logger.h"
#include "portable/fields/enablebox.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/sweep/sweepdrawing.h"
#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/checkrow.h"
#include "portable/widgets/choicegroup.h"
#include "portable/widgets/entry.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vklineedit.h"

#include <QIcon>
#include <QPushButton>

namespace Kavor::HandheldGui {

const SweepKind FrequencySweep{modulation(FRSW_MOD_BIT),
                               "frsw",
                               "Frequency",
                               "Power:",
                               "Sweep Power",
                               "Frequency modulation",
                               ValueField::Kind::Frequency,
                               ValueField::Kind::Power,
                               DeviceValueId::FrswStart,
                               DeviceValueId::FrswStop,
                               DeviceValueId::FrswSteps,
                               DeviceValueId::FrswTime,
                               DeviceValueId::Power,
                               &ChannelRecord::frswTotalTime,
                               &ChannelRecord::frswDirection,
                               &EventHandler::setDirFRSW};

const SweepKind PowerSweep{modulation(PRSW_MOD_BIT),
                           "prsw",
                           "Power",
                           "Frequency:",
                           "Sweep Frequency",
                           "Power modulation",
                           ValueField::Kind::Power,
                           ValueField::Kind::Frequency,
                           DeviceValueId::PrswStart,
                           DeviceValueId::PrswStop,
                           DeviceValueId::PrswSteps,
                           DeviceValueId::PrswTime,
                           DeviceValueId::Frequency,
                           &ChannelRecord::prswTotalTime,
                           &ChannelRecord::prswDirection,
                           &EventHandler::setDirPRSW};

namespace {

constexpr PageGroup::Column LeftColumn{24, 160, 264, 112};
constexpr PageGroup::Column RightColumn{668, 812, 268, 116};
constexpr int FirstRow = 16;
constexpr int LockX = 564;
constexpr int LockSize = Style::ButtonHeight;
constexpr int DividerX = 652;
constexpr int DirectionWidth = 192;
constexpr int RowCount = 5;

constexpr int rowTop(int row) {
    return FirstRow + row * Style::RowPitch;
}

ValueLimits inNanoseconds(const ValueLimits& seconds) {
    return {secondsToNanoseconds(seconds.maximum), secondsToNanoseconds(seconds.minimum)};
}

} // namespace

SweepPage::SweepPage(QWidget* parent, PanelHost& host, const SweepKind& kind, const QRect& place)
    : QWidget(parent),
      m_host(host),
      m_handler(host.handler()),
      m_kind(kind),
      m_group(new PageGroup(this, QString(), QRect(QPoint(0, 0), place.size()))),
      m_drawing(new SweepDrawing(parent)) {
    setGeometry(place);
    auto* box = new CheckRow(m_group, QStringLiteral("Enable:"), LeftColumn.valueX - LeftColumn.labelX);
    box->setObjectName(QString::fromLatin1(m_kind.prefix) + QStringLiteral("Enable"));
    box->move(LeftColumn.labelX, rowTop(0));
    m_enable = new EnableBox(m_host, box, m_kind.bit, QStringLiteral("sweepScreen::"), QString());
    m_drawing->setObjectName(QString::fromLatin1(m_kind.prefix) + QStringLiteral("Drawing"));
    m_group->addLine({DividerX, FirstRow, 1, rowTop(RowCount) - Style::Gap - FirstRow});
    buildEntries();
    buildUnits();
    buildLocks();
    buildDirection();
    setStopIsEntered(true);
}

ValueField SweepPage::valueField(ValueField::Kind kind, const ValueModel& model) const {
    ValueField field;
    field.kind = kind;
    field.model = model;
    field.timeUnits = 4;
    if (kind == ValueField::Kind::Power)
        field.decimals = 2;
    if (kind == ValueField::Kind::Number) {
        field.whole = true;
        field.rangeText = QStringLiteral("Steps Range %1 to %2");
    }
    return field;
}

ValueModel SweepPage::plannedModel(SweepField field, const std::function<double()>& value,
                                   const std::function<ValueLimits()>& limits) {
    return {value, limits, [this, field](double entered) {
                return carryOut(field, entered);
            }};
}

void SweepPage::buildEntries() {
    struct Row {
        Entry entry;
        const PageGroup::Column& column;
        int row;
        QString label;
        const char* name;
        QString title;
        ValueField field;
    };
    const QString quantity = QString::fromLatin1(m_kind.quantity);
    const auto device = [this](SweepField field) {
        const DeviceValueId id = idOf(field);
        ValueModel model = plannedModel(
            field, [this, id] { return m_handler.cachedValue(id); }, [this, id] { return m_handler.cachedLimits(id); });
        model.round = [this, id](double value) {
            return m_handler.roundedToWire(id, value);
        };
        return model;
    };
    // A step in dB is no level: it has a value of its own kind, shown as finely as the power's command goes.
    ValueField size = valueField(m_kind.kind == ValueField::Kind::Frequency ? m_kind.kind : ValueField::Kind::Number,
                                 plannedModel(
                                     SweepField::StepSize, [this] { return values().stepSize(); },
                                     [] {
                                         return ValueLimits{0, 0};
                                     }));
    size.whole = false;
    size.decimals = 2;
    size.mostDecimals = 4;

    const std::vector<Row> rows{
        {Start, LeftColumn, 1, "Start:", "Start", "Start " + quantity,
         valueField(m_kind.kind, device(SweepField::Start))},
        {Stop, LeftColumn, 2, "Stop:", "Stop", "Stop " + quantity, valueField(m_kind.kind, device(SweepField::Stop))},
        {StepSize, LeftColumn, 3, "Step Size:", "StepSize", "Step Size", size},
        {Steps, LeftColumn, 4, "Steps:", "Steps", "Steps",
         valueField(ValueField::Kind::Number, device(SweepField::Steps))},
        {TotalTime, RightColumn, 1, "Total Time:", "TotalTime", "Total Time",
         valueField(ValueField::Kind::Time, plannedModel(
                                                SweepField::TotalTime, [this] { return values().totalTime(); },
                                                [this] { return totalTimeLimits(); }))},
        {StepTime, RightColumn, 2, "Step Time:", "StepTime", "Step Time",
         valueField(ValueField::Kind::Time, device(SweepField::StepTime))},
        {Fixed, RightColumn, 3, QString::fromLatin1(m_kind.fixedLabel), "Fixed", QString::fromLatin1(m_kind.fixedTitle),
         valueField(m_kind.fixedKind, ValueModel::device(m_handler, m_kind.fixed))},
    };
    for (const Row& row : rows) {
        m_fields[row.entry] = addValueField(
            *m_group, m_host, row.column, rowTop(row.row),
            {row.label, QString::fromLatin1(m_kind.prefix) + QString::fromLatin1(row.name), row.title}, row.field);
        connect(m_fields[row.entry].entry, &ValueEntry::settled, this, &SweepPage::reload);
    }
    if (m_kind.kind == ValueField::Kind::Power)
        m_fields[StepSize].edit->setUnitNames({QStringLiteral("dB")});
}

/// A level has its unit beside it as text: there is none other to choose from.
void SweepPage::buildUnits() {
    const auto unit = [this](Entry entry, const PageGroup::Column& column, int row, const QString& text) {
        if (!m_fields[entry].unit)
            m_group->addLabel(column.valueX + column.valueWidth + Style::Gap + 2, rowTop(row), 64, Style::EntryHeight,
                              text);
    };
    const QString dBm = QStringLiteral("dBm");
    unit(Start, LeftColumn, 1, dBm);
    unit(Stop, LeftColumn, 2, dBm);
    unit(StepSize, LeftColumn, 3, QStringLiteral("dB"));
    unit(Fixed, RightColumn, 3, dBm);
}

void SweepPage::buildLocks() {
    // A bracket from the two rows that the locks couple.
    const int unitEnd =
        LeftColumn.valueX + LeftColumn.valueWidth + Style::Gap + (m_fields[Stop].unit ? LeftColumn.unitWidth : 68);
    for (const int row : {2, 3})
        m_group->addLine({unitEnd, rowTop(row) + LockSize / 2 - 1, LockX - unitEnd, 2});
    m_group->addLine({LockX + LockSize / 2 - 1, rowTop(2) + LockSize, 2, Style::Gap});

    const auto lock = [this](const char* name, int row) {
        auto* button = new QPushButton(m_group);
        button->setObjectName(QString::fromLatin1(m_kind.prefix) + QString::fromLatin1(name));
        button->setGeometry(LockX, rowTop(row), LockSize, LockSize);
        button->setIconSize(QSize(40, 40));
        button->setFocusPolicy(Qt::NoFocus);
        button->setStyleSheet(PUSH_BN_STYLE);
        connect(button, &QPushButton::clicked, this, [this] { setStopIsEntered(!m_stopIsEntered); });
        return button;
    };
    m_stopLock = lock("StopLock", 2);
    m_sizeLock = lock("SizeLock", 3);
}

void SweepPage::buildDirection() {
    m_group->addLabel(RightColumn.labelX, rowTop(0), RightColumn.valueX - RightColumn.labelX, Style::ButtonHeight,
                      QStringLiteral("Direction:"));
    const QString prefix = QString::fromLatin1(m_kind.prefix);
    m_direction = new ChoiceGroup(
        m_group, PRESSED_WIDGET_BTN_STYLE, UNPRESSED_WIDGET_BTN_STYLE,
        {{QStringLiteral("Normal"), prefix + QStringLiteral("Normal"), QString(), pictureOf(LineIcon::SweepUp)},
         {QStringLiteral("UpDown"), prefix + QStringLiteral("UpDown"), QString(), pictureOf(LineIcon::SweepUpDown)}});
    m_direction->followModule();
    m_direction->place(RightColumn.valueX, rowTop(0), DirectionWidth, Style::ButtonHeight);
    connect(m_direction, &ChoiceGroup::asked, this, &SweepPage::chooseDirection);

    // Marks a planned function; nothing listens to it yet.
    auto* exportButton = new QPushButton(QStringLiteral("Export to List"), m_group);
    exportButton->setObjectName(prefix + QStringLiteral("Export"));
    exportButton->setGeometry(RightColumn.valueX, rowTop(4), 2 * DirectionWidth + Style::Gap, Style::ButtonHeight);
    exportButton->setProperty("quiet", true);
    exportButton->setFocusPolicy(Qt::NoFocus);
    exportButton->setStyleSheet(PUSH_BN_STYLE);
    connect(exportButton, &QPushButton::clicked, this, &SweepPage::exportToList);
}

void SweepPage::setStopIsEntered(bool stopIsEntered) {
    m_stopIsEntered = stopIsEntered;
    m_size.reset();
    const QIcon locked(QStringLiteral(":/lock.png"));
    const QIcon unlocked(QStringLiteral(":/unlock.png"));
    m_stopLock->setIcon(stopIsEntered ? unlocked : locked);
    m_sizeLock->setIcon(stopIsEntered ? locked : unlocked);
    entry(Stop).setCalculated(!stopIsEntered);
    entry(StepSize).setCalculated(stopIsEntered);
}

void SweepPage::reload() {
    followSize();
    m_enable->setFromConfig();
    for (const BoundField& field : m_fields)
        field.entry->reload();
    const std::string word = recordText(m_handler.snapshot().*m_kind.direction);
    m_direction->choose(word == SweepDirectionToString[SweepDirection::upDown] ? SweepDirection::upDown
                                                                               : SweepDirection::normal);
    showDrawing();
}

/// From what the module holds, so that it is the sweep that would run.
void SweepPage::showDrawing() {
    const SweepValues held = heldValues();
    SweepDrawing::Sweep sweep;
    sweep.start = held.start;
    sweep.stop = held.stop;
    sweep.steps = held.steps;
    sweep.stepTime = held.stepTime;
    sweep.isFrequency = m_kind.kind == ValueField::Kind::Frequency;
    sweep.upDown = m_direction->chosen() == SweepDirection::upDown;
    sweep.runs = m_handler.snapshot().*m_kind.running == 1;
    m_drawing->showSweep(sweep);
}

void SweepPage::chooseDirection(int index) {
    if ((m_handler.*m_kind.setDirection)(static_cast<SweepDirection>(index)) != 0)
        showCommandFailure(m_host);
    reload();
}

void SweepPage::run(bool on) {
    const ActionGate& gate = ActionGate::panel();
    const ChannelRecord& record = m_handler.snapshot();
    const bool running = on ? record.*m_kind.running == 1 : (m_handler.mayRun() & m_kind.bit) != 0;
    const bool enabled = (record.modulationEnable & m_kind.bit) != 0;
    // What runs is stopped, enabled or not: another client may have started it.
    const bool due = on ? enabled && !running && gate.maySwitchOn() : running && gate.mayStop();
    if (!due)
        return;
    VELDA_LOG("screens", QtInfoMsg, "%s Modulation checked", m_kind.startName);
    if ((m_handler.*m_kind.setState)(on ? OnOff::on : OnOff::off) != 0)
        showCommandFailure(m_host);
}

SweepValues SweepPage::heldValues() const {
    return {m_handler.cachedValue(m_kind.start), m_handler.cachedValue(m_kind.stop),
            m_handler.cachedValue(m_kind.steps), m_handler.cachedValue(m_kind.time)};
}

SweepValues SweepPage::values() const {
    SweepValues now = heldValues();
    now.enteredSize = m_size;
    return now;
}

/// A step size that was entered is the page's own as long as nobody else changes what it was made for.
void SweepPage::followSize() {
    const SweepValues now = heldValues();
    const bool same = now.start == m_sizeBasis.start && now.stop == m_sizeBasis.stop && now.steps == m_sizeBasis.steps;
    if (!same)
        m_size.reset();
}

ValueLimits SweepPage::totalTimeLimits() const {
    return inNanoseconds(m_handler.snapshot().*m_kind.totalTime);
}

DeviceValueId SweepPage::idOf(SweepField field) const {
    switch (field) {
    case SweepField::Start:
        return m_kind.start;
    case SweepField::Steps:
        return m_kind.steps;
    case SweepField::StepTime:
    case SweepField::TotalTime:
        return m_kind.time;
    case SweepField::Stop:
    case SweepField::StepSize:
        break;
    }
    return m_kind.stop;
}

EntryResult SweepPage::carryOut(SweepField field, double value) {
    const SweepLimits limits{m_handler.cachedLimits(m_kind.stop), m_handler.cachedLimits(m_kind.time),
                             totalTimeLimits()};
    const SweepPlan plan = planSweep(field, value, m_stopIsEntered, values(), limits,
                                     [this](SweepField of, double v) { return m_handler.roundedToWire(idOf(of), v); });
    if (plan.refusal != SweepRefusal::None) {
        tell(plan.refusal);
        return EntryResult::Refused;
    }
    if (field == SweepField::StepSize)
        m_size = value;
    EntryResult result = EntryResult::Taken;
    for (const auto& [target, number] : plan.sends) {
        if (result == EntryResult::Taken && m_handler.setDeviceValue(idOf(target), number) != 0)
            result = EntryResult::Failed;
    }
    m_sizeBasis = heldValues(); // what changed was changed here
    return result;
}

void SweepPage::tell(SweepRefusal refusal) {
    const auto timeRange = [this](const ValueLimits& limits, Entry named) {
        normalizeTimeRange(m_host.toast(), limits.minimum, limits.maximum, entry(named).title());
    };
    const ValueLimits stop = m_handler.cachedLimits(m_kind.stop);
    switch (refusal) {
    case SweepRefusal::None:
        break;
    case SweepRefusal::StartEqualsStop:
        showToast(m_host, QStringLiteral("start equal to stop"));
        break;
    case SweepRefusal::StopEqualsStart:
        showToast(m_host, QStringLiteral("Stop equal to start"));
        break;
    case SweepRefusal::StopRange:
        if (m_kind.kind == ValueField::Kind::Frequency)
            normalizeFreqRange(m_host.toast(), stop.minimum, stop.maximum, entry(Stop).title());
        else
            normalizePowerRange(m_host.toast(), stop.minimum, stop.maximum, entry(Stop).title());
        break;
    case SweepRefusal::StepTimeRange:
        timeRange(m_handler.cachedLimits(m_kind.time), StepTime);
        break;
    case SweepRefusal::TotalTimeRange:
        timeRange(totalTimeLimits(), TotalTime);
        break;
    }
}

} // namespace Kavor::HandheldGui
