#pragma once

#include "lists/background_work.h"
#include "lists/lists_ops.h"
#include "lists/sticks.h"
#include "lists/table/list_files.h"
#include "portable/screens/lists/steplistkind.h"

#include <QObject>
#include <QTimer>
#include <functional>
#include <optional>

class IListConfig;
class QLabel;

namespace Kavor::HandheldGui {

class PageGroup;
class PanelHost;
class PlaceTabs;

/// The file browser of a list screen and what it leads to: the questions, the saving, loading and deleting, and the
/// words about what went wrong. Files are the device's or, while there is one, a stick's; a stick is worked in the
/// background, and whatever is shown when its answer comes stays. GUI thread.
class ListFilesView : public QObject {
    Q_OBJECT

public:
    /// Characters of a name that is typed: with ".json" behind it, it fits the name's field of the record.
    static constexpr int LongestTypedName = 26;

    /// Fills the group. list gives the list to save or to load into.
    ListFilesView(PanelHost& host, const StepListKind& kind, PageGroup& group, std::function<IListConfig&()> list);

    /// Shows the current channel's files. False, and the user has been told, when they cannot be looked up.
    [[nodiscard]] bool open(ListFileMode mode);

    /// The page is left: what a stick answers from now on changes nothing on the screen.
    void leave();

public slots:
    void onFileSelected(ListFileMode mode, const QString& name, bool isNewFile);

signals:
    void saved(const QString& name);
    void loaded(const QString& name);
    void cancelled();

private:
    /// Whether and how a page was left or moved on since.
    struct Turn {
        unsigned number;
        unsigned channel;
    };
    Turn turn() const;
    bool isStill(const Turn& turn) const;

    void save(QString name, bool isNewFile);
    void load(const QString& name);
    void erase(const QString& name);
    [[nodiscard]] bool askForName(QString& name);
    [[nodiscard]] bool mayOverwrite(const QString& file, bool isThere);
    void goTo(const std::optional<Stick>& place);
    void lookForSticks();
    void listStick(const Stick& stick);
    void loadFrom(const Stick& stick, const QString& name);
    void saveTo(const Stick& stick, QString name, bool isNewFile);
    /// Does what a stick may block, and then what that returns. Taps on files do nothing meanwhile.
    void inBackground(const QString& doing, const BackgroundWork::Work& work);
    void moveOn();

    PanelHost& m_host;
    const StepListKind& m_kind;
    std::function<IListConfig&()> m_list;
    ListsOps m_files;
    ListFiles* m_browser;
    PlaceTabs* m_places;
    QLabel* m_doing; ///< what goes on in the background
    QTimer m_second;
    unsigned m_turn = 0; ///< goes up when the page is opened, left, or shows another place
    unsigned m_busy = 0; ///< the turn in which work is under way
    QStringList m_stickFiles;
    BackgroundWork* m_work;
};

} // namespace Kavor::HandheldGui
