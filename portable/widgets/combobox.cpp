#include "portable/widgets/combobox.h"

#include "portable/widgets/styles/styles.h"

#include <QListView>
#include <QStyledItemDelegate>

namespace Kavor::HandheldGui {

ComboBox::ComboBox(QWidget* parent) : QComboBox(parent) {
    // The delegate that a combo box brings along ignores the row height of the style sheet.
    setView(new QListView(this));
    setItemDelegate(new QStyledItemDelegate(this));
    view()->setStyleSheet(WIDGET_COMBO_LIST_STYLE);
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ComboBox::indexChanged);
}

} // namespace Kavor::HandheldGui
