#include "portable/screens/channels/channelrow.h"

#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/tokens.h"

#include <QPainter>

namespace Kavor::HandheldGui {

namespace {

constexpr QSize Pill(96, 52);
constexpr int NumberEnd = 120; ///< of a column: where its number ends and its unit begins
constexpr int UnitGap = 14;
constexpr int BarWidth = 8;
constexpr int FrameWidth = 3;
constexpr QRgb ChosenGround = 0xFF1B252E;

QFont fontOf(int pixels, bool strong) {
    QFont font(QStringLiteral("Segoe UI"));
    font.setPixelSize(pixels);
    font.setWeight(strong ? QFont::DemiBold : QFont::Normal);
    return font;
}

/// A painter of words on the middle line of a row.
struct Words {
    QPainter& painter;
    int height;

    void draw(int x, int width, const QString& text, int pixels, bool strong, QRgb colour,
              Qt::Alignment side = Qt::AlignLeft) const {
        painter.setFont(fontOf(pixels, strong));
        painter.setPen(QColor(colour));
        painter.drawText(QRect(x, 0, width, height), static_cast<int>(side | Qt::AlignVCenter), text);
    }

    void pill(const QRect& place, const QString& text, QRgb fill, QRgb on, int radius) const {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(fill));
        painter.drawRoundedRect(place, radius, radius);
        painter.setFont(fontOf(Style::TextLabel, true));
        painter.setPen(QColor(on));
        painter.drawText(place, Qt::AlignCenter, text);
    }

    /// Numbers end below each other, units begin below each other.
    void value(int x, const QString& text, QRgb number, QRgb unit) const {
        const int blank = text.indexOf(QLatin1Char(' '));
        draw(x, NumberEnd, text.left(blank), Style::TextValue, true, number, Qt::AlignRight);
        draw(x + NumberEnd + UnitGap, 80, text.mid(blank + 1), Style::TextLabel, false, unit);
    }
};

} // namespace

bool ChannelRow::Facts::operator==(const Facts& other) const {
    return frequency == other.frequency && power == other.power && mode == other.mode && connected == other.connected &&
           radiates == other.radiates && runs == other.runs && stale == other.stale;
}

ChannelRow::ChannelRow(QWidget* parent, const QString& name) : QAbstractButton(parent) {
    setText(name);
    setFocusPolicy(Qt::NoFocus);
}

void ChannelRow::setFacts(const Facts& facts) {
    if (facts == m_facts)
        return;
    m_facts = facts;
    update();
}

void ChannelRow::setChosen(bool chosen) {
    if (chosen == m_chosen)
        return;
    m_chosen = chosen;
    update();
}

void ChannelRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_chosen || isDown()) {
        const double inset = FrameWidth / 2.0;
        painter.setPen(m_chosen ? QPen(QColor(Style::Active), FrameWidth) : QPen(Qt::NoPen));
        painter.setBrush(QColor(isDown() ? Style::Raised : ChosenGround));
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), Style::Radius, Style::Radius);
    }
    if (m_chosen)
        painter.fillRect(0, 2, BarWidth, height() - 4, QColor(Style::Active));

    const Words words{painter, height()};
    const QRgb value = m_facts.stale ? Style::Stale : Style::Text;
    const QRgb label = m_facts.stale ? Style::Stale : Style::Label;
    words.draw(Name, State - Name, text(), Style::TextLabel, true, m_facts.connected ? value : label);
    if (!m_facts.connected) {
        words.pill(QRect(State - 2, (height() - 44) / 2, 152, 44), QStringLiteral("No module"), Style::Wrong,
                   Style::OnWrong, Style::Radius);
        for (const int x : {int(Frequency), int(Power), int(Rf) + 8, int(Mode)})
            words.draw(x, 60, QStringLiteral("---"), Style::TextValue, false, label);
        return;
    }
    words.draw(State, Frequency - State, QStringLiteral("Connected"), Style::TextGroup, false, label);
    words.value(Frequency - 18, m_facts.frequency, value, label);
    words.value(Power - 18, m_facts.power, value, label);
    const QRect pill(QPoint(Rf, (height() - Pill.height()) / 2), Pill);
    if (m_facts.radiates)
        words.pill(pill, QStringLiteral("On"), m_facts.stale ? Style::RaisedDown : Style::RfOn,
                   m_facts.stale ? Style::Text : Style::OnRfOn, Pill.height() / 2);
    else
        words.draw(pill.x(), pill.width(), QStringLiteral("Off"), Style::TextLabel, false, label, Qt::AlignHCenter);
    int x = Mode;
    const bool lit = m_facts.runs && !m_facts.stale;
    if (lit) {
        painter.drawPixmap(x - 6, (height() - LineIconSize) / 2, linePixmap(LineIcon::Run, Style::Active));
        x += LineIconSize - 4;
    }
    const QFont font = fontOf(Style::TextLabel, m_facts.runs);
    words.draw(x, width() - x - 16, QFontMetrics(font).elidedText(m_facts.mode, Qt::ElideRight, width() - x - 16),
               Style::TextLabel, m_facts.runs, lit ? Style::Active : value);
}

} // namespace Kavor::HandheldGui
