#include "portable/widgets/actiongate.h"

#include "portable/widgets/dialogs.h"
#include "portable/widgets/pendingmark.h"

#include <QCoreApplication>
#include <QDialog>
#include <QWidget>
#include <algorithm>
#include <utility>

namespace Kavor::HandheldGui {

namespace {

bool isOff(ActionGate::Kind kind) {
    return kind == ActionGate::Kind::Off || kind == ActionGate::Kind::OffAll;
}

} // namespace

/// What has happened since the action that runs began.
struct ActionGate::Running {
    Kind kind;
    bool offAsked = false;
    bool offAllAsked = false;
    bool timedOut = false;
};

ActionGate& ActionGate::panel() {
    static QPointer<ActionGate> gate;
    if (!gate)
        gate = new ActionGate(QCoreApplication::instance());
    return *gate;
}

ActionGate::ActionGate(QObject* parent) : QObject(parent) {
    m_pendingTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_pendingTimer, &QTimer::timeout, this, &ActionGate::showPending);
}

void ActionGate::ask(QWidget* control, Action action, Kind kind) {
    Item item{control, std::move(action), kind, {}};
    item.age.start();
    if (isOff(kind)) {
        const auto switchesOn = [](const Item& held) {
            return held.kind == Kind::SwitchOn;
        };
        m_held.erase(std::remove_if(m_held.begin(), m_held.end(), switchesOn), m_held.end());
        if (m_current) {
            m_current->offAsked = true;
            m_current->offAllAsked = m_current->offAllAsked || kind == Kind::OffAll;
        }
    }
    if (isOpen() && m_held.empty()) {
        carryOut(item);
        return;
    }
    hold(std::move(item));
    // What waits for the event loop to come round goes first.
    while (isOpen() && !m_held.empty())
        serveOne();
    showPending();
}

void ActionGate::hold(Item item) {
    const auto isHeldOff = [](const Item& held) {
        return isOff(held.kind);
    };
    const auto offsEnd = std::find_if_not(m_held.begin(), m_held.end(), isHeldOff);
    if (isOff(item.kind)) {
        const auto same = [&item](const Item& held) {
            return held.control == item.control;
        };
        // The RF output's Off leaves nothing to stop for the others.
        if (std::none_of(m_held.begin(), offsEnd, same))
            m_held.insert(item.kind == Kind::OffAll ? m_held.begin() : offsEnd, std::move(item));
    } else if (m_held.end() - offsEnd < MostHeld) {
        m_held.push_back(std::move(item));
    }
}

void ActionGate::run(const Action& sequence) {
    Item item{nullptr, sequence, Kind::Plain, {}};
    item.age.start();
    carryOut(item);
}

void ActionGate::carryOut(const Item& item) {
    Running running{item.kind};
    Running* const outer = std::exchange(m_current, &running);
    m_underWay.push_back(&item);
    showPending();
    item.action();
    m_underWay.pop_back();
    m_current = outer;
    showPending();
    goOn();
}

// From the event loop, so that an action never runs inside the handling of the press that asked for another one.
void ActionGate::goOn() {
    if (m_goesOn || !isOpen())
        return;
    m_goesOn = true;
    QTimer::singleShot(0, this, &ActionGate::serveNext);
}

void ActionGate::serveNext() {
    m_goesOn = false;
    while (isOpen()) {
        emit settled();
        // The others come after the next look at the record.
        if (!isOpen() || m_held.empty() || serveOne())
            break;
    }
    showPending();
}

bool ActionGate::serveOne() {
    const Item item = std::move(m_held.front());
    m_held.pop_front();
    if (!canBeTouched(item))
        return false;
    carryOut(item);
    return true;
}

bool ActionGate::canBeTouched(const Item& item) {
    if (!item.control)
        return false;
    const QWidget* dialog = DialogRunner::topmost();
    const bool covered = dialog && !dialog->isAncestorOf(item.control);
    return isOff(item.kind) || (item.control->isVisible() && item.control->isEnabled() && !covered);
}

bool ActionGate::isAsked(const QWidget* control) const {
    const auto sameControl = [control](const QWidget* other) {
        return other == control;
    };
    return std::any_of(m_held.begin(), m_held.end(), [&](const Item& item) { return sameControl(item.control); }) ||
           std::any_of(m_underWay.begin(), m_underWay.end(),
                       [&](const Item* item) { return sameControl(item->control); });
}

bool ActionGate::mayGoOn() const {
    return !m_current || isOff(m_current->kind) || !m_current->timedOut;
}

bool ActionGate::maySwitchOn() const {
    return mayGoOn() && !(m_current && m_current->offAsked);
}

bool ActionGate::mayStop() const {
    return mayGoOn() && !isOvertaken();
}

bool ActionGate::isOvertaken() const {
    return m_current && m_current->offAllAsked;
}

void ActionGate::setWaiting(bool waiting) {
    m_waiting = waiting;
    goOn();
}

void ActionGate::noteTimeout() {
    if (m_current)
        m_current->timedOut = true;
    dropAllButOffs();
}

void ActionGate::dropAllButOffs() {
    m_held.erase(std::remove_if(m_held.begin(), m_held.end(), [](const Item& held) { return !isOff(held.kind); }),
                 m_held.end());
    showPending();
}

void ActionGate::clear() {
    m_held.clear();
    showPending();
}

// Marks what has run or waited for long enough, takes the mark from what does not any more, and comes back for the
// rest.
void ActionGate::showPending() {
    std::vector<QWidget*> pending;
    bool younger = false;
    const auto look = [&](const Item& item) {
        if (!item.control)
            return;
        if (item.age.elapsed() < PendingAfterMs)
            younger = true;
        else if (std::find(pending.begin(), pending.end(), item.control) == pending.end())
            pending.push_back(item.control);
    };
    if (m_current && !m_underWay.empty())
        look(*m_underWay.back());
    std::for_each(m_held.begin(), m_held.end(), look);

    const auto gone = [&pending](const QPointer<PendingMark>& mark) {
        const bool stays = mark && std::find(pending.begin(), pending.end(), mark->parentWidget()) != pending.end();
        if (!stays)
            delete mark.data();
        return !stays;
    };
    m_marks.erase(std::remove_if(m_marks.begin(), m_marks.end(), gone), m_marks.end());
    for (QWidget* control : pending) {
        const auto marks = [control](const QPointer<PendingMark>& mark) {
            return mark->parentWidget() == control;
        };
        if (std::none_of(m_marks.begin(), m_marks.end(), marks))
            m_marks.emplace_back(new PendingMark(control));
    }
    if (!younger)
        m_pendingTimer.stop();
    else if (!m_pendingTimer.isActive())
        m_pendingTimer.start(PendingAfterMs / 6);
}

ActionGate::DialogTime::DialogTime() : m_outer(std::exchange(panel().m_current, nullptr)) {
    panel().showPending();
    panel().goOn();
}

ActionGate::DialogTime::~DialogTime() {
    panel().m_current = m_outer;
    if (m_outer && !panel().m_underWay.empty())
        panel().m_underWay.back()->age.start(); // the dialog's time was the user's
    panel().showPending();
    panel().goOn();
}

} // namespace Kavor::HandheldGui
