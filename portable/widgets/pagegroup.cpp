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
    addCaption(Left.labelX, 0, Style::CaptionHeight, title);
}

QLabel* PageGroup::addCaption(int x, int y, int height, const QString& text) {
    QLabel* caption = addLabel(x, y, width() - x, height, text);
    applySheet(caption, WIDGET_LBL_BOLD_STYLE);
    caption->resize(caption->sizeHint().width(), height);
    return caption;
}

void PageGroup::addLine(const QRect& place) {
    auto* line = new QFrame(this);
    line->setGeometry(place);
    line->setStyleSheet(QStringLiteral("background-color: %1;").arg(Style::css(Style::Raised)));
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
