#include "portable/update/package_row.h"

#include "portable/widgets/breakable.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/tokens.h"

#include <QPainter>

namespace Kavor::HandheldGui {

namespace {

constexpr int PaddingX = 16;
constexpr int PaddingY = 9;
constexpr int LongestWord = 1; ///< a text that is too wide may be broken behind every character

QFont fontOf(int pixels, bool strong) {
    QFont font(QStringLiteral("Segoe UI"));
    font.setPixelSize(pixels);
    font.setWeight(strong ? QFont::DemiBold : QFont::Normal);
    return font;
}

QFont firstFont(const QModelIndex& index) {
    const bool marked = index.data(PackageRowDelegate::MarkRole).isValid();
    return fontOf(marked ? Style::TextLabel : Style::TextValue, index.data(PackageRowDelegate::Strong).toBool());
}

const QFont& secondFont() {
    static const QFont font = fontOf(Style::TextLabel, false);
    return font;
}

QRect textPlace(const QString& text, const QFont& font, int width) {
    return QFontMetrics(font).boundingRect(QRect(0, 0, width, 1 << 20), Qt::TextWordWrap, text);
}

QColor colourOf(const QModelIndex& index) {
    const QVariant mark = index.data(PackageRowDelegate::MarkRole);
    if (mark.isValid() && mark.toInt() == static_cast<int>(LineIcon::ShieldCross))
        return Style::WrongText;
    const bool calm = mark.isValid() && mark.toInt() == static_cast<int>(LineIcon::ShieldDash);
    return calm ? Style::Label : Style::Text;
}

} // namespace

QString PackageRowDelegate::fitted(const QString& text, int width, bool strong) {
    const QFontMetrics metrics(fontOf(Style::TextValue, strong));
    return metrics.horizontalAdvance(text) <= width - 2 * PaddingX ? text : breakable(text, LongestWord);
}

int PackageRowDelegate::heightOf(const QModelIndex& index, int width) {
    const int room = width - 2 * PaddingX;
    const QString second = index.data(SecondLine).toString();
    int height = textPlace(index.data().toString(), firstFont(index), room).height();
    if (!second.isEmpty())
        height += textPlace(second, secondFont(), room).height();
    return height + 2 * PaddingY;
}

void PackageRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QRect cell = option.rect;
    painter->save();
    painter->setClipRect(cell);
    if (option.state & QStyle::State_Selected)
        painter->fillRect(cell, QColor(Style::Field));
    else
        painter->fillRect(cell.left(), cell.bottom(), cell.width(), 1, QColor(Style::PanelEdge));
    const QString text = index.data().toString();
    const QString second = index.data(SecondLine).toString();
    const QVariant mark = index.data(MarkRole);
    QRect room = cell.adjusted(PaddingX, PaddingY, -PaddingX, -PaddingY);
    painter->setPen(colourOf(index));
    painter->setFont(firstFont(index));
    if (mark.isValid()) {
        painter->drawPixmap(cell.left(), cell.center().y() - LineIconSize / 2,
                            linePixmap(static_cast<LineIcon>(mark.toInt()), colourOf(index).rgb()));
        room.setLeft(cell.left() + LineIconRoom.width());
        painter->drawText(room, Qt::AlignVCenter | Qt::TextWordWrap, text);
    } else {
        const int first = textPlace(text, firstFont(index), room.width()).height();
        painter->drawText(room, Qt::AlignTop | Qt::TextWordWrap, text);
        painter->setFont(secondFont());
        painter->setPen(QColor(Style::Label));
        painter->drawText(room.adjusted(0, first, 0, 0), Qt::AlignTop | Qt::TextWordWrap, second);
    }
    painter->restore();
    paintFrame(*painter, option);
}

} // namespace Kavor::HandheldGui
