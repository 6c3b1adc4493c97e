#pragma once

#include "portable/host/updateentry.h"
#include "portable/update/update_flows.h"

namespace Kavor::HandheldGui {

class fwList;

/// The packages on the removable media and their installation. It outlives the window that shows the list.
class UpdatePackages : public UpdateEntry {
    Q_OBJECT

public:
    explicit UpdatePackages(const UpdateSettings& settings = {});

    /// Tells of an installation that was cut off by what ended the panel, or the instrument, before. At start.
    void tellUnfinished(PanelHost& host) const;

    QTableWidget* makeList(QWidget* parent, PanelHost& host) override;
    void refresh() override;
    void install(MANIFEST_DATA& package, PanelHost& host) override;

private:
    UpdateSettings m_settings;
    fwList* m_list = nullptr; ///< the window's
};

} // namespace Kavor::HandheldGui
