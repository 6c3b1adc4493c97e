#pragma once

#include <QComboBox>

namespace Kavor::HandheldGui {

/// A combo box whose list has rows to be touched, and which hands its index changes on under a name without overloads.
/// GUI thread.
class ComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit ComboBox(QWidget* parent = nullptr);

signals:
    void indexChanged(int index);
};

} // namespace Kavor::HandheldGui
