#pragma once

#include "common/update/package_look.h"

#include <QTableWidget>
#include <memory>

class QTimer;

namespace Kavor::HandheldGui {

/// The update packages on the removable media. A row is chosen by a touch. GUI thread; the media are read on another.
class fwList : public QTableWidget {
    Q_OBJECT

public:
    explicit fwList(QWidget* parent, PackageLook look = packagesBelow);
    ~fwList() override;

    /// With the mode "load" empties the table and looks for packages; any other mode gives an empty table. The number
    /// is not used. Returns at once.
    void update_view(unsigned number, const QString& mode);

    /// Looks for packages below a folder; the rows come when it has been read. The records in the table stay until
    /// then.
    void load_list(const QString& root);

signals:
    /// A row was touched. The record is good while the signal is handled, whatever is looked for meanwhile.
    void loadList(MANIFEST_DATA* package);

    /// What the list says in place of rows: that it looks, for how long, or that there is nothing.
    void noteChanged(const QString& note);

    /// The look has failed: what the user is to read.
    void failed(const QString& message);

private:
    void onScanned();
    void onSecond();
    void fill();
    void onClick(int row, int column);

    std::shared_ptr<fwData> m_packages;
    std::unique_ptr<PackageScan> m_scan;
    QTimer* m_second;
    int m_seconds = 0;
};

} // namespace Kavor::HandheldGui
