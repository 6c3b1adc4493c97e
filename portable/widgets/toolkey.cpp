#include "portable/widgets/toolkey.h"

#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QStyleOptionButton>
#include <QStylePainter>

namespace Kavor::HandheldGui {

namespace {
constexpr int IconTop = 5;
constexpr int WordHeight = 34;
} // namespace

ToolKey::ToolKey(QWidget* parent, LineIcon icon, const QString& text, const QString& name) : QPushButton(text, parent) {
    setObjectName(name);
    setFocusPolicy(Qt::NoFocus);
    setStyleSheet(PUSH_BN_STYLE + QStringLiteral("QPushButton { font-size: %1px; }").arg(Style::TextGroup));
    setIcon(lineIcon(icon, Style::Text));
}

void ToolKey::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    option.icon = QIcon();
    painter.drawControl(QStyle::CE_PushButton, option);
    const int sunk = isDown() ? 2 : 0;
    const QIcon::Mode mode = isEnabled() ? QIcon::Normal : QIcon::Disabled;
    painter.drawPixmap((width() - LineIconSize) / 2, IconTop + sunk, icon().pixmap(LineIconRoom, mode));
    painter.setPen(QColor(isEnabled() ? Style::Text : Style::Disabled));
    painter.drawText(QRect(0, height() - WordHeight + sunk, width(), WordHeight - 4), Qt::AlignCenter, text());
}

} // namespace Kavor::HandheldGui
