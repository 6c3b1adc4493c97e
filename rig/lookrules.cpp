#include "rig/lookrules.h"

#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/vkbutton.h"
#include "portable/widgets/vklineedit.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOption>
#include <QTableView>
#include <array>
#include <cmath>
#include <vector>

using namespace Kavor::HandheldGui;

namespace {

constexpr int FewestTextPixels = 3; // fewer of one colour are the rim of something else

// The window, or the dialog inside it, that a widget is part of.
const QWidget* surfaceOf(const QWidget& widget) {
    const QWidget* surface = &widget;
    while (!surface->isWindow() && !qobject_cast<const QDialog*>(surface))
        surface = surface->parentWidget();
    return surface;
}

QString shownText(const QWidget& widget) {
    if (const auto* key = qobject_cast<const VKButton*>(&widget))
        return key->caption();
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return label->text();
    if (const auto* edit = qobject_cast<const QLineEdit*>(&widget))
        return edit->text();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return button->text().replace(QLatin1String("&&"), QLatin1String("&"));
    if (const auto* box = qobject_cast<const QComboBox*>(&widget))
        return box->currentText();
    if (const auto* bar = qobject_cast<const QProgressBar*>(&widget))
        return bar->isTextVisible() ? bar->text() : QString();
    return QString();
}

QString nameOf(const QWidget& widget) {
    const QString own =
        widget.objectName().isEmpty() ? QString::fromLatin1(widget.metaObject()->className()) : widget.objectName();
    const QString text = shownText(widget);
    return text.isEmpty() ? own : own + QStringLiteral(" \"") + text.left(40) + QLatin1Char('"');
}

/// The line edit inside a unit box is part of the box.
bool isPartOfAnother(const QWidget& widget) {
    return qobject_cast<const QComboBox*>(widget.parentWidget()) ||
           (qobject_cast<const QAbstractButton*>(&widget) &&
            qobject_cast<const QAbstractItemView*>(widget.parentWidget()));
}

/// Shows something of its own, which nothing else may cover.
bool hasContent(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return !label->text().isEmpty() || !label->pixmap(Qt::ReturnByValue).isNull() || label->movie();
    return !isPartOfAnother(widget) &&
           (qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QLineEdit*>(&widget) ||
            qobject_cast<const QComboBox*>(&widget) || qobject_cast<const QProgressBar*>(&widget) ||
            qobject_cast<const QAbstractItemView*>(&widget));
}

/// Where a widget's content stands, in its own coordinates: a label takes no more than its text does.
QRect contentPlace(const QWidget& widget) {
    const auto* label = qobject_cast<const QLabel*>(&widget);
    if (!label || label->wordWrap())
        return widget.rect();
    return QStyle::alignedRect(Qt::LeftToRight, label->alignment(), label->sizeHint().boundedTo(label->size()),
                               label->rect());
}

/// The function row is one bar of buttons that touch each other, 60 pixels high.
bool inFunctionRow(const QWidget& widget) {
    return widget.objectName().startsWith(QLatin1String("func"));
}

/// A button in the open; tabs have a shape instead.
bool hasOutline(const QWidget& widget) {
    const QString& name = widget.objectName();
    return qobject_cast<const QAbstractButton*>(&widget) && !qobject_cast<const QCheckBox*>(&widget) &&
           !isPartOfAnother(widget) && !inFunctionRow(widget) && !name.startsWith(QLatin1String("tab")) &&
           !name.contains(QLatin1String("Place"));
}

int gapBetween(const QRect& a, const QRect& b) {
    const int dx = qMax(qMax(a.left() - b.right() - 1, b.left() - a.right() - 1), 0);
    const int dy = qMax(qMax(a.top() - b.bottom() - 1, b.top() - a.bottom() - 1), 0);
    if (dx > 0 && dy > 0)
        return qMax(dx, dy);
    return a.intersects(b) ? -1 : dx + dy;
}

/// Where a widget's text stands, in its own coordinates: without borders, arrows and boxes.
QRect textPlace(const QWidget& widget) {
    if (const auto* box = qobject_cast<const QComboBox*>(&widget)) {
        QStyleOptionComboBox option;
        option.initFrom(box);
        option.subControls = QStyle::SC_All;
        return box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box);
    }
    if (const auto* edit = qobject_cast<const QLineEdit*>(&widget)) {
        QStyleOptionFrame option;
        option.initFrom(edit);
        // Two pixels on each side are the entry's own inner margin.
        return edit->style()->subElementRect(QStyle::SE_LineEditContents, &option, edit).adjusted(2, 0, -2, 0);
    }
    if (const auto* box = qobject_cast<const QCheckBox*>(&widget))
        return {0, 0, box->fontMetrics().horizontalAdvance(box->text()), box->height()};
    if (qobject_cast<const QLabel*>(&widget))
        return widget.contentsRect();
    return widget.contentsRect().adjusted(6, 6, -6, -6);
}

