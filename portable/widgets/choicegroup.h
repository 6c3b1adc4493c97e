#pragma once

#include <QObject>
#include <QPixmap>
#include <QString>
#include <functional>
#include <vector>

class QPushButton;
class QWidget;

namespace Kavor::HandheldGui {

/// A choice of two or three buttons of which one carries the pressed style. It only shows: pressing a button emits its
/// signals, and the look moves when choose() is called, so a refused command leaves it as it was. GUI thread.
class ChoiceGroup : public QObject {
    Q_OBJECT

public:
    /// A picture drawn in a colour.
    using Picture = std::function<QPixmap(QRgb)>;

    /// One button of the group. tone: "rf", "off", "stale" or empty (see styles.h); name: the object name.
    struct Button {
        QString text;
        QString name;
        QString tone;
        Picture picture = {}; ///< before the words
    };

    ChoiceGroup(QWidget* parent, const QString& pressedStyle, const QString& unpressedStyle,
                const std::vector<Button>& buttons);

    QPushButton* button(int index) const { return m_buttons[static_cast<std::size_t>(index)]; }

    /// The pressed button's index, -1 when none is.
    int chosen() const { return m_chosen; }

    /// From now on the choice stands for what the module holds: the pressed style is grey while that is not known.
    void followModule();

    /// Moves the pressed style. -1 gives every button the unpressed one.
    void choose(int index);

    void setEnabled(bool enabled);
    void setVisible(bool visible);

    /// Lays the buttons out from (x, y) to the right with the grid's gap between them.
    void place(int x, int y, int width, int height);

signals:
    /// At once: for a choice that sends nothing.
    void clicked(int index);

    /// When the gate lets it through, at once if no command waits: for a choice that sends.
    void asked(int index);

private:
    void takeTones();
    void showPictures();

    std::vector<QPushButton*> m_buttons;
    std::vector<QString> m_tones;
    std::vector<Picture> m_pictures;
    QString m_pressedStyle;
    QString m_unpressedStyle;
    int m_chosen = -1;
    bool m_isGrey = false;
};

} // namespace Kavor::HandheldGui
