#pragma once

#include "lists/lists_ops.h"
#include "lists/table/list_files.h"
#include "portable/screens/lists/steplistkind.h"

#include <QObject>
#include <functional>

class IListConfig;

namespace Kavor::HandheldGui {

class PageGroup;
class PanelHost;

/// The file browser of a list screen and what it leads to: the questions, the saving, loading and deleting, and the
/// words about what went wrong. GUI thread.
class ListFilesView : public QObject {
    Q_OBJECT

public:
    /// Characters of a name that is typed: with ".json" behind it, it fits the name's field of the record.
    static constexpr int LongestTypedName = 26;

    /// Fills the group. list gives the list to save or to load into.
    ListFilesView(PanelHost& host, const StepListKind& kind, PageGroup& group, std::function<IListConfig&()> list);

    /// Shows the current channel's files. False, and the user has been told, when they cannot be looked up.
    [[nodiscard]] bool open(ListFileMode mode);

public slots:
    void onFileSelected(ListFileMode mode, const QString& name, bool isNewFile);

signals:
    void saved(const QString& name);
    void loaded(const QString& name);
    void cancelled();

private:
    void save(QString name, bool isNewFile);
    void load(const QString& name);
    void erase(const QString& name);

    PanelHost& m_host;
    const StepListKind& m_kind;
    std::function<IListConfig&()> m_list;
    ListsOps m_files;
    ListFiles* m_browser;
};

} // namespace Kavor::HandheldGui
