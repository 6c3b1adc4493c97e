#include "portable/screens/valuefield.h"

#include "portable/widgets/combobox.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/vklineedit.h"

#include <QLabel>

namespace Kavor::HandheldGui {

namespace {

constexpr int OfferedTimes = 3; // the screens offer ns, µs and ms

QStringList unitsOf(const ValueField& field) {
    if (field.kind == ValueField::Kind::Frequency)
        return unitNames(UnitQuantity::Frequency).mid(static_cast<int>(field.row));
    if (field.kind == ValueField::Kind::Time)
        return unitNames(UnitQuantity::Time).mid(0, OfferedTimes);
    return {};
}

} // namespace

void BoundField::setVisible(bool visible) const {
    entry->setVisible(visible);
    label->setVisible(visible);
}

BoundField addValueField(PageGroup& group, PanelHost& host, const PageGroup::Column& column, int y,
                         const FieldTexts& texts, ValueField field, int height) {
    field.edit->setObjectName(texts.name);
    field.edit->setTitle(texts.title);
    if (field.unit) {
        field.unit->setObjectName(texts.name + QStringLiteral("Unit"));
        field.unit->addItems(unitsOf(field));
        if (field.unit->styleSheet().isEmpty())
            field.unit->setStyleSheet(WIDGET_COMBO_STYLE);
    }
    BoundField bound;
    bound.label = group.addField(column, y, texts.label, field.edit, field.unit, height);
    bound.entry = new ValueEntry(host, field);
    QObject::connect(field.edit, &ValueEdit::valueChanged, bound.entry, [entry = bound.entry] { entry->enter(); });
    if (field.unit)
        QObject::connect(field.unit, &ComboBox::indexChanged, bound.entry, [entry = bound.entry] { entry->enter(); });
    return bound;
}

} // namespace Kavor::HandheldGui
