#pragma once

#include <QObject>

class QCheckBox;

namespace Kavor::HandheldGui {

class PanelHost;

/// What every "Enable ..." check box of the panel does: it sets one bit of the module's enable mask, puts itself right
/// when the combination is refused or the module did not take it, and otherwise follows the cached mask. GUI thread.
class EnableBox : public QObject {
    Q_OBJECT

public:
    /// bit: the modEnableBitMask bit. The log lines are logPrefix, logName and "Checkbox is Checked!" in a row.
    EnableBox(PanelHost& host, QCheckBox* box, unsigned bit, const QString& logPrefix, const QString& logName);

    QCheckBox* box() const { return m_box; }
    unsigned bit() const { return m_bit; }
    bool isChecked() const;

    /// Shows the cached mask's bit; nothing is sent.
    void setFromConfig();

    /// Acts on a Qt check state, as the box's own change does.
    void onStateChanged(int state);

private:
    void switchOn();
    void switchOff();
    void check(bool wanted);

    PanelHost& m_host;
    QCheckBox* m_box;
    unsigned m_bit;
    QString m_logPrefix;
    QString m_logName;
};

} // namespace Kavor::HandheldGui
