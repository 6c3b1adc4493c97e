#include "portable/widgets/actioncolumn.h"

#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QPushButton>
#include <QVariant>

namespace Kavor::HandheldGui::ActionColumn {

namespace {

constexpr char Lit[] = "lit";

} // namespace

QRect place(int index) {
    return {X, index * (Height - ButtonHeight) / (Places - 1), Width, ButtonHeight};
}

QPushButton* addButton(QWidget* page, int index, LineIcon icon, const QString& text, const QString& name) {
    auto* button = new QPushButton(text, page);
    button->setObjectName(name);
    button->setGeometry(place(index));
    button->setFocusPolicy(Qt::NoFocus);
    button->setProperty("side", "left");
    button->setIconSize(LineIconRoom);
    setLit(button, icon, false);
    return button;
}

void setLit(QPushButton* button, LineIcon icon, bool lit) {
    if (button->property(Lit) == QVariant(lit))
        return;
    applySheet(button, lit ? PUSH_BN_SEL_STYLE : PUSH_BN_STYLE);
    button->setIcon(lineIcon(icon, lit ? Style::OnActive : Style::Text));
    button->setProperty(Lit, lit);
}

} // namespace Kavor::HandheldGui::ActionColumn
