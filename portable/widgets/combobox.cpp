#include "portable/widgets/combobox.h"

#include "portable/widgets/actiongate.h"
#include "portable/widgets/pressfilter.h"
#include "portable/widgets/scrim.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/swipe.h"

#include <QAbstractButton>
#include <QListView>
#include <QMouseEvent>
#include <QStyledItemDelegate>
#include <QTimer>

namespace Kavor::HandheldGui {

ComboBox::ComboBox(QWidget* parent) : QComboBox(parent) {
    // The delegate that a combo box brings along ignores the row height of the style sheet.
    setView(new QListView(this));
    setItemDelegate(new QStyledItemDelegate(this));
    view()->setStyleSheet(WIDGET_COMBO_LIST_STYLE);
    Swipe::install(*view());
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ComboBox::indexChanged);
}

void ComboBox::showPopup() {
    ActionGate::panel().ask(this, [this] { openList(); });
}

void ComboBox::openList() {
    m_open = true;
    PressFilter::noteChange();
    QComboBox::showPopup();
    QWidget* list = view()->window();
    list->removeEventFilter(this);
    list->installEventFilter(this);
    if (const QWidget* live = liveControlIn(*this, list->geometry()))
        list->move(list->x(), live->mapToGlobal(QPoint()).y() - Style::Gap - list->height());
}

void ComboBox::hidePopup() {
    QComboBox::hidePopup();
    if (!m_open)
        return;
    PressFilter::noteChange();
    // The list hides before it tells what was chosen.
    QTimer::singleShot(0, this, [this] {
        m_open = false;
        emit closed();
    });
}

// An open list gets every press, also those beside it.
bool ComboBox::eventFilter(QObject* watched, QEvent* event) {
    const bool begins = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    if (!begins && event->type() != QEvent::MouseButtonRelease)
        return QComboBox::eventFilter(watched, event);
    QWidget* live = liveControlIn(*this, QRect(static_cast<QMouseEvent*>(event)->globalPos(), QSize(1, 1)));
    if (begins) {
        m_pressedBeside = live;
        return live != nullptr;
    }
    if (m_pressedBeside.isNull())
        return false;
    const bool same = m_pressedBeside.data() == live;
    m_pressedBeside.clear();
    if (auto* button = qobject_cast<QAbstractButton*>(live); button && same)
        button->click();
    return true;
}

} // namespace Kavor::HandheldGui
