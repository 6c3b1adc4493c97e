#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <deque>
#include <functional>
#include <vector>

class QWidget;

namespace Kavor::HandheldGui {

class PendingMark;

/// The one gate between the fingers and the module. While a command waits for its answer the event loop goes on, so
/// taps come in; what they ask for must neither nest in that wait nor be lost. The gate holds it and does it in its
/// turn.
///
/// It holds actions, never events: presses, releases and looks go on at once, and so does what sends nothing and opens
/// nothing, which is not asked for here. The gate is closed while an action runs or a command waits; a dialog that an
/// action has opened opens it again, for what can be touched beside the dialog. A held action whose control is hidden,
/// disabled or covered by a dialog when its turn comes is dropped, and so is all that waits when a command times out.
///
/// An Off is noticed at once: what is held and would switch something on is dropped, what runs is told not to switch on
/// any more (maySwitchOn()), and the Off goes next. It is never dropped.
///
/// After 300 ms the control of an action that runs or waits carries a mark. One gate for the application; GUI thread.
class ActionGate : public QObject {
    Q_OBJECT

public:
    using Action = std::function<void()>;

    enum class Kind {
        Plain,
        SwitchOn, ///< starts a radiation or a modulation: an Off takes it back
        Off,      ///< stops modulations
        OffAll    ///< switches the RF output off, and with it all modulations
    };

    static constexpr int MostHeld = 8; ///< Offs do not count
    static constexpr int PendingAfterMs = 300;

    static ActionGate& panel();

    /// Does what a touch of the control asks for: at once, before it returns, or when its turn comes. A second Off of
    /// a control whose Off is held already adds nothing.
    void ask(QWidget* control, Action action, Kind kind = Kind::Plain);

    /// Does something that no finger asked for, at once; taps wait meanwhile.
    void run(const Action& sequence);

    /// Nothing runs and no command waits.
    bool isOpen() const { return m_current == nullptr && !m_waiting; }

    /// Open, nothing is held, and what is shown has been compared with the record.
    bool isIdle() const { return isOpen() && m_held.empty() && !m_goesOn; }

    /// An action of the control runs or is held.
    bool isAsked(const QWidget* control) const;

    // What a sequence of commands asks before its next step; outside any action everything may go on.

    /// Nothing has timed out since the action began. An Off always goes on.
    bool mayGoOn() const;
    /// mayGoOn(), and no Off that stops more was asked for since.
    bool mayStop() const;
    /// mayGoOn(), and no Off was asked for since.
    bool maySwitchOn() const;
    /// The RF output's Off was asked for since the action began. It stops all modulations itself.
    bool isOvertaken() const;

    /// A command waits for its answer, or none does any more.
    void setWaiting(bool waiting);
    /// A command got no answer in time.
    void noteTimeout();

    /// Drops what is held but the Offs: it was asked for another channel than it would reach.
    void dropAllButOffs();

    /// Drops all that is held.
    void clear();

private:
    struct Running;

public:
    /// The time of a dialog: the action that has opened it stands still, and the gate is open for what can be touched
    /// beside it.
    class DialogTime {
    public:
        DialogTime();
        ~DialogTime();
        DialogTime(const DialogTime&) = delete;
        DialogTime& operator=(const DialogTime&) = delete;

    private:
        Running* m_outer;
    };

signals:
    /// An action or a wait is over and none follows at once: what is shown can be compared with the record. From the
    /// event loop, and again after a held action was dropped.
    void settled();

private:
    struct Item {
        QPointer<QWidget> control;
        Action action;
        Kind kind;
        mutable QElapsedTimer age; ///< of the waiting, dialogs aside
    };

    explicit ActionGate(QObject* parent);
    void carryOut(const Item& item);
    void goOn();
    void hold(Item item);
    void serveNext();
    bool serveOne(); ///< false when it was dropped
    void showPending();
    static bool canBeTouched(const Item& item);

    std::deque<Item> m_held; ///< the Offs in front
    Running* m_current = nullptr;
    std::vector<const Item*> m_underWay; ///< with those that stand still behind a dialog
    std::vector<QPointer<PendingMark>> m_marks;
    QTimer m_pendingTimer;
    bool m_waiting = false;
    bool m_goesOn = false; ///< serveNext() comes from the event loop
};

} // namespace Kavor::HandheldGui
