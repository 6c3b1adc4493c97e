#pragma once

#include "common/instrument/device_values.h"
#include "portable/widgets/entry.h"
#include "values/units.h"

#include <QObject>
#include <functional>

class EventHandler;

namespace Kavor::HandheldGui {

class ComboBox;
class PanelHost;
class ValueEdit;

enum class EntryResult {
    Taken,   ///< the module holds it
    Refused, ///< not sent, and the user has been told why
    Failed   ///< the module did not take it
};

/// Where a value comes from and where an entry goes, in canonical units: hertz, nanoseconds, dBm, degrees, percent.
struct ValueModel {
    std::function<double()> value;
    /// Maximum and minimum, both inclusive; 0 and 0: not known, not checked.
    std::function<ValueLimits()> limits;
    /// Sends a value that has passed the limits.
    std::function<EntryResult(double)> send;
    /// What the module will hold when it is sent a value; it is what the limits are for. None: the value itself.
    std::function<double(double)> round = {};

    /// A device value as it is: rounded to what the wire carries, then set.
    static ValueModel device(EventHandler& handler, DeviceValueId id);
};

/// One editor of a screen bound to one value.
struct ValueField {
    enum class Kind {
        Frequency, ///< with a unit box of one kScale row
        Time,      ///< with a unit box of the time scales
        Power,     ///< dBm, answered with the power range message
        Percent,   ///< this and the next two: bare numbers, answered with rangeText
        Phase,
        Number
    };

    Kind kind = Kind::Number;
    ValueModel model;
    ValueEdit* edit = nullptr;
    ComboBox* unit = nullptr;
    translations row = translations::GHzToHz;
    int timeUnits = 3;         ///< Time: how many units are offered, from ns up
    int decimals = 0;          ///< Power and bare numbers: decimals shown
    int restoredDecimals = -1; ///< Time: fewest decimals of the value that takes a refused one's place; -1: as ever
    int mostDecimals = 0;      ///< bare numbers: shown when the value needs them; no fewer than decimals
    bool namedInRange = true;  ///< not bare numbers: whether the range message names the value
    bool whole = false;        ///< a count; the entry is truncated to a whole number
    QString rangeText = {};    ///< bare numbers: message with %1 and %2 for minimum and maximum
    QString editStyle = {};    ///< style sheet of the editor, the ordinary entry when empty
    QString wrongStyle = {};   ///< style sheet while an out-of-range entry stands in it
};

/// The one path of an entry: number, normalisation and range check, rounding to what the wire carries, setter, the
/// toast when it fails, the editor rewritten from the cache, the status bar. A frequency or
/// a time out of range stays visible in red as long as its message shows; it is never sent. GUI thread.
class ValueEntry : public QObject {
    Q_OBJECT

public:
    ValueEntry(PanelHost& host, const ValueField& field);

    /// Shows the cached value. An entry that is being edited, or stands refused, is left alone.
    void reload();

    /// Takes the editor's text as it stands, in the unit that its box shows. True when the module took it.
    bool enter();

    /// Takes a number in the unit that the unit box shows.
    bool enter(double value);

    /// Takes the value that the module holds, and so much more; in canonical units.
    bool step(double by);

    void setEnabled(bool enabled);
    void setVisible(bool visible);
    /// A calculated value is shown grey and cannot be entered.
    void setCalculated(bool calculated);
    QString title() const;

    /// The editor shows the module's value: no refused entry stands in it and none is being made.
    bool showsModule() const { return !m_refused && !isEditing(); }

signals:
    /// The module took a value that was entered here; the editor shows it.
    void accepted();
    /// Something was sent, whether the module took it or not: what depends on the value may have changed.
    void settled();

private:
    bool normalise(double value, bool isCanonical, double& canonical);
    bool enter(double value, bool isCanonical);
    bool take(double canonical);
    ShownEntry shownFor(double canonical) const;
    bool shows(const ShownEntry& shown) const;
    QString rangeText() const;
    void showWhatIsWrong(double entered);
    void showValue(double canonical);
    void tellRange(const ValueLimits& limits);
    void refuse();
    void clearRefusal();
    void restore();
    void onListClosed();
    void takeRefusedBack();
    bool isEditing() const;

    PanelHost& m_host;
    ValueField m_field;
    bool m_refused = false;
};

} // namespace Kavor::HandheldGui
