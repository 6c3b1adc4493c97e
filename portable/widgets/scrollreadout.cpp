#include "portable/widgets/scrollreadout.h"

#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QEvent>
#include <QHeaderView>
#include <QLocale>
#include <QScrollBar>
#include <QTableView>

namespace Kavor::HandheldGui {

ScrollReadout::ScrollReadout(QTableView& table) : QLabel(table.horizontalHeader()), m_table(table) {
    setObjectName(QStringLiteral("scrollReadout"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setStyleSheet(WIDGET_COMM_STYLE);
    const QScrollBar* bar = table.verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, &ScrollReadout::follow);
    connect(bar, &QScrollBar::rangeChanged, this, &ScrollReadout::follow);
    table.viewport()->installEventFilter(this);
    follow();
}

bool ScrollReadout::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Resize)
        follow();
    return false;
}

void ScrollReadout::follow() {
    const bool scrolls = m_table.verticalScrollBar()->maximum() > 0;
    setVisible(scrolls);
    if (!scrolls)
        return;
    const int rows = m_table.model()->rowCount();
    const int last = m_table.rowAt(m_table.viewport()->height() - 1);
    const QLocale english(QLocale::English);
    setText(QStringLiteral("%1 / %2").arg(english.toString(last < 0 ? rows : last + 1), english.toString(rows)));
    adjustSize();
    const QHeaderView& header = *m_table.horizontalHeader();
    move(m_table.viewport()->width() - width() - Style::Gap, (header.height() - height()) / 2);
    raise();
}

} // namespace Kavor::HandheldGui
