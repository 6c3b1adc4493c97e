#include "portable/widgets/ToastOverlay.h"

#include <QApplication>
#include <QBitmap>
#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QTimer>

namespace Kavor::HandheldGui {

namespace {
constexpr int BackgroundAlpha = 204;
constexpr int MinimumFontSize = 16;
constexpr int FadeMs = 500;
constexpr int DefaultShowMs = 3000;
constexpr int CornerRadius = 25;
constexpr int TextMarginX = 20;
constexpr int TextMarginY = 10;

/// Qt's frame-buffer platforms copy a window over those below it: neither its alpha nor its mask counts, and what is
/// not painted stands there black. There the bubble is painted on a picture of what it covers.
bool platformBlends() {
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("linuxfb") && platform != QLatin1String("vnc");
}

} // namespace

ToastOverlay::ToastOverlay(QWidget* parent)
    : ToastOverlay(parent, QColor(ToastConfig::DefaultBgColor), QColor(ToastConfig::DefaultTextColor)) {}

ToastOverlay::ToastOverlay(QWidget* parent, const QColor& background, const QColor& text)
    : QWidget(parent), m_background(background), m_textColor(text) {
    m_background.setAlpha(BackgroundAlpha);
    if (parent)
        m_fontSize = qMax(MinimumFontSize, static_cast<int>(parent->height() * 0.035));
    setObjectName(QStringLiteral("toast"));
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowTransparentForInput |
                   Qt::WindowDoesNotAcceptFocus);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);

    m_effect = new QGraphicsOpacityEffect(this);
    setGraphicsEffect(m_effect);
    m_bringsBackdrop = !platformBlends();
    m_effect->setEnabled(!m_bringsBackdrop);
    connect(m_effect, &QGraphicsOpacityEffect::opacityChanged, this, QOverload<>::of(&QWidget::update));
    m_timer = new QTimer(this);
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &ToastOverlay::startFadeOut);
    m_fade = new QPropertyAnimation(m_effect, "opacity", this);
    m_fade->setDuration(FadeMs);
    connect(m_fade, &QPropertyAnimation::finished, this, &QWidget::hide);
    qApp->installEventFilter(this);
}

void ToastOverlay::showMessage(const QString& text, float seconds) {
    present(text, false);
    m_timer->start(seconds > 0 ? static_cast<int>(seconds * 1000) : DefaultShowMs);
}

void ToastOverlay::showPersistent(const QString& text) {
    present(text, true);
}

void ToastOverlay::present(const QString& text, bool persistent) {
    endMessage();
    m_persistent = persistent;
    m_text = text;
    m_timer->stop();
    m_fade->stop();
    updateLayout(text);
    setOpacity(1.0);
    m_telling = true;
    show();
    raise();
    update();
}

void ToastOverlay::endMessage() {
    if (!m_telling)
        return;
    m_telling = false;
    emit messageEnded();
}

void ToastOverlay::hideImmediate() {
    m_timer->stop();
    m_fade->stop();
    hide();
}

void ToastOverlay::setOpacity(double opacity) {
    m_opacity = opacity;
    m_effect->setOpacity(opacity);
}

void ToastOverlay::startFadeOut() {
    if (!isVisible() || m_fade->state() == QAbstractAnimation::Running)
        return;
    m_timer->stop();
    m_fade->setStartValue(1.0);
    m_fade->setEndValue(0.0);
    m_fade->start();
}

QFont ToastOverlay::messageFont() const {
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(m_fontSize);
    font.setWeight(QFont::Bold);
    return font;
}

void ToastOverlay::updateLayout(const QString& text) {
    const QWidget* parent = parentWidget();
    if (!parent)
        return;
    const int width = static_cast<int>(parent->width() * 0.8) - 1;
    const QRect measured =
        QFontMetrics(messageFont()).boundingRect(QRect(0, 0, width, 999), Qt::AlignCenter | Qt::TextWordWrap, text);
    setFixedSize(measured.width() + 60, measured.height() + 40);
    const int x = (parent->width() - this->width()) / 2;
    const int y = parent->height() - height() - static_cast<int>(parent->height() * 0.15);
    move(parent->mapToGlobal(QPoint(x, y)));

    if (m_bringsBackdrop) {
        m_backdrop = parentWidget()->grab(QRect(QPoint(x, y), size()));
        return;
    }
    QBitmap shape(size());
    shape.fill(Qt::color0);
    QPainter painter(&shape);
    painter.setBrush(Qt::color1);
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(rect(), CornerRadius, CornerRadius);
    painter.end();
    setMask(shape);
}

void ToastOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_bringsBackdrop) {
        painter.drawPixmap(0, 0, m_backdrop);
        painter.setOpacity(m_effect->opacity());
    }
    QPainterPath bubble;
    bubble.addRoundedRect(rect(), CornerRadius, CornerRadius);
    painter.fillPath(bubble, m_background);
    painter.setPen(m_textColor);
    painter.setFont(messageFont());
    painter.drawText(rect().adjusted(TextMarginX, TextMarginY, -TextMarginX, -TextMarginY),
                     Qt::AlignCenter | Qt::TextWordWrap, m_text);
}

void ToastOverlay::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    endMessage();
}

bool ToastOverlay::eventFilter(QObject* watched, QEvent* event) {
    // The touch goes on to whatever it meant; the message has been seen.
    if (isVisible() && (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin))
        startFadeOut();
    return QWidget::eventFilter(watched, event);
}

} // namespace Kavor::HandheldGui
