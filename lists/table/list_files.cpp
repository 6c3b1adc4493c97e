#include "lists/table/list_files.h"

#include "lists/lists_ops.h"
#include "lists/table/list_table_delegate.h"

#include <QHeaderView>
#include <QKeyEvent>

namespace {
constexpr int NumberColumn = 0;
constexpr int NameColumn = 1;
constexpr int DefaultNumberWidth = 50;
} // namespace

ListFiles::ListFiles(QWidget* parent) : QTableWidget(parent) {
    qRegisterMetaType<ListFileMode>("ListFileMode");
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setSelectionBehavior(SelectRows);
    setVerticalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    connect(this, &QTableWidget::cellClicked, this, &ListFiles::onCellActivated);
}

void ListFiles::applyViewConfig(const ListTableViewConfig& config) {
    m_firstColumnWidth = config.firstColumnWidth;
    applyListViewConfig(*this, config);
}

QString ListFiles::titleForMode() const {
    switch (m_mode) {
    case ListFileMode::Load:
        return QStringLiteral("SELECT FILE TO LOAD");
    case ListFileMode::Save:
        return QStringLiteral("SELECT NEW FILE OR CHOOSE EXISTING");
    case ListFileMode::Delete:
        return QStringLiteral("SELECT FILE TO DELETE");
    }
    return QString();
}

bool ListFiles::refresh(QString& error) {
    if (!m_files) {
        error = QStringLiteral("List file operations are not configured");
        return false;
    }
    QStringList names;
    if (!m_files->enumerate(m_channel, names, error))
        return false;
    rebuild(names);
    return true;
}

void ListFiles::rebuild(const QStringList& names) {
    setUpdatesEnabled(false);
    clear();
    const int newFiles = m_mode == ListFileMode::Save ? m_newFiles.size() : 0;
    setColumnCount(2);
    setHorizontalHeaderLabels({QStringLiteral("#"), titleForMode()});
    horizontalHeader()->setSectionResizeMode(NumberColumn, QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    setColumnWidth(NumberColumn, m_firstColumnWidth > 0 ? m_firstColumnWidth : DefaultNumberWidth);
    setRowCount(names.size() + newFiles);
    for (int i = 0; i < newFiles; ++i)
        addRow(i, QStringLiteral("+"), m_newFiles.at(i), true);
    for (int i = 0; i < names.size(); ++i)
        addRow(i + newFiles, QString::number(i + 1), names.at(i), false);
    if (rowCount() > 0)
        setCurrentCell(0, NumberColumn);
    setUpdatesEnabled(true);
}

void ListFiles::addRow(int row, const QString& number, const QString& name, bool isNewFile) {
    for (int column : {NumberColumn, NameColumn}) {
        auto* item = new QTableWidgetItem(column == NumberColumn ? number : name);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        item->setData(NewFileRole, isNewFile);
        item->setData(ListCellDelegate::QuietRole, column == NumberColumn && !isNewFile);
        setItem(row, column, item);
    }
}

QString ListFiles::selectedFilename() const {
    const QTableWidgetItem* name = item(currentRow(), NameColumn);
    return name && !selectedItemIsNewFile() ? name->text() : QString();
}

bool ListFiles::selectedItemIsNewFile() const {
    const QTableWidgetItem* name = item(currentRow(), NameColumn);
    return name && name->data(NewFileRole).toBool();
}

bool ListFiles::activateCurrent() {
    const QString name = selectedFilename();
    const bool isNewFile = selectedItemIsNewFile();
    if (!isNewFile && name.isEmpty())
        return false;
    emit fileSelected(m_mode, name, isNewFile);
    return true;
}

void ListFiles::onCellActivated(int row, int column) {
    setCurrentCell(row, column);
    activateCurrent();
}

void ListFiles::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        activateCurrent();
        break;
    case Qt::Key_Escape:
        emit escapeRequested();
        break;
    default:
        QTableWidget::keyPressEvent(event);
    }
}

void ListFiles::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableWidget::currentChanged(current, previous);
    viewport()->update();
}
