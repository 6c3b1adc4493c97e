#pragma once

#include <QObject>

class QCheckBox;

namespace Kavor::HandheldGui {

class PanelHost;

/// What every "Enable ..." check box of the panel does: it sets one bit of the module's enable mask, takes itself back
/// when the combination is refused, tells when the module did not take it, and otherwise follows the cached mask. It is
/// locked while anything runs or is being started. GUI thread.
class EnableBox : public QObject {
    Q_OBJECT

public:
    /// bit: the modEnableBitMask bit. The log lines are logPrefix, logName and "Checkbox is Checked!" in a row.
    EnableBox(PanelHost& host, QCheckBox* box, unsigned bit, const QString& logPrefix, const QString& logName);

    QCheckBox* box() const { return m_box; }
    unsigned bit() const { return m_bit; }
    /// Shows the cached mask's bit and whether the box can be touched; nothing is sent. What was asked of the box and
    /// has not been done yet stays on show.
    void setFromConfig();

    /// Acts on a Qt check state, as the box's own change does.
    void onStateChanged(int state);

private:
    void switchOn();
    void switchOff();
    void check(bool wanted);
    bool isEnabledOnModule() const;

    PanelHost& m_host;
    QCheckBox* m_box;
    unsigned m_bit;
    QString m_logPrefix;
    QString m_logName;
    bool m_takesBack = false; ///< the combination was refused, the box unchecks itself in a moment
};

} // namespace Kavor::HandheldGui
