#pragma once

#include <QWidget>

class QFrame;
class QLabel;
class QPushButton;

namespace Kavor::HandheldGui {

class ChoiceGroup;

/// The row of global output controls below every page: modulation, manual trigger, RF output. It only shows and hands
/// on presses; the main window acts. GUI thread.
class ControlRow : public QWidget {
    Q_OBJECT

public:
    /// Indexes of the buttons of the two pairs.
    enum Pair { On = 0, Off = 1 };

    explicit ControlRow(QWidget* parent);

    ChoiceGroup& modulation() const { return *m_modulation; }
    ChoiceGroup& rf() const { return *m_rf; }
    QPushButton* trigger() const { return m_trigger; }

    /// Shows the RF output on, with a line over the whole row, or off.
    void setRf(bool on);

    /// The look of the trigger button while a finger holds it down.
    void setTriggerPressed(bool pressed);

private:
    QLabel* addLabel(const QString& text, int x, int width);
    void showRf();

    ChoiceGroup* m_modulation;
    ChoiceGroup* m_rf;
    QPushButton* m_trigger;
    QFrame* m_line;
    QLabel* m_rfLabel;
    bool m_rfOn = false;
};

} // namespace Kavor::HandheldGui
