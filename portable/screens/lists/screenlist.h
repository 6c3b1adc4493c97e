#pragma once

#include "lists/frequency_list_config.h"
#include "portable/fields/valuefield.h"
#include "portable/screens/lists/list_store.h"
#include "portable/screens/lists/steplistscreen.h"

namespace Kavor::HandheldGui {

class ChoiceGroup;

/// The frequency list. It runs by the window's list on/off signal.
class listScreen : public StepListScreen {
    Q_OBJECT

public:
    enum RunType { List, Selection };
    enum DwellMode { Step, Fixed };

    listScreen(QWidget* parent, std::vector<STATE> states);
    ~listScreen() override;

public slots:
    /// 1 runs the list if it is enabled and does not run yet, 0 stops it if it runs, enabled or not.
    void onRunButton(int on);

    /// Whether each step has a dwell of its own, or all have the one of the fixed dwell entry.
    void setDwellMode(DwellMode mode);

    /// Gives every step the dwell that stands in the fixed dwell entry.
    void setFixedTime();

protected:
    IListConfig& list() override { return frequencies(); }
    int upload() override;
    void onLoaded() override { setDwellMode(Step); } // so that the file's dwells stand

private:
    FrequencyListConfig& frequencies();
    void buildRunType();
    void buildDwell();
    EntryResult applyFixedDwell(double ns);

    ListStore<FrequencyListConfig, FrequencyListLimits, list_point> m_lists;
    ChoiceGroup* m_runType = nullptr;
    ChoiceGroup* m_dwellMode = nullptr;
    BoundField m_fixed;
    int m_dwellX = 0;
    double m_fixedDwell = 0; ///< ns; the last one accepted
};

} // namespace Kavor::HandheldGui