QFont shownFont(const QWidget& widget) {
    const auto* key = qobject_cast<const VKButton*>(&widget);
    return key ? key->captionFont() : widget.font();
}

/// Relative luminance as WCAG 2 defines it.
double luminance(QRgb colour) {
    const auto linear = [](int channel) {
        const double value = channel / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrast(QRgb a, QRgb b) {
    const double la = luminance(a), lb = luminance(b);
    return (qMax(la, lb) + 0.05) / (qMin(la, lb) + 0.05);
}

struct Colours {
    QRgb ground; ///< the most frequent one
    QRgb text;   ///< the one that stands out most from it: the core of the strokes
};

Colours coloursOf(const QImage& picture, const QRect& where) {
    QMap<QRgb, int> found;
    const QRect inside = where.intersected(picture.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x)
            ++found[picture.pixel(x, y)];
    }
    Colours colours{0, 0};
    int most = 0;
    for (auto it = found.cbegin(); it != found.cend(); ++it) {
        if (it.value() > most) {
            most = it.value();
            colours.ground = it.key();
        }
    }
    colours.text = colours.ground;
    for (auto it = found.cbegin(); it != found.cend(); ++it) {
        if (it.value() >= FewestTextPixels &&
            contrast(it.key(), colours.ground) > contrast(colours.text, colours.ground))
            colours.text = it.key();
    }
    return colours;
}

} // namespace

bool LookRules::canBeTouched(const QWidget& widget) {
    return !isPartOfAnother(widget) &&
           (qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget) ||
            qobject_cast<const ValueEdit*>(&widget));
}

const LookRules::Limits& LookRules::limits(Rule rule) {
    static const std::array<Limits, InsideWindow + 1> all{{
        {"smaller side of what can be touched", "px", 68, 72},
        {"smaller side of a key", "px", 104, 112},
        {"smaller side of a wide key", "px", 80, 80},
        {"gap between what can be touched", "px", 12, 12},
        {"height of a table row", "px", 68, 72},
        {"smaller side of a scroll handle", "px", 56, 56},
        {"contrast of text", ":1", 5.4, 7},
        {"contrast of disabled text", ":1", 3, 3},
        {"contrast of disabled to enabled text", ":1", 1.5, 1.5},
        {"contrast of a button's edge", ":1", 3, 3.9},
        {"capital height of text", "px", 17, 18},
        {"capital height of the frequency", "px", 36, 40},
        {"room left beside or below a text", "px", 0, 0},
        {"distance of contents", "px", 0, 0},
        {"distance to the window's edge", "px", 0, 0},
    }};
    return all.at(rule);
}

void LookRules::measure(Rule rule, double value, const QString& what) {
    const Limits& limit = limits(rule);
    Measured& measured = m_measured[rule];
    const QString line = QStringLiteral("%1: %2: %3").arg(m_stop, QString::fromLatin1(limit.name), what);
    if (value < limit.must) {
        for (std::size_t i = 0; i < m_exceptions.size(); ++i) {
            const Exception& exception = m_exceptions[i];
            if (exception.rule == rule && m_stop.startsWith(QLatin1String(exception.stop)) &&
                what.contains(QLatin1String(exception.widget))) {
                ++m_used[static_cast<int>(i)];
                return;
            }
        }
        m_violations << line + QStringLiteral(": %1 %2").arg(value).arg(QLatin1String(limit.unit));
    }
    if (measured.count++ == 0 || value < measured.worst) {
        measured.worst = value;
        measured.where = m_stop + QStringLiteral(", ") + what;
    }
    measured.underAim += value < limit.aim;
}

void LookRules::look(const PanelTour::Stop& stop) {
    m_stop = stop.name;
    m_picture = stop.picture.toImage();
    if (!stop.toast.isEmpty())
        lookAtContrast(stop.toast.adjusted(20, 10, -20, -10), true, QStringLiteral("toast"), Style::Text);
    if (!stop.shown)
        return;
    const QWidget& window = *stop.shown;
    m_origin = stop.origin;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible() || surfaceOf(*widget) != &window)
            continue;
        const QRect place(widget->mapTo(&window, QPoint()), widget->size());
        if (hasContent(*widget)) {
            const QRect frame = window.rect();
            measure(InsideWindow,
                    qMin(qMin(place.left(), place.top()),
                         qMin(frame.right() - place.right(), frame.bottom() - place.bottom())),
                    nameOf(*widget));
        }
        const bool underToast = stop.toast.intersects(place.translated(m_origin));
        if (widget->isEnabled() && hasOutline(*widget) && !underToast)
            lookAtEdge(*widget, place);
        if (!shownText(*widget).isEmpty() && !isPartOfAnother(*widget) && !underToast)
            lookAtText(*widget, place);
        if (const auto* view = qobject_cast<const QAbstractItemView*>(widget); view && !underToast)
            lookAtTable(*view, place);
    }
    lookAtDistances(window);
}

