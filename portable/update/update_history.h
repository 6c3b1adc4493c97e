#pragma once

#include "common/update/update_memory.h"

#include <QWidget>
#include <vector>

class QLabel;

namespace Kavor::HandheldGui {

/// How the last update of each kind ended, a line each, as it is when the widget is shown. GUI thread.
class UpdateHistory : public QWidget {
    Q_OBJECT

public:
    UpdateHistory(QWidget* parent, const UpdateMemory& memory);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Line {
        PackageType kind;
        bool ended = false;
        bool ok = false;
        QLabel* what;
        QLabel* end;
    };

    void refresh();

    const UpdateMemory m_memory;
    QLabel* m_title;
    std::vector<Line> m_lines;
};

} // namespace Kavor::HandheldGui
