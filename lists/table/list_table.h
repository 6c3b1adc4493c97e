#pragma once

#include "lists/list_config.h"
#include "lists/table/list_table_view_config.h"

#include <QTableView>

class ListTableModel;

/// The steps of a list as a table that is worked by touch and by keys. Nothing is edited in place: a touch on a cell,
/// or Return or Enter on the current one, asks for an edit, and whoever hears that gives the value back to applyEdit().
/// Rows and columns count from 0. What fails returns false with a sentence for the user and leaves list and table as
/// they were. GUI thread.
class ListTable : public QTableView {
    Q_OBJECT

public:
    explicit ListTable(QWidget* parent = nullptr);

    /// The list to show; null for none. Not owned.
    void setListConfig(IListConfig* config);
    IListConfig* listConfig() const;

    void applyViewConfig(const ListTableViewConfig& config);

    /// Shows the list anew, after it was changed from outside. Current cell and scroll position stay as far as they
    /// can.
    void refresh();

    /// Replaces the steps by one default step.
    [[nodiscard]] bool newList(QString& error);

    /// Appends a default step, which becomes the current one.
    [[nodiscard]] bool addStep(QString& error);

    /// Deletes the step of the current row.
    [[nodiscard]] bool deleteCurrentStep(QString& error);

    /// Puts a default step behind the current one, and makes it the current one; repeats the current step likewise.
    [[nodiscard]] bool insertStep(QString& error);
    [[nodiscard]] bool repeatCurrentStep(QString& error);

    /// Moves the current step up (by -1) or down (by 1); it stays the current one.
    [[nodiscard]] bool moveCurrentStep(int by, QString& error);

    [[nodiscard]] bool applyEdit(const ListEditRequest& request, const ListEditValue& value, QString& error);

    /// Emits editRequested() if the cell can be edited, and says whether.
    bool requestEdit(int row, int column);

    int rowCount() const;
    int columnCount() const;
    int currentRow() const { return currentIndex().row(); } ///< -1 when there is none, as the next one
    int currentColumn() const { return currentIndex().column(); }
    void setCurrentCell(int row, int column);

public slots:
    void onCellActivated(int row, int column) { requestEdit(row, column); }

signals:
    void editRequested(const ListEditRequest& request);
    void escapeRequested();

    /// The steps were replaced by newList(). What changes single steps emits it with the table's signals blocked: who
    /// calls those operations knows.
    void listChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    bool hasList(QString& error) const;
    void showInserted();
    void layColumnsOut();

    ListTableModel* m_model;
    int m_firstColumnWidth = 0;
};