QStringList LookRules::violations(QWidget& window) {
    LookRules rules;
    rules.look({window.objectName(), &window, QPoint(), window.grab(), QRect()});
    return rules.violations();
}

void LookRules::lookAtText(const QWidget& widget, const QRect& place) {
    const QRect room = textPlace(widget);
    const QFontMetrics metrics(shownFont(widget));
    const QString name = nameOf(widget);
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        if (label->wordWrap())
            measure(TextRoom, label->height() - label->heightForWidth(label->width()), name);
        else
            measure(TextRoom,
                    qMin(label->width() - label->sizeHint().width(), label->height() - label->sizeHint().height()),
                    name);
    } else {
        const int below = room.height() - metrics.tightBoundingRect(QStringLiteral("Hg")).height();
        measure(TextRoom, qMin(room.width() - metrics.horizontalAdvance(shownText(widget)), below), name);
    }
    measure(CapitalHeight, metrics.capHeight(), name);
    if (widget.objectName() == QLatin1String("cwFrequency") || widget.objectName() == QLatin1String("keyboardEntry"))
        measure(FrequencyCapitalHeight, metrics.capHeight(), name);
    const QRgb enabled = qobject_cast<const QLineEdit*>(&widget) ? Style::Text : Style::Label;
    // A ticked row that is locked says so by its lock, and is read as any other.
    const auto* box = qobject_cast<const QCheckBox*>(&widget);
    const bool isRead = widget.isEnabled() || (box && box->isChecked());
    lookAtContrast(room.translated(place.topLeft() + m_origin), isRead, name, enabled);
}

/// What sets it off, its edge or all of it, against what lies beside it: at its left, a quarter down, where no bracket
/// ends.
void LookRules::lookAtEdge(const QWidget& widget, const QRect& place) {
    constexpr int Outside = 4;
    constexpr int EdgeWidth = 4;
    const QPoint left = QPoint(place.left(), place.top() + place.height() / 4) + m_origin;
    if (!m_picture.rect().contains(left - QPoint(Outside, 0)))
        return;
    const QRgb beside = m_picture.pixel(left - QPoint(Outside, 0));
    double best = 1;
    for (int x = 0; x < EdgeWidth; ++x)
        best = qMax(best, contrast(m_picture.pixel(left + QPoint(x, 0)), beside));
    measure(ButtonEdge, best, nameOf(widget));
}

void LookRules::lookAtContrast(const QRect& where, bool enabled, const QString& what, QRgb whenEnabled) {
    const Colours colours = coloursOf(m_picture, where);
    measure(enabled ? Contrast : DisabledContrast, contrast(colours.text, colours.ground), what);
    if (!enabled)
        measure(DisabledUnlikeEnabled, contrast(colours.text, whenEnabled), what);
}

