#pragma once

#include <QObject>

namespace Kavor::HandheldGui {

/// How far what the screens show of the module can be trusted. One for the whole panel: every readout asks it for its
/// colour. GUI thread.
class Freshness : public QObject {
    Q_OBJECT

public:
    enum State {
        Current,
        Stale,  ///< the module cannot be reached: its last values are shown grey
        Unknown ///< no record was ever read: dashes take the place of values
    };

    static Freshness& panel();

    State state() const { return m_state; }
    bool isStale() const { return m_state != Current; }
    bool isKnown() const { return m_state != Unknown; }

    void set(State state);

    /// The text of a readout: itself, or dashes.
    QString shown(const QString& text) const;

signals:
    void changed();

private:
    State m_state = Current;
};

} // namespace Kavor::HandheldGui
