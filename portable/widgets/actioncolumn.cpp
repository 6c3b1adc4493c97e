#include "portable/widgets/actioncolumn.h"

#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QPushButton>
#include <QVariant>

namespace Kavor::HandheldGui::ActionColumn {

namespace {

constexpr char Lit[] = "lit";

QString lined(const QString& sheet) {
    return sheet + QStringLiteral("QPushButton { text-align: left; padding-left: 16px; }");
}

} // namespace

QPushButton* addButton(QWidget* page, int place, LineIcon icon, const QString& text, const QString& name) {
    auto* button = new QPushButton(text, page);
    button->setObjectName(name);
    button->setGeometry(X, place * (Height - ButtonHeight) / (Places - 1), Width, ButtonHeight);
    button->setFocusPolicy(Qt::NoFocus);
    button->setIconSize(QSize(LineIconSize + LineIconGap, LineIconSize));
    setLit(button, icon, false);
    return button;
}

void setLit(QPushButton* button, LineIcon icon, bool lit) {
    if (button->property(Lit) == QVariant(lit))
        return;
    applySheet(button, lined(lit ? PUSH_BN_SEL_STYLE : PUSH_BN_STYLE));
    button->setIcon(lineIcon(icon, lit ? Style::OnActive : Style::Text, LineIconGap));
    button->setProperty(Lit, lit);
}

} // namespace Kavor::HandheldGui::ActionColumn