void LookRules::lookAtTable(const QAbstractItemView& view, const QRect& place) {
    const QPoint corner = place.topLeft() + m_origin + view.viewport()->pos();
    const QFontMetrics metrics(view.font());
    const QRect port = view.viewport()->rect();
    const QAbstractItemModel& model = *view.model();
    measure(CapitalHeight, metrics.capHeight(), nameOf(view));
    for (int row = 0; row < model.rowCount(view.rootIndex()); ++row) {
        for (int column = 0; column < model.columnCount(view.rootIndex()); ++column) {
            const QModelIndex index = model.index(row, column, view.rootIndex());
            const QRect cell = view.visualRect(index);
            const QString text = index.data().toString();
            if (!port.contains(cell) || cell.isEmpty())
                continue;
            const QString what = QStringLiteral("%1 row %2 column %3").arg(nameOf(view)).arg(row).arg(column);
            measure(TableRow, cell.height(), what);
            if (text.isEmpty())
                continue;
            // What may be broken needs its height in the width that there is.
            const QRect broken = metrics.boundingRect(0, 0, cell.width(), 0, Qt::TextWordWrap, text);
            measure(TextRoom,
                    text.contains(QChar(0x200B)) ? qMin(cell.width() - broken.width(), cell.height() - broken.height())
                                                 : cell.width() - metrics.horizontalAdvance(text),
                    what);
            lookAtContrast(cell.adjusted(6, 6, -6, -6).translated(corner), view.isEnabled(), what, Style::Text);
        }
    }
    if (const auto* table = qobject_cast<const QTableView*>(&view)) {
        const QHeaderView& header = *table->horizontalHeader();
        for (int i = 0; header.isVisible() && i < header.count(); ++i) {
            const QString what = QStringLiteral("%1 header %2").arg(nameOf(view)).arg(i);
            const QString text = model.headerData(i, Qt::Horizontal).toString();
            if (text.isEmpty())
                continue;
            measure(TextRoom, header.sectionSize(i) - header.fontMetrics().horizontalAdvance(text), what);
            const QRect section(header.sectionViewportPosition(i), 0, header.sectionSize(i), header.height() - 2);
            lookAtContrast(section.translated(place.topLeft() + m_origin + header.pos()), view.isEnabled(), what,
                           Style::Text);
        }
    }
    const QScrollBar& bar = *view.verticalScrollBar();
    if (!bar.isVisible())
        return;
    QStyleOptionSlider option;
    option.initFrom(&bar);
    option.orientation = Qt::Vertical;
    option.minimum = bar.minimum();
    option.maximum = bar.maximum();
    option.pageStep = bar.pageStep();
    option.sliderPosition = bar.sliderPosition();
    option.subControls = QStyle::SC_All;
    const QRect handle = bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar);
    measure(ScrollHandle, qMin(handle.width(), handle.height()), nameOf(view));
}

void LookRules::lookAtDistances(const QWidget& window) {
    std::vector<const QWidget*> contents;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (widget->isVisible() && surfaceOf(*widget) == &window && hasContent(*widget))
            contents.push_back(widget);
    }
    const auto placeOf = [&window](const QWidget& widget) {
        return contentPlace(widget).translated(widget.mapTo(&window, QPoint()));
    };
    for (std::size_t i = 0; i < contents.size(); ++i) {
        const QWidget& a = *contents[i];
        const bool touchable = canBeTouched(a);
        const int side = qMin(a.width(), a.height());
        if (qobject_cast<const VKButton*>(&a)) {
            const bool wide = a.objectName() == QLatin1String("keyEnter") || a.objectName() == QLatin1String("keyEsc");
            measure(wide ? WideKeySide : KeySide, side, nameOf(a));
        } else if (touchable && !inFunctionRow(a)) {
            measure(TouchSide, side, nameOf(a));
        }
        for (std::size_t j = i + 1; j < contents.size(); ++j) {
            const QWidget& b = *contents[j];
            if (a.isAncestorOf(&b) || b.isAncestorOf(&a))
                continue;
            const int gap = gapBetween(placeOf(a), placeOf(b));
            const QString both = nameOf(a) + QStringLiteral(" and ") + nameOf(b);
            if (gap < 0)
                measure(Overlap, gap, both);
            else if (touchable && canBeTouched(b) && !(inFunctionRow(a) && inFunctionRow(b)))
                measure(Gap, gap, both);
        }
    }
}

QStringList LookRules::unusedExceptions() const {
    QStringList unused;
    for (std::size_t i = 0; i < m_exceptions.size(); ++i) {
        if (!m_used.contains(static_cast<int>(i)))
            unused << QString::fromUtf8(m_exceptions[i].reason);
    }
    return unused;
}

QString LookRules::report() const {
    QString text;
    for (auto it = m_measured.cbegin(); it != m_measured.cend(); ++it) {
        const Limits& limit = limits(static_cast<Rule>(it.key()));
        text += QStringLiteral("%1: %2 measured, worst %3 %4 (must %5, aim %6; %7 under the aim): %8\n")
                    .arg(QLatin1String(limit.name))
                    .arg(it->count)
                    .arg(it->worst, 0, 'f', 1)
                    .arg(QLatin1String(limit.unit))
                    .arg(limit.must)
                    .arg(limit.aim)
                    .arg(it->underAim)
                    .arg(it->where);
    }
    for (auto it = m_used.cbegin(); it != m_used.cend(); ++it) {
        const Exception& exception = m_exceptions[static_cast<std::size_t>(it.key())];
        text += QStringLiteral("exception, %1 times: %2, %3: %4\n")
                    .arg(it.value())
                    .arg(QLatin1String(exception.widget), QLatin1String(limits(exception.rule).name),
                         QString::fromUtf8(exception.reason));
    }
    return text;
}
