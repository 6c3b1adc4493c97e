#pragma once

#include "portable/fields/valueentry.h"
#include "portable/widgets/pagegroup.h"

class QLabel;

namespace Kavor::HandheldGui {

/// The texts of a field of a page. The unit box takes the editor's object name with "Unit" behind it.
struct FieldTexts {
    QString label; ///< on the page
    QString name;  ///< object name of the editor
    QString title; ///< what the keyboard shows, and what range messages call the value
};

/// A field of a page that is bound to its value.
struct BoundField {
    ValueEntry* entry = nullptr;
    QLabel* label = nullptr;
    ComboBox* unit = nullptr; ///< null where the kind has none
    ValueEdit* edit = nullptr;

    void setVisible(bool visible) const;
};

/// Makes the editor of the field's kind and, for frequency and time, its unit box, lays them out in a column of a
/// group, and binds them: a change of the editor or, by the user, of the unit box is an entry. height in pixels; 0: an
/// ordinary entry.
BoundField addValueField(PageGroup& group, PanelHost& host, const PageGroup::Column& column, int y,
                         const FieldTexts& texts, ValueField field, int height = 0);

} // namespace Kavor::HandheldGui
