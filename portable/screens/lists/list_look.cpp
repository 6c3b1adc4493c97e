#include "portable/screens/lists/list_look.h"

#include "portable/widgets/listpage.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

namespace Kavor::HandheldGui {

namespace {
constexpr QRgb CurrentRow = 0xFF1B252E;
} // namespace

int listLookHeight(int rows) {
    return TableHeaderHeight + rows * Style::TableRowHeight;
}

ListTableViewConfig listLook(int x, int y, int width, int rows, int firstColumnWidth) {
    ListTableViewConfig config;
    config.geometry = QRect(x, y, width, listLookHeight(rows));
    config.rows = rows;
    config.firstColumnWidth = firstColumnWidth;
    config.headerHeight = TableHeaderHeight;
    config.tableStyle = LIST_STYLE + QStringLiteral("QTableView { font-size: %1px; }").arg(Style::TextValue);
    config.text = QColor(Style::Text);
    config.quietText = QColor(Style::Label);
    config.wrongText = QColor(Style::WrongText);
    config.line = QColor(Style::PanelEdge);
    config.row = QColor(CurrentRow);
    config.accent = QColor(Style::Active);
    config.button = QColor(Style::Raised);
    config.edge = QColor(Style::Edge);
    config.unitText = Style::TextLabel;
    config.smallText = Style::TextGroup;
    return config;
}

} // namespace Kavor::HandheldGui
