#pragma once

#include <QWidget>

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

    /// The look of the trigger button while a finger holds it down.
    void setTriggerPressed(bool pressed);

private:
    void addLabel(const QString& text, int x, int width);

    ChoiceGroup* m_modulation;
    ChoiceGroup* m_rf;
    QPushButton* m_trigger;
};

} // namespace Kavor::HandheldGui
