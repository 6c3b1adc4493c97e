#include "portable/widgets/pagegroup.h"

#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>

namespace Kavor::HandheldGui {

PageGroup::PageGroup(QWidget* parent, const QString& title, const QRect& geometry) : QFrame(parent) {
    setObjectName(QStringLiteral("group"));
    setGeometry(geometry);
    setStyleSheet(WIDGET_GROUP_STYLE);
    if (title.isEmpty())
        return;
    // No wider than its words: what stands beside it is touched over its whole height.
    QLabel* caption = addLabel(Left.labelX, 10, geometry.width() - 2 * Left.labelX, 40, title);
    applySheet(caption, WIDGET_LBL_BOLD_STYLE);
    caption->resize(caption->sizeHint().width(), caption->height());
}

QLabel* PageGroup::addLabel(int x, int y, int width, int height, const QString& text) {
    auto* label = new QLabel(text, this);
    label->setGeometry(x, y, width, height);
    label->setStyleSheet(WIDGET_LBL_STYLE);
    return label;
}

QLabel* PageGroup::addField(const Column& column, int y, const QString& label, QWidget* value, QWidget* unit,
                            int height) {
    if (height == 0)
        height = Style::EntryHeight;
    value->setParent(this);
    value->setGeometry(column.valueX, y, column.valueWidth, height);
    if (unit) {
        unit->setParent(this);
        unit->setGeometry(column.valueX + column.valueWidth + Style::Gap, y, column.unitWidth, height);
    }
    return addLabel(column.labelX, y, column.valueX - column.labelX - 4, height, label);
}

} // namespace Kavor::HandheldGui
