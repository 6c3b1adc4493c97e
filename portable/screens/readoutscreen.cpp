#include "portable/screens/readoutscreen.h"

#include "common/instrument/handlerscpi.h"
#include "portable/panelhost.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>

namespace Kavor::HandheldGui {

namespace {
constexpr int FirstRow = 64;
constexpr int RowHeight = 56;
constexpr int ValueX = 280;
} // namespace

ReadoutScreen::ReadoutScreen(QWidget* parent, std::vector<STATE> states, const QString& pageName, const QString& header,
                             const QString& title, const std::vector<Row>& rows)
    : IGuiScreen(parent, std::move(states)), m_page(makePage(pageName)), m_header(header), m_rows(rows) {
    const int width = Style::WindowWidth - 2 * Style::PageMargin;
    auto* group = new PageGroup(m_page, title, QRect(Style::PageMargin, 0, width, Style::PageHeight - 8));
    int y = FirstRow;
    for (const Row& row : m_rows) {
        applySheet(group->addLabel(PageGroup::Left.labelX, y, ValueX - PageGroup::Left.labelX, RowHeight, row.label),
                   DYN_LABEL_STYLE);
        QLabel* value = group->addLabel(ValueX, y, width - ValueX - PageGroup::Left.labelX, RowHeight, QString());
        applySheet(value, DYN_VALUE_STYLE);
        m_values.push_back(value);
        y += RowHeight;
    }
}

void ReadoutScreen::update_from_config(STATE) {
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        m_values[i]->setText(m_rows[i].value(handler().snapshot()));
}

void ReadoutScreen::show() {
    if (!m_header.isEmpty())
        host().setHeaderBar(m_header);
    m_page->show();
}

void ReadoutScreen::hide() {
    m_page->hide();
}

} // namespace Kavor::HandheldGui
