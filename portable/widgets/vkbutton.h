#pragma once

#include <QPushButton>

namespace Kavor::HandheldGui {

/// A key of the on-screen keyboard. It is pressed by mouse or touch, acts when it is let go while the finger is still
/// on it, and paints itself, so that a press is seen with the next frame. It never takes the focus. GUI thread.
class VKButton : public QPushButton {
    Q_OBJECT

public:
    enum class Look { Character, Function, Unit, Escape, Enter };

    VKButton(QWidget* parent, Look look);

    /// What is painted where that is not text(), which is what the key types.
    void setCaption(const QString& caption);
    QString caption() const { return m_caption.isEmpty() ? text() : m_caption; }

    /// What the caption is painted in.
    QFont captionFont() const;

    /// Marks the key that stands for the present state: the field's unit, shift.
    void setChosen(bool chosen);
    bool isChosen() const { return m_chosen; }

    /// True while the key shows its pressed look.
    bool isPressedLook() const { return m_pressedLook; }

public slots:
    void onPress();
    void onRelease();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Look m_look;
    QString m_caption;
    bool m_chosen = false;
    bool m_pressedLook = false;
};

} // namespace Kavor::HandheldGui
