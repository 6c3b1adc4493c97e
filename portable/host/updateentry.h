#pragma once

#include "common/update/datafw.h"

#include <QObject>

class QTableWidget;
class QWidget;

namespace Kavor::HandheldGui {

class PanelHost;

/// What the system screen needs of the software update: the list of packages that it shows on a sub-page, and the
/// installation of a package chosen in it. GUI thread.
class UpdateEntry : public QObject {
    Q_OBJECT

public:
    /// Makes the list. Called once, when the system screen is built; the parent owns it.
    virtual QTableWidget* makeList(QWidget* parent, PanelHost& host) = 0;

    /// Makes the widget that says how the last updates ended, to stand below the list. As makeList.
    virtual QWidget* makeHistory(QWidget* parent) = 0;

    /// Looks for packages again; the list fills when they have been found. Called whenever the sub-page is opened;
    /// returns at once.
    virtual void refresh() = 0;

    /// Asks whether the package is to be installed and does it; returns when the user has been told the outcome.
    virtual void install(MANIFEST_DATA& package, PanelHost& host) = 0;

signals:
    /// A row was touched; the record stays while the signal is handled.
    void chosen(MANIFEST_DATA* package);

    /// What the list says in place of rows.
    void noteChanged(const QString& note);
};

} // namespace Kavor::HandheldGui
