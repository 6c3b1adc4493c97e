#pragma once

#include "lists/table/list_table.h"
#include "portable/host/iguiscreen.h"
#include "portable/screens/lists/list_filesview.h"
#include "portable/screens/lists/steplistkind.h"

#include <map>
#include <optional>

class QLabel;
class QPushButton;

namespace Kavor::HandheldGui {

class EnableBox;
class PageGroup;
class RowTools;

/// What the list screen and the pattern screen are: a page with the table of steps, the settings and the buttons, and
/// a page with the saved files. Each channel has a list of its own. GUI thread.
class StepListScreen : public IGuiScreen {
    Q_OBJECT

public:
    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

    /// Shows the page of the table or of the files; any other state leaves the page as it is.
    void update_static_controls(STATE state);

public slots:
    void onAddStep();
    void onDeleteStep();
    void onNew();
    void onUpload();
    void onFiles(ListFileMode mode);
    void onCancel();
    void onEditRequested(const ListEditRequest& request);

protected:
    StepListScreen(QWidget* parent, std::vector<STATE> states, const StepListKind& kind);

    /// The current channel's list with the module's limits.
    virtual IListConfig& list() = 0;
    virtual int upload() = 0;
    /// The list on screen came from a file.
    virtual void onLoaded() {}

    /// Shows the current channel's list; to be called once the derived screen is built.
    void showList();

    /// To be called when steps have changed: shows whether they are still those of the file and of the module.
    void showOrigin();

    ListTable& table() const { return *m_table; }
    PageGroup& settingsGroup() const { return *m_settings; }
    void addCaption(int x, const QString& text);
    bool isRunning() const;
    bool isEnabled() const; ///< on the module
    QString named(const char* part) const;

    static constexpr int SettingsRow = 36; ///< top of the controls of the settings group

private:
    void buildTable();
    void buildSettings();
    void buildButtons();
    void afterChange(bool done, const QString& error);
    void takeName(const QString& name);

    /// Where a channel's list has come from and gone to.
    struct Origin {
        QString file;                 ///< that it was last loaded from or saved to; empty: none
        quint64 kept = 0;             ///< fingerprint of the steps in that file
        std::optional<quint64> given; ///< of those that the module has taken
    };

    const StepListKind& m_kind;
    QWidget* m_page;
    PageGroup* m_tableGroup = nullptr;
    PageGroup* m_settings = nullptr;
    PageGroup* m_filesGroup = nullptr;
    ListTable* m_table = nullptr;
    ListFilesView* m_files = nullptr;
    EnableBox* m_enable = nullptr;
    QLabel* m_name = nullptr;
    QLabel* m_unsaved = nullptr; ///< the mark of a list that differs from its file
    RowTools* m_tools = nullptr;
    std::vector<QPushButton*> m_tableButtons;
    QPushButton* m_upload = nullptr;
    QPushButton* m_cancel = nullptr;
    std::map<unsigned, Origin> m_origins; ///< by channel
};

} // namespace Kavor::HandheldGui
