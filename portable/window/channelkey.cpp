#include "portable/window/channelkey.h"

#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/tokens.h"

#include <QPainter>

namespace Kavor::HandheldGui {

namespace {

constexpr int Line = 4; // below the key of the page that is open
constexpr int SignSize = 20;

QFont keyFont(int pixels) {
    QFont font(QStringLiteral("Segoe UI"));
    font.setPixelSize(pixels);
    font.setWeight(QFont::DemiBold);
    return font;
}

} // namespace

ChannelKey::ChannelKey(QWidget* parent) : QPushButton(parent) {
    setFocusPolicy(Qt::NoFocus);
    setFont(keyFont(Style::TextLabel));
}

void ChannelKey::setLook(bool radiates, bool open) {
    if (radiates == m_radiates && open == m_open)
        return;
    m_radiates = radiates;
    m_open = open;
    update();
}

void ChannelKey::setMark(const QString& words) {
    if (words == m_mark)
        return;
    m_mark = words;
    update();
}

void ChannelKey::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool lost = !m_mark.isEmpty();
    const QRgb fill = lost         ? Style::Wrong
                      : m_radiates ? (isDown() ? Style::RfOnDown : Style::RfOn)
                                   : (isDown() ? Style::RaisedDown : Style::Raised);
    const QRgb words = lost ? Style::OnWrong : m_radiates ? Style::OnRfOn : Style::Text;
    const QRect key = rect().adjusted(4, 4, -4, -Line - 2);
    painter.setPen(QPen(QColor(lost || m_radiates ? fill : Style::Edge), 2));
    painter.setBrush(QColor(fill));
    painter.drawRoundedRect(key, Style::Radius, Style::Radius);
    if (m_open)
        painter.fillRect(0, height() - Line, width(), Line, QColor(Style::Active));
    painter.setPen(QColor(words));
    if (lost) {
        painter.setFont(keyFont(Style::TextGroup));
        painter.drawText(QRect(key.x(), key.y() - 3, key.width(), 30), Qt::AlignCenter, text());
        // As long as "No answer" may be.
        QFont narrow = keyFont(Style::TextGroup);
        narrow.setStretch(QFont::SemiCondensed);
        painter.setFont(narrow);
        painter.drawText(QRect(key.x(), key.y() + 21, key.width(), 30), Qt::AlignCenter, m_mark);
        return;
    }
    painter.setFont(font());
    painter.drawText(key.adjusted(0, 0, -SignSize, 0), Qt::AlignCenter, text());
    const QPixmap sign = linePixmap(m_open ? LineIcon::StepUp : LineIcon::StepDown, words)
                             .scaled(SignSize, SignSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    painter.drawPixmap(key.right() - SignSize - 8, key.center().y() - SignSize / 2 + 1, sign);
}

} // namespace Kavor::HandheldGui
