#pragma once

#include <QComboBox>

namespace Kavor::HandheldGui {

/// A combo box whose list has rows to be touched, and which hands its index changes on under a name without overloads.
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

private:
    bool m_open = false;
};

} // namespace Kavor::HandheldGui
