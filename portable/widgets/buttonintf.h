#pragma once

#include "portable/widgets/state.h"

#include <QPushButton>
#include <vector>

namespace Kavor::HandheldGui {

/// A button that stands for screens: it carries the states for which it shows its pressed style. GUI thread.
class IntfButton : public QPushButton {
    Q_OBJECT

public:
    /// width and height in pixels become the maximum and base size.
    IntfButton(QWidget* parent, const std::vector<STATE>& states, const QString& text, int width, int height);

    const std::vector<STATE>& states() const { return m_states; }

    /// Pressed style when the state is in the list, unpressed otherwise (also when the list is empty).
    void toggleButton(STATE state);

protected:
    /// The pair of style sheets to move between.
    void setStyles(const QString& pressed, const QString& unpressed);

private:
    std::vector<STATE> m_states;
    QString m_pressed;
    QString m_unpressed;
};

/// The modulation tabs of the CW screen: another pair of styles, and the focus policy is left alone.
class IntfButtonMod : public IntfButton {
    Q_OBJECT

public:
    IntfButtonMod(QWidget* parent, const std::vector<STATE>& states, const QString& text, int width, int height);

    /// A tick before the words: what the tab stands for is enabled.
    void setTicked(bool ticked);

private:
    void showTick();

    bool m_ticked = false;
};

} // namespace Kavor::HandheldGui
