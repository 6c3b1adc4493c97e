#pragma once

class QTableWidget;
class QWidget;

namespace Kavor::HandheldGui {

class PanelHost;

/// What the system screen needs of the software update: the list of packages that it shows on a sub-page. What happens
/// when a row is chosen is the list's own business. GUI thread.
class UpdateEntry {
public:
    virtual ~UpdateEntry() = default;

    /// Makes the list. Called once, when the system screen is built; the parent owns it.
    virtual QTableWidget* makeList(QWidget* parent, PanelHost& host) = 0;

    /// Looks for packages again and fills the list. Called whenever the sub-page is opened.
    virtual void refresh() = 0;
};

} // namespace Kavor::HandheldGui
