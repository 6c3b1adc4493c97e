#pragma once

#include <QComboBox>
#include <QPointer>

namespace Kavor::HandheldGui {

/// A combo box whose list has rows to be touched, and which hands its index changes on under a name without overloads.
/// The list never lies over a control that is kept live (scrim.h): a tap on that reaches it and leaves the list open.
/// GUI thread.
class ComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit ComboBox(QWidget* parent = nullptr);

    /// True while the list is open.
    bool isOpen() const { return m_open; }

    /// In its turn if a command waits.
    void showPopup() override;
    void hidePopup() override;

signals:
    void indexChanged(int index);

    /// The list has closed, and whatever was chosen in it has taken effect.
    void closed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void openList();

    QPointer<QWidget> m_pressedBeside; ///< a live control under the finger while the list is open
    bool m_open = false;
};

} // namespace Kavor::HandheldGui
