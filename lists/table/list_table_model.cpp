#include "lists/table/list_table_model.h"

#include "lists/list_config.h"
#include "lists/table/list_table_delegate.h"

void ListTableModel::setConfig(IListConfig* config) {
    beginResetModel();
    m_config = config;
    m_rows = config ? config->rowCount() : 0;
    endResetModel();
}

void ListTableModel::reload() {
    setConfig(m_config);
}

void ListTableModel::stepAppended() {
    beginInsertRows(QModelIndex(), m_rows, m_rows);
    ++m_rows;
    endInsertRows();
}

void ListTableModel::stepRemoved(int row) {
    beginRemoveRows(QModelIndex(), row, row);
    --m_rows;
    endRemoveRows();
    if (row < m_rows)
        emit dataChanged(index(row, 0), index(m_rows - 1, 0)); // the numbers of the steps behind it
}

void ListTableModel::stepInserted(int row) {
    beginInsertRows(QModelIndex(), row, row);
    ++m_rows;
    endInsertRows();
    emit dataChanged(index(row, 0), index(m_rows - 1, 0)); // the numbers of the steps behind it
}

void ListTableModel::stepChanged(int row) {
    emit dataChanged(index(row, 0), index(row, columnCount() - 1));
}

int ListTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rows;
}

int ListTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_config ? 0 : m_config->columnCount();
}

QVariant ListTableModel::data(const QModelIndex& index, int role) const {
    if (!m_config || !index.isValid())
        return {};
    if (role == Qt::DisplayRole)
        return m_config->cellText(index.row(), index.column());
    if (role == ListCellDelegate::KindRole)
        return static_cast<int>(m_config->column(index.column()).kind);
    if (role == ListCellDelegate::QuietRole)
        return !m_config->isCellEditable(index.row(), index.column());
    if (role == ListCellDelegate::WrongRole)
        return !m_config->cellProblem(index.row(), index.column()).isEmpty();
    return {};
}

QVariant ListTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (m_config && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return m_config->column(section).title;
    return {};
}
