#include "tests/gui/lookrules.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>
#include <vector>

namespace {

QString nameOf(const QWidget& widget) {
    const QString own =
        widget.objectName().isEmpty() ? QString::fromLatin1(widget.metaObject()->className()) : widget.objectName();
    const auto* button = qobject_cast<const QAbstractButton*>(&widget);
    return button ? own + QStringLiteral(" \"") + button->text() + QLatin1Char('"') : own;
}

bool canBeTouched(const QWidget& widget) {
    if (const auto* edit = qobject_cast<const QLineEdit*>(&widget))
        return !edit->isReadOnly() && !qobject_cast<const QComboBox*>(widget.parentWidget());
    return qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget);
}

/// The function row is one bar of buttons that touch each other.
bool inFunctionRow(const QWidget& widget) {
    return widget.objectName().startsWith(QLatin1String("func"));
}

int gapBetween(const QRect& a, const QRect& b) {
    const int dx = qMax(qMax(a.left() - b.right() - 1, b.left() - a.right() - 1), 0);
    const int dy = qMax(qMax(a.top() - b.bottom() - 1, b.top() - a.bottom() - 1), 0);
    if (dx > 0 && dy > 0)
        return qMax(dx, dy);
    return a.intersects(b) ? -1 : dx + dy;
}

QString shownText(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return label->text();
    if (const auto* edit = qobject_cast<const QLineEdit*>(&widget))
        return edit->text();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return button->text();
    if (const auto* box = qobject_cast<const QComboBox*>(&widget))
        return box->currentText();
    return QString();
}

/// The width that the text has at its widget.
int roomFor(const QWidget& widget) {
    if (const auto* box = qobject_cast<const QComboBox*>(&widget)) {
        QStyleOptionComboBox option;
        option.initFrom(box);
        option.subControls = QStyle::SC_All;
        return box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box).width();
    }
    if (const auto* edit = qobject_cast<const QLineEdit*>(&widget)) {
        QStyleOptionFrame option;
        option.initFrom(edit);
        // Two pixels on each side are the entry's own inner margin.
        return edit->style()->subElementRect(QStyle::SE_LineEditContents, &option, edit).width() - 4;
    }
    return widget.contentsRect().width();
}

} // namespace

QStringList LookRules::violations(const QWidget& window) {
    QStringList found;
    std::vector<const QWidget*> touchable;
    const QRect frame = window.rect();
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible() || widget->window() != &window)
            continue;
        const QRect place(widget->mapTo(&window, QPoint(0, 0)), widget->size());
        const QString name = nameOf(*widget);
        const QString text = shownText(*widget);
        if (!text.isEmpty()) {
            QString oneLine = text;
            oneLine.replace(QLatin1String("&&"), QLatin1String("&"));
            const auto* label = qobject_cast<const QLabel*>(widget);
            const int needed = widget->fontMetrics().horizontalAdvance(oneLine);
            if (!(label && label->wordWrap()) && needed > roomFor(*widget))
                found << QStringLiteral("%1: text needs %2 px of %3: %4")
                             .arg(name)
                             .arg(needed)
                             .arg(roomFor(*widget))
                             .arg(text);
            if (QFontMetrics(widget->font()).capHeight() < SmallestCapitalHeight)
                found << QStringLiteral("%1: capitals of %2 px").arg(name).arg(widget->fontMetrics().capHeight());
            if (!frame.contains(place))
                found << name + QStringLiteral(": outside the window");
        }
        if (canBeTouched(*widget))
            touchable.push_back(widget);
    }
    for (std::size_t i = 0; i < touchable.size(); ++i) {
        const QWidget& a = *touchable[i];
        const QRect rectA(a.mapTo(&window, QPoint(0, 0)), a.size());
        if (qMin(a.width(), a.height()) < SmallestTouchSide)
            found << QStringLiteral("%1: %2x%3 is too small to touch").arg(nameOf(a)).arg(a.width()).arg(a.height());
        for (std::size_t j = i + 1; j < touchable.size(); ++j) {
            const QWidget& b = *touchable[j];
            if (inFunctionRow(a) && inFunctionRow(b))
                continue;
            const int gap = gapBetween(rectA, QRect(b.mapTo(&window, QPoint(0, 0)), b.size()));
            if (gap < SmallestGap)
                found << QStringLiteral("%1 and %2: %3 px apart").arg(nameOf(a), nameOf(b)).arg(gap);
        }
    }
    return found;
}
