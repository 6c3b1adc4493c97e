#include "portable/widgets/combobox.h"

#include <QListView>
#include <QStyledItemDelegate>

namespace Kavor::HandheldGui {

ComboBox::ComboBox(QWidget* parent) : QComboBox(parent) {
    // The delegate that a combo box brings along ignores the row height of the style sheet.
    setView(new QListView(this));
    setItemDelegate(new QStyledItemDelegate(this));
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ComboBox::indexChanged);
}

} // namespace Kavor::HandheldGui
