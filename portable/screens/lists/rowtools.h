#pragma once

#include <QObject>
#include <functional>
#include <vector>

class QPushButton;
class ListTable;

namespace Kavor::HandheldGui {

class PageGroup;
class PanelHost;
class ToolKey;

/// What stands beside the table of steps: where in the list the table is, as a key that asks for the step to go to;
/// what can be done with the current step as a whole; and the table's handle. GUI thread.
class RowTools : public QObject {
    Q_OBJECT

public:
    static constexpr int X = 784; ///< left edge in the group; the table ends 12 pixels before it

    /// prefix: of the object names, "Position", "Insert", "Repeat", "Up" and "Down" behind it. changed: is told what
    /// became of a change of the list.
    RowTools(PanelHost& host, PageGroup& group, ListTable& table, const QString& prefix,
             std::function<void(bool done, const QString& error)> changed);

    /// To be called when the list is another one or has changed.
    void refresh();

private:
    void goTo();

    PanelHost& m_host;
    ListTable& m_table;
    std::function<void(bool, const QString&)> m_changed;
    QPushButton* m_position;
    std::vector<ToolKey*> m_keys;
};

} // namespace Kavor::HandheldGui
