#include "lists/table/list_table.h"

#include "lists/table/list_table_model.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QSignalBlocker>

namespace {

// The share of the width that a column's texts need.
int shareOf(ListColumnKind kind) {
    switch (kind) {
    case ListColumnKind::Frequency:
        return 232;
    case ListColumnKind::Power:
        return 200;
    case ListColumnKind::Time:
    case ListColumnKind::Count:
        return 160;
    case ListColumnKind::Choice:
        return 124;
    case ListColumnKind::Step:
        break;
    }
    return 72;
}

} // namespace

ListTable::ListTable(QWidget* parent) : QTableView(parent), m_model(new ListTableModel(this)) {
    qRegisterMetaType<ListEditRequest>("ListEditRequest");
    setModel(m_model);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setSelectionBehavior(SelectItems);
    setVerticalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    connect(this, &QTableView::clicked, this,
            [this](const QModelIndex& index) { onCellActivated(index.row(), index.column()); });
}

void ListTable::setListConfig(IListConfig* config) {
    m_model->setConfig(config);
    layColumnsOut();
}

IListConfig* ListTable::listConfig() const {
    return m_model->config();
}

void ListTable::applyViewConfig(const ListTableViewConfig& config) {
    m_firstColumnWidth = config.firstColumnWidth;
    applyListViewConfig(*this, config);
    layColumnsOut();
}

int ListTable::rowCount() const {
    return m_model->rowCount();
}

int ListTable::columnCount() const {
    return m_model->columnCount();
}

void ListTable::setCurrentCell(int row, int column) {
    setCurrentIndex(m_model->index(row, column));
}

void ListTable::refresh() {
    const int row = currentRow();
    const int column = currentColumn();
    const int scrolled = verticalScrollBar()->value();
    const QSignalBlocker quiet(this);
    m_model->reload();
    layColumnsOut();
    if (row >= 0 && rowCount() > 0)
        setCurrentCell(qMin(row, rowCount() - 1), qMin(column, columnCount() - 1));
    verticalScrollBar()->setValue(scrolled);
}

bool ListTable::newList(QString& error) {
    if (!hasList(error) || !listConfig()->clearAndCreateDefault(error))
        return false;
    refresh();
    if (rowCount() > 0 && columnCount() > 1)
        setCurrentCell(0, 1);
    emit listChanged();
    return true;
}

bool ListTable::addStep(QString& error) {
    if (!hasList(error) || !listConfig()->addDefault(error))
        return false;
    const QSignalBlocker quiet(this);
    setUpdatesEnabled(false);
    m_model->stepAppended();
    setCurrentCell(rowCount() - 1, columnCount() > 1 ? 1 : 0);
    scrollTo(currentIndex());
    emit listChanged();
    setUpdatesEnabled(true);
    return true;
}

bool ListTable::deleteCurrentStep(QString& error) {
    const int row = currentRow();
    const int column = currentColumn();
    if (!hasList(error) || !listConfig()->deleteRow(row, error))
        return false;
    const QSignalBlocker quiet(this);
    m_model->stepRemoved(row);
    setCurrentCell(qMin(row, rowCount() - 1), qBound(0, column, columnCount() - 1));
    emit listChanged();
    return true;
}

void ListTable::showInserted() {
    const QSignalBlocker quiet(this);
    const int row = currentRow() + 1;
    m_model->stepInserted(row);
    setCurrentCell(row, qMax(currentColumn(), 0));
    scrollTo(currentIndex());
}

bool ListTable::insertStep(QString& error) {
    if (!hasList(error) || !listConfig()->insertDefault(currentRow(), error))
        return false;
    showInserted();
    return true;
}

bool ListTable::repeatCurrentStep(QString& error) {
    if (!hasList(error) || !listConfig()->repeatRow(currentRow(), error))
        return false;
    showInserted();
    return true;
}

bool ListTable::moveCurrentStep(int by, QString& error) {
    const int row = currentRow();
    if (!hasList(error) || !listConfig()->moveRow(row, by, error))
        return false;
    const QSignalBlocker quiet(this);
    m_model->stepChanged(row);
    m_model->stepChanged(row + by);
    setCurrentCell(row + by, currentColumn());
    scrollTo(currentIndex());
    return true;
}

bool ListTable::applyEdit(const ListEditRequest& request, const ListEditValue& value, QString& error) {
    if (!hasList(error) || !listConfig()->applyEdit(request, value, error))
        return false;
    const QSignalBlocker quiet(this);
    m_model->stepChanged(request.row);
    setCurrentCell(request.row, request.column);
    emit listChanged();
    return true;
}

bool ListTable::requestEdit(int row, int column) {
    ListEditRequest request;
    if (!listConfig() || !listConfig()->getEditRequest(row, column, request))
        return false;
    emit editRequested(request);
    return true;
}

void ListTable::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        requestEdit(currentRow(), currentColumn());
        break;
    case Qt::Key_Escape:
        emit escapeRequested();
        break;
    default:
        QTableView::keyPressEvent(event);
    }
}

void ListTable::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    layColumnsOut(); // a scroll bar that comes or goes changes the room
}

// The whole row stands out, not the current cell alone.
void ListTable::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    for (const QModelIndex& index : {current, previous}) {
        if (index.isValid())
            viewport()->update(0, rowViewportPosition(index.row()), viewport()->width(), rowHeight(index.row()));
    }
}

bool ListTable::hasList(QString& error) const {
    if (!listConfig())
        error = QStringLiteral("List configuration is not set");
    return listConfig() != nullptr;
}

void ListTable::layColumnsOut() {
    int room = viewport()->width();
    int shares = 0;
    for (int i = 0; i < columnCount(); ++i)
        shares += shareOf(listConfig()->column(i).kind);
    for (int i = 0; i < columnCount(); ++i) {
        const int share = shareOf(listConfig()->column(i).kind);
        const int width = i == 0 && m_firstColumnWidth > 0 ? m_firstColumnWidth : room * share / qMax(shares, 1);
        horizontalHeader()->resizeSection(i, width);
        room -= width;
        shares -= share;
    }
}
