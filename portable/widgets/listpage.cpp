#include "portable/widgets/listpage.h"

#include "portable/widgets/actioncolumn.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/rowdelegate.h"
#include "portable/widgets/scrollreadout.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "portable/widgets/swipe.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>

namespace Kavor::HandheldGui {

namespace {

constexpr int TableTop = SubPageRowsTop - TableHeaderHeight;
constexpr int TableMargin = 16;
constexpr int TableHeight = ActionColumn::Height - TableTop - 1; // inside the group's edge
constexpr int GroupGap = Style::Gap;
constexpr int FooterHeight = 120;

} // namespace

void dressTable(QTableWidget& table) {
    table.setStyleSheet(LIST_STYLE +
                        QStringLiteral("QTableView::item { border-bottom: 1px solid %1; padding-left: 13px; }"
                                       "QTableView::item:selected { background-color: %2; color: %3; }")
                            .arg(Style::css(Style::PanelEdge), Style::css(Style::Field), Style::css(Style::Text)));
    Swipe::install(table);
    new ScrollReadout(table);
    table.setItemDelegate(new RowDelegate(&table));
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
    table.horizontalHeader()->setFixedHeight(TableHeaderHeight);
    table.horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.horizontalHeader()->setHighlightSections(false);
    table.horizontalHeader()->setSectionsClickable(false);
}

QLabel* addSubPageTitle(PageGroup& group, const QString& title) {
    constexpr int Top = 12;
    return group.addCaption(PageGroup::Left.labelX, Top, SubPageRowsTop - TableHeaderHeight - 2 * Top, title);
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
      m_group(
          new PageGroup(page, QString(), QRect(Style::PageMargin, 0, ActionColumn::MainWidth, ActionColumn::Height))),
      m_note(new QLabel(note, m_group)),
      m_tableHeight(TableHeight) {
    addSubPageTitle(*m_group, title);
    m_note->setGeometry(TableMargin, TableTop + TableHeaderHeight, m_group->width() - 2 * TableMargin,
                        TableHeight - TableHeaderHeight);
    m_note->setAlignment(Qt::AlignCenter);
    m_note->setObjectName(QStringLiteral("listNote"));
    m_note->setStyleSheet(WIDGET_LBL_STYLE);

    QPushButton* button = ActionColumn::addButton(page, 0, LineIcon::Back, QStringLiteral("Back"), backName);
    connect(button, &QPushButton::clicked, this, &ListPage::back);
}

QWidget* ListPage::group() const {
    return m_group;
}

void ListPage::setTable(QTableWidget* table) {
    m_table = table;
    m_table->setGeometry(TableMargin, TableTop, m_group->width() - 2 * TableMargin, m_tableHeight);
    // Rows may come while the page is shown.
    connect(m_table->model(), &QAbstractItemModel::rowsInserted, this, &ListPage::showNote);
    connect(m_table->model(), &QAbstractItemModel::rowsRemoved, this, &ListPage::showNote);
}

void ListPage::setNote(const QString& note) {
    m_note->setText(note);
}

void ListPage::setFooter(QWidget* footer) {
    m_tableHeight = TableHeight - FooterHeight - GroupGap;
    footer->setGeometry(TableMargin, TableTop + m_tableHeight + GroupGap, m_group->width() - 2 * TableMargin,
                        FooterHeight);
    m_note->setFixedHeight(m_tableHeight - TableHeaderHeight);
}

void ListPage::showNote() {
    const bool empty = m_table->rowCount() == 0;
    m_note->setVisible(empty);
    m_table->setFixedHeight(empty ? TableHeaderHeight : m_tableHeight);
}

void ListPage::show() {
    showNote();
    m_page->show();
}

void ListPage::hide() {
    m_page->hide();
}

} // namespace Kavor::HandheldGui
