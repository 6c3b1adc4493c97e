#include "portable/fields/valuefield.h"

#include "portable/widgets/actiongate.h"
#include "portable/widgets/combobox.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vkeditors.h"

#include <QLabel>

namespace Kavor::HandheldGui {

namespace {

ValueEdit* makeEditor(ValueField::Kind kind, QWidget* parent) {
    switch (kind) {
    case ValueField::Kind::Frequency:
        return new vkFreqEdit(parent);
    case ValueField::Kind::Time:
        return new vkTimeEdit(parent);
    case ValueField::Kind::Power:
        return new vkPowerEdit(parent);
    case ValueField::Kind::Percent:
        return new vkPercentEdit(parent);
    case ValueField::Kind::Phase:
        return new vkPhaseEdit(parent);
    case ValueField::Kind::Number:
        break;
    }
    return new vkNoUnitsEdit(parent);
}

QStringList unitsOf(const ValueField& field) {
    if (field.kind == ValueField::Kind::Frequency)
        return unitNames(UnitQuantity::Frequency).mid(static_cast<int>(field.row));
    if (field.kind == ValueField::Kind::Time)
        return unitNames(UnitQuantity::Time).mid(0, field.timeUnits);
    return {};
}

} // namespace

void BoundField::setVisible(bool visible) const {
    entry->setVisible(visible);
    label->setVisible(visible);
}

BoundField addValueField(PageGroup& group, PanelHost& host, const PageGroup::Column& column, int y,
                         const FieldTexts& texts, ValueField field, int height) {
    field.edit = makeEditor(field.kind, &group);
    field.edit->setObjectName(texts.name);
    field.edit->setTitle(texts.title);
    const QStringList units = unitsOf(field);
    if (!units.isEmpty()) {
        field.unit = new ComboBox(&group);
        field.unit->setObjectName(texts.name + QStringLiteral("Unit"));
        field.unit->addItems(units);
        field.unit->setStyleSheet(height > Style::EntryHeight ? WIDGET_COMBO_STYLE_BIG : WIDGET_COMBO_STYLE);
    }
    BoundField bound;
    bound.unit = field.unit;
    bound.edit = field.edit;
    bound.label = group.addField(column, y, texts.label, field.edit, field.unit, height);
    bound.entry = new ValueEntry(host, field);
    QObject::connect(field.edit, &ValueEdit::valueChanged, bound.entry, [entry = bound.entry] { entry->enter(); });
    if (field.unit) {
        QObject::connect(field.unit, &ComboBox::indexChanged, bound.entry, [unit = field.unit, entry = bound.entry] {
            ActionGate::panel().ask(unit, [entry] { entry->enter(); });
        });
    }
    return bound;
}

} // namespace Kavor::HandheldGui
