#include "portable/update/board_rows.h"

#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QPainter>

namespace Kavor::HandheldGui {

namespace {

constexpr int RowsWidth = 896;
constexpr int RowHeight = 68;
constexpr int NameX = 8;
constexpr int NameWidth = 136;
constexpr int AddressX = NameX + NameWidth;
constexpr int AddressWidth = 208;
constexpr int BarX = AddressX + AddressWidth + 8;
constexpr int BarWidth = 232;
constexpr qreal BarHeight = 12;
constexpr int MarkX = BarX + BarWidth + 32;
constexpr int WordX = MarkX + LineIconRoom.width();

struct Look {
    LineIcon mark;
    QRgb colour;
    QString word;
};

Look lookOf(const FpgaBoardState& state) {
    if (state.isSilent)
        return {LineIcon::Cross, Style::WrongText, QStringLiteral("no answer for %1 s").arg(state.quietMs / 1000)};
    switch (state.phase) {
    case FpgaBoardState::Waiting:
        break;
    case FpgaBoardState::Acknowledged:
        return {LineIcon::Tick, Style::Active, QStringLiteral("acknowledged")};
    case FpgaBoardState::Programming:
        return {LineIcon::Clock, Style::Active, QStringLiteral("programming")};
    case FpgaBoardState::Done:
        return {LineIcon::Tick, Style::Text, QStringLiteral("done")};
    }
    return {LineIcon::Clock, Style::Label, QStringLiteral("waiting")};
}

QString coloured(QRgb colour, const QString& more = {}) {
    return QStringLiteral("QLabel { color: %1; font-size: %2px; %3 }")
        .arg(Style::css(colour))
        .arg(Style::TextLabel)
        .arg(more);
}

} // namespace

BoardRows::BoardRows(QWidget* parent, const QVector<QHostAddress>& boards) : QWidget(parent) {
    setFixedHeight(RowHeight * boards.size() + 1);
    const auto label = [this](const QString& text, int row, int x, int width, const QString& name) {
        auto* made = new QLabel(text, this);
        made->setObjectName(name + QString::number(row + 1));
        made->setGeometry(x, row * RowHeight + 2, width, RowHeight - 4);
        return made;
    };
    for (int row = 0; row < boards.size(); ++row) {
        FpgaBoardState state;
        state.address = boards[row];
        m_states << state;
        label(QStringLiteral("Board %1").arg(row + 1), row, NameX, NameWidth, QStringLiteral("boardName"))
            ->setStyleSheet(coloured(Style::Text, QStringLiteral("font-weight: 504;")));
        label(boards[row].toString(), row, AddressX, AddressWidth, QStringLiteral("boardAddress"))
            ->setStyleSheet(coloured(Style::Text));
        m_words.push_back(label(QString(), row, WordX, RowsWidth - WordX, QStringLiteral("boardWord")));
    }
    setStates(m_states);
}

QRect BoardRows::rowPlace(int row) const {
    return {0, row * RowHeight, width(), RowHeight};
}

void BoardRows::setStates(const FpgaBoardStates& states) {
    for (int row = 0; row < states.size() && row < m_states.size(); ++row) {
        const auto at = static_cast<std::size_t>(row);
        const Look look = lookOf(states[row]);
        m_states[row] = states[row];
        if (m_words[at]->text() == look.word)
            continue;
        m_words[at]->setText(look.word);
        m_words[at]->setStyleSheet(coloured(look.colour == Style::Active ? Style::Text : look.colour));
    }
    update();
}

void BoardRows::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int row = 0; row < m_states.size(); ++row) {
        const QRect place = rowPlace(row);
        const Look look = lookOf(m_states[row]);
        painter.fillRect(QRect(place.left(), place.top(), place.width(), 1), QColor(Style::PanelEdge));
        QRectF bar(BarX, place.center().y() - BarHeight / 2, BarWidth, BarHeight);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(Style::Field));
        painter.drawRoundedRect(bar, BarHeight / 2, BarHeight / 2);
        bar.setWidth(bar.width() * m_states[row].percent / 100);
        painter.setBrush(
            QColor(look.mark == LineIcon::Clock && look.colour == Style::Label ? Style::Edge : look.colour));
        if (bar.width() >= 1)
            painter.drawRoundedRect(bar, qMin(bar.width(), bar.height()) / 2, BarHeight / 2);
        painter.drawPixmap(MarkX, place.center().y() - LineIconSize / 2, linePixmap(look.mark, look.colour));
    }
    painter.fillRect(QRect(0, height() - 1, width(), 1), QColor(Style::PanelEdge));
}

} // namespace Kavor::HandheldGui
