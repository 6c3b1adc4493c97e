#pragma once

#include "common/instrument/handlerscpi.h"
#include "portable/fields/valuefield.h"
#include "portable/screens/sweep/sweepplan.h"

#include <QWidget>
#include <array>

class QPushButton;

namespace Kavor::HandheldGui {

class ChoiceGroup;
class EnableBox;
class PanelHost;
class SweepDrawing;

/// What the two sweeps differ in.
struct SweepKind : Modulation {
    const char* prefix;     ///< of the object names
    const char* quantity;   ///< in the titles of start and stop
    const char* fixedLabel; ///< the quantity that does not sweep: its label and title
    const char* fixedTitle;
    const char* startName; ///< in the log line of start and stop
    ValueField::Kind kind; ///< of start, stop and step size
    ValueField::Kind fixedKind;
    DeviceValueId start;
    DeviceValueId stop;
    DeviceValueId steps;
    DeviceValueId time;
    DeviceValueId fixed;
    ValueLimits ChannelRecord::*totalTime; ///< seconds
    char (ChannelRecord::*direction)[32];
    int (EventHandler::*setDirection)(SweepDirection);
};

extern const SweepKind FrequencySweep;
extern const SweepKind PowerSweep;

/// One page of the sweep screen. Its entries follow sweepplan.h; after each one the whole page is shown anew from the
/// cache. GUI thread.
class SweepPage : public QWidget {
    Q_OBJECT

public:
    enum Entry { Start, Stop, StepSize, Steps, TotalTime, StepTime, Fixed, EntryCount };

    /// Fills the given place of the parent.
    SweepPage(QWidget* parent, PanelHost& host, const SweepKind& kind, const QRect& place);

    /// Reloads every control from the cache.
    void reload();

    ValueEntry& entry(Entry which) const { return *m_fields[which].entry; }
    EnableBox& enable() const { return *m_enable; }

    /// What the page draws of its sweep, for the screen to place.
    SweepDrawing& drawing() const { return *m_drawing; }

    /// Which of stop and step size the user enters; the other one is calculated and locked.
    void setStopIsEntered(bool stopIsEntered);
    bool stopIsEntered() const { return m_stopIsEntered; }

    /// Starts the sweep if it is enabled and does not run yet, or stops it if it runs.
    void run(bool on);
    void chooseDirection(int index);

signals:
    void exportToList();

private:
    void buildEntries();
    void buildLocks();
    void buildUnits();
    void buildDirection();
    void showDrawing();
    ValueField valueField(ValueField::Kind kind, const ValueModel& model) const;
    ValueModel plannedModel(SweepField field, const std::function<double()>& value,
                            const std::function<ValueLimits()>& limits);
    SweepValues heldValues() const;
    SweepValues values() const;
    void followSize();
    ValueLimits totalTimeLimits() const;
    DeviceValueId idOf(SweepField field) const;
    EntryResult carryOut(SweepField field, double value);
    void tell(SweepRefusal refusal);

    PanelHost& m_host;
    EventHandler& m_handler;
    const SweepKind& m_kind;
    PageGroup* m_group;
    EnableBox* m_enable = nullptr;
    std::array<BoundField, EntryCount> m_fields{};
    QPushButton* m_stopLock = nullptr;
    QPushButton* m_sizeLock = nullptr;
    ChoiceGroup* m_direction = nullptr;
    SweepDrawing* m_drawing;
    bool m_stopIsEntered = true;
    std::optional<double> m_size; ///< the step size that was entered
    SweepValues m_sizeBasis;      ///< what the module held after the last entry
};

} // namespace Kavor::HandheldGui
