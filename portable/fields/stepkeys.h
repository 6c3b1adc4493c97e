#pragma once

#include "values/units.h"

#include <QObject>
#include <QTimer>

class QPushButton;

namespace Kavor::HandheldGui {

class PageGroup;
class PanelHost;
class ValueEntry;

/// What the step keys of a value differ in.
struct StepKind {
    QString name;          ///< of the setting and, with "Down", "Size" and "Up" behind it, of the keys
    QString title;         ///< of the keyboard for the step
    UnitQuantity quantity; ///< Frequency, or Power for steps in dB
    double size;           ///< at first: hertz, or dB
    double least;          ///< bounds of the size, in the same unit
    double most;
};

/// Three keys beside a value: down, the size of a step, up. A step is an entry like any other, from the value that the
/// module holds. Held down, a key repeats: one command at a time, until the finger lifts or slides off, the module
/// refuses, or a limit is reached. The size is kept for each channel. GUI thread.
class StepKeys : public QObject {
    Q_OBJECT

public:
    static constexpr int RepeatAfterMs = 400;
    static constexpr int RepeatEveryMs = 100;

    /// height: of the keys, at y in the group.
    StepKeys(PageGroup& group, PanelHost& host, ValueEntry& entry, const StepKind& kind, int y, int height);

    /// Shows the size of the current channel.
    void reload();

    /// In hertz or dB.
    double size() const { return m_size; }

private:
    QPushButton* addKey(const char* part, int x, int width);
    void connectKey(QPushButton* key, int direction);
    bool step(int direction);
    void repeat();
    void askSize();
    QString setting() const;
    QString text() const;

    PageGroup& m_group;
    PanelHost& m_host;
    ValueEntry& m_entry;
    const StepKind m_kind;
    const int m_y;
    const int m_height;
    QPushButton* m_sizeKey;
    double m_size = 0;
    unsigned m_channel = ~0U;      ///< whose size is shown
    QPushButton* m_held = nullptr; ///< the key under the finger
    int m_direction = 0;           ///< of the key under the finger
    bool m_repeats = false;        ///< it has been held long enough: letting go is no step of its own
    QTimer m_timer;
};

} // namespace Kavor::HandheldGui
