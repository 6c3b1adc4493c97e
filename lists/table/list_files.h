#pragma once

#include "lists/table/list_table_view_config.h"

#include <QMetaType>
#include <QTableWidget>

class ListsOps;

/// What the file browser is open for.
enum class ListFileMode { Load = 0, Save = 1, Delete = 2 };
Q_DECLARE_METATYPE(ListFileMode)

/// The saved lists of a channel, and for saving a row for a new one. A touch on a row, or Return or Enter on the
/// current one, is a choice; what is done about it is for whoever hears fileSelected(). GUI thread.
class ListFiles : public QTableWidget {
    Q_OBJECT

public:
    /// Of both items of a row: whether it stands for a new file.
    static constexpr int NewFileRole = Qt::UserRole + 1;

    explicit ListFiles(QWidget* parent = nullptr);

    void setListsOps(ListsOps* files) { m_files = files; } ///< not owned
    ListsOps* listsOps() const { return m_files; }
    void setChannel(unsigned int channel) { m_channel = channel; } ///< from 0
    unsigned int channel() const { return m_channel; }
    void setMode(ListFileMode mode) { m_mode = mode; }
    ListFileMode mode() const { return m_mode; }

    /// What the rows for a new file say, of which there is one for each kind of file; "new file" by default.
    void setNewFiles(const QStringList& texts) { m_newFiles = texts; }

    void applyViewConfig(const ListTableViewConfig& config);

    QString titleForMode() const;

    /// Looks the channel's files up and shows them. False, with a sentence for the user, leaves the rows as they were.
    [[nodiscard]] bool refresh(QString& error);

    /// Shows these names in their order, with the row for a new file above them when saving.
    void rebuild(const QStringList& names);

    /// Empty for the row of a new file, and without a current row.
    QString selectedFilename() const;
    bool selectedItemIsNewFile() const;

    /// Reports the current row; false when there is nothing to report.
    bool activateCurrent();

public slots:
    void onCellActivated(int row, int column);

signals:
    void fileSelected(ListFileMode mode, const QString& name, bool isNewFile);
    void escapeRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void addRow(int row, const QString& number, const QString& name, bool isNewFile);

    ListsOps* m_files = nullptr;
    unsigned int m_channel = 0;
    ListFileMode m_mode = ListFileMode::Load;
    int m_firstColumnWidth = 0;
    QStringList m_newFiles{QStringLiteral("new file")};
};
