#include "portable/widgets/listpage.h"

#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/swipe.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>

namespace Kavor::HandheldGui {

namespace {

constexpr int TableTop = 56;
constexpr int TableHeight = 480;
constexpr int HeaderHeight = 56;
constexpr int TableGroupWidth = 956;
constexpr int TableMargin = 16;
constexpr int GroupGap = 12;
constexpr int StatusX = 280; ///< behind the title

} // namespace

void dressTable(QTableWidget& table) {
    table.setStyleSheet(LIST_STYLE +
                        QStringLiteral("QTableView::item { border-bottom: 1px solid %1; padding-left: 13px; }"
                                       "QTableView::item:selected { background-color: %2; color: %3; }")
                            .arg(Style::css(Style::PanelEdge), Style::css(Style::Field), Style::css(Style::Text)));
    Swipe::install(table);
    table.setFrameShape(QFrame::NoFrame);
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.setSelectionMode(QAbstractItemView::SingleSelection);
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setFocusPolicy(Qt::NoFocus);
    table.setShowGrid(false);
    table.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table.setContextMenuPolicy(Qt::NoContextMenu);
    table.verticalHeader()->hide();
    table.verticalHeader()->setDefaultSectionSize(Style::TableRowHeight);
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.horizontalHeader()->setFixedHeight(HeaderHeight);
    table.horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.horizontalHeader()->setHighlightSections(false);
    table.horizontalHeader()->setSectionsClickable(false);
}

QPushButton* makeButton(QWidget* parent, const QString& text, const QString& name) {
    auto* button = new QPushButton(text, parent);
    button->setObjectName(name);
    button->setFocusPolicy(Qt::NoFocus);
    button->setStyleSheet(PUSH_BN_STYLE);
    return button;
}

ListPage::ListPage(QWidget* page, const QString& title, const QString& note, const QString& backName)
    : QObject(page),
      m_page(page),
      m_group(new PageGroup(page, title, QRect(Style::PageMargin, 0, TableGroupWidth, Style::PageHeight - 8))),
      m_note(new QLabel(note, m_group)),
      m_status(new QLabel(m_group)) {
    m_status->setGeometry(StatusX, 0, m_group->width() - TableMargin - StatusX, TableTop);
    m_status->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_status->setTextFormat(Qt::PlainText);
    m_status->setObjectName(QStringLiteral("listStatus"));
    m_status->setStyleSheet(WIDGET_LBL_STYLE);
    m_note->setGeometry(TableMargin, TableTop + HeaderHeight, m_group->width() - 2 * TableMargin,
                        TableHeight - HeaderHeight);
    m_note->setAlignment(Qt::AlignCenter);
    m_note->setObjectName(QStringLiteral("listNote"));
    m_note->setStyleSheet(WIDGET_LBL_STYLE);

    const int left = m_group->geometry().right() + 1 + GroupGap;
    auto* side = new PageGroup(page, QString(),
                               QRect(left, 0, Style::WindowWidth - Style::PageMargin - left, m_group->height()));
    QPushButton* button = makeButton(side, QStringLiteral("Back"), backName);
    button->setGeometry(TableMargin, TableMargin, side->width() - 2 * TableMargin, Style::ButtonHeight);
    connect(button, &QPushButton::clicked, this, &ListPage::back);
}

QWidget* ListPage::group() const {
    return m_group;
}

void ListPage::setTable(QTableWidget* table) {
    m_table = table;
    m_table->setGeometry(TableMargin, TableTop, m_group->width() - 2 * TableMargin, TableHeight);
    // Rows may come while the page is shown.
    connect(m_table->model(), &QAbstractItemModel::rowsInserted, this, &ListPage::showNote);
    connect(m_table->model(), &QAbstractItemModel::rowsRemoved, this, &ListPage::showNote);
}

void ListPage::setNote(const QString& note) {
    m_note->setText(note);
}

void ListPage::setStatus(const QString& status) {
    m_status->setText(m_status->fontMetrics().elidedText(status, Qt::ElideMiddle, m_status->width()));
}

void ListPage::showNote() {
    const bool empty = m_table->rowCount() == 0;
    m_note->setVisible(empty);
    m_table->setFixedHeight(empty ? HeaderHeight : TableHeight);
}

void ListPage::show() {
    showNote();
    m_page->show();
}

void ListPage::hide() {
    m_page->hide();
}

} // namespace Kavor::HandheldGui
