#pragma once

#include "portable/host/updateentry.h"
#include "portable/update/update_flows.h"

namespace Kavor::HandheldGui {

class fwList;

/// The packages on the removable media and their installation. It outlives the window that shows the list.
class UpdatePackages : public UpdateEntry {
    Q_OBJECT

public:
    explicit UpdatePackages(const UpdateSettings& settings = UpdateSettings());

    /// At start: sweeps what an update left that was cut off by what ended the panel, or the instrument, before; tells
    /// of an installation that was; remembers the policy that is stated.
    void clearUp(PanelHost& host) const;

    QTableWidget* makeList(QWidget* parent, PanelHost& host) override;
    QWidget* makeHistory(QWidget* parent) override;
    void refresh() override;
    void install(MANIFEST_DATA& package, PanelHost& host) override;

private:
    QString noteOf(const MANIFEST_DATA& package, const char* after) const;

    UpdateSettings m_settings;
    fwList* m_list = nullptr; ///< the window's
};

} // namespace Kavor::HandheldGui
