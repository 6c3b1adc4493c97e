#pragma once

#include <QLabel>

class QTableView;

namespace Kavor::HandheldGui {

/// Says in a table's header which row is the last in sight, and of how many: "12 / 40". Empty while all rows are. Lives
/// as long as the table; GUI thread.
class ScrollReadout : public QLabel {
    Q_OBJECT

public:
    explicit ScrollReadout(QTableView& table);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();

    QTableView& m_table;
};

} // namespace Kavor::HandheldGui
