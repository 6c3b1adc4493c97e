#include "portable/widgets/combobox.h"

#include "portable/widgets/actiongate.h"
#include "portable/widgets/styles/styles.h"

#include <QListView>
#include <QStyledItemDelegate>
#include <QTimer>

namespace Kavor::HandheldGui {

ComboBox::ComboBox(QWidget* parent) : QComboBox(parent) {
    // The delegate that a combo box brings along ignores the row height of the style sheet.
    setView(new QListView(this));
    setItemDelegate(new QStyledItemDelegate(this));
    view()->setStyleSheet(WIDGET_COMBO_LIST_STYLE);
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ComboBox::indexChanged);
}

void ComboBox::showPopup() {
    ActionGate::panel().ask(this, [this] {
        m_open = true;
        QComboBox::showPopup();
    });
}

void ComboBox::hidePopup() {
    QComboBox::hidePopup();
    if (!m_open)
        return;
    // The list hides before it tells what was chosen.
    QTimer::singleShot(0, this, [this] {
        m_open = false;
        emit closed();
    });
}

} // namespace Kavor::HandheldGui
