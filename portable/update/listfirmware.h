#pragma once

#include "common/update/package_look.h"
#include "common/update/update_memory.h"

#include <QTableWidget>
#include <memory>

class QTimer;

namespace Kavor::HandheldGui {

struct UpdateSettings;

/// The update packages on the removable media. A row is chosen by a touch. While the list is shown, media that come or
/// go change it; the chosen row stays chosen where its package is still there. GUI thread; the media are read on
/// another.
class fwList : public QTableWidget {
    Q_OBJECT

public:
    fwList(QWidget* parent, const UpdateSettings& settings);
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

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void onScanned();
    void onSecond();
    void onWatch();
    void fill();
    void addRow(const MANIFEST_DATA& package);
    QString chosenPath() const;
    void choose(const QString& manifestPath);
    void onClick(int row, int column);

    const UpdateMemory m_memory;
    std::shared_ptr<fwData> m_packages;
    std::unique_ptr<PackageScan> m_scan;
    QTimer* m_second;
    QTimer* m_watch;
    QString m_root; ///< of the last look
    int m_seconds = 0;
};

} // namespace Kavor::HandheldGui
