#pragma once

#include <QAbstractTableModel>

class IListConfig;

/// Shows a list to a view, which asks for the cells that it paints and for no others. It follows the list when it is
/// told what has become of it; until then it stands by the number of rows that the view knows. GUI thread.
class ListTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit ListTableModel(QObject* parent) : QAbstractTableModel(parent) {}

    /// May be null: no rows. Not owned.
    void setConfig(IListConfig* config);
    IListConfig* config() const { return m_config; }

    // The list has changed: in all, by a step at its end, by one step less, in one step.
    void reload();
    void stepAppended();
    void stepRemoved(int row);
    void stepChanged(int row);
    void stepInserted(int row); ///< it stands there now

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    IListConfig* m_config = nullptr;
    int m_rows = 0;
};
