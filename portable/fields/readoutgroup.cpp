#include "portable/fields/readoutgroup.h"

#include "portable/widgets/breakable.h"
#include "portable/widgets/freshness.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QFontMetrics>
#include <QLabel>

namespace Kavor::HandheldGui {

namespace {

constexpr int FirstRow = 48;

int widthOf(const QString& text, int pixels) {
    QFont font(QStringLiteral("Segoe UI"));
    font.setPixelSize(pixels);
    font.setWeight(QFont::DemiBold);
    return QFontMetrics(font).horizontalAdvance(text);
}

void showFitted(QLabel* label, const QString& text, bool grey) {
    const int room = label->width();
    const bool large = widthOf(text, Style::TextValue) <= room;
    const QString colour = grey ? QStringLiteral("QLabel { color: %1; }").arg(Style::css(Style::Stale)) : QString();
    applySheet(label, (large ? DYN_VALUE_STYLE : DYN_VALUE_STYLE2) + colour);
    const bool twoLines = !large && widthOf(text, Style::TextGroup) > room;
    label->setWordWrap(twoLines);
    label->setText(twoLines ? breakable(text, 1) : text);
}

} // namespace

ReadoutGroup::ReadoutGroup(QWidget* parent, const QString& title, const QRect& geometry, int valueX,
                           const std::vector<Row>& rows)
    : PageGroup(parent, title, geometry), m_rows(rows) {
    m_texts.resize(m_rows.size());
    connect(&Freshness::panel(), &Freshness::changed, this, [this] {
        for (std::size_t i = 0; i < m_rows.size(); ++i)
            showRow(i);
    });
    int y = FirstRow;
    for (const Row& row : m_rows) {
        addLine({Left.labelX, y, geometry.width() - 2 * Left.labelX, 1});
        addLabel(Left.labelX, y, valueX - Left.labelX - Style::Gap, RowHeight, row.label);
        QLabel* value = addLabel(valueX, y, geometry.width() - valueX - Left.labelX, RowHeight, QString());
        value->setObjectName(row.name);
        value->setTextFormat(Qt::PlainText); // the module's texts are not trusted to be free of markup
        m_values.push_back(value);
        y += RowHeight;
    }
}

void ReadoutGroup::readFrom(const ChannelRecord& record) {
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        // Compared before the fitting, which costs more than the refresh of a second may.
        const QString text = m_rows[i].value(record);
        if (m_texts[i] == text && !m_texts[i].isNull())
            continue;
        m_texts[i] = text;
        showRow(i);
    }
}

void ReadoutGroup::showRow(std::size_t row) {
    const Freshness& freshness = Freshness::panel();
    const bool ofModule = m_rows[row].ofModule;
    showFitted(m_values[row], ofModule ? freshness.shown(m_texts[row]) : m_texts[row], ofModule && freshness.isStale());
}

int ReadoutGroup::rowsEnd() const {
    return FirstRow + static_cast<int>(m_rows.size()) * RowHeight;
}

} // namespace Kavor::HandheldGui
