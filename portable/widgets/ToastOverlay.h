#pragma once

#include "values/messagesink.h"

#include <QColor>
#include <QPixmap>
#include <QWidget>

class QGraphicsOpacityEffect;
class QPropertyAnimation;
class QTimer;

namespace Kavor::HandheldGui {

namespace ToastConfig {
constexpr QRgb DefaultBgColor = qRgb(40, 70, 130);
constexpr QRgb DefaultTextColor = qRgb(255, 255, 255);
} // namespace ToastConfig

/// A short message in a rounded bubble near the bottom of its parent window. It goes by itself, or at once when the
/// user touches or clicks anywhere; it takes neither input nor focus. GUI thread.
class ToastOverlay : public QWidget, public MessageSink {
    Q_OBJECT
    Q_PROPERTY(double opacity READ opacity WRITE setOpacity)

public:
    explicit ToastOverlay(QWidget* parent);
    ToastOverlay(QWidget* parent, const QColor& background, const QColor& text);

    /// Shows a transient text for that many seconds and a fade of 500 ms; 0 or less means 3 s.
    void showMessage(const QString& text, float seconds) override;

    /// Shows a text that stays until it is touched away or replaced.
    void showPersistent(const QString& text);

    void hideImmediate();

    double opacity() const { return m_opacity; }
    void setOpacity(double opacity);
    const QString& text() const { return m_text; }
    /// True while the text that was last given is on show.
    bool isTelling() const { return m_telling; }
    bool isPersistent() const { return m_persistent; }
    int fontSize() const { return m_fontSize; }

public slots:
    /// Starts the fade if the toast is visible.
    void startFadeOut();

signals:
    /// The text on show is no longer told: it was hidden or replaced. What stood red beside it can be put right.
    void messageEnded();

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void endMessage();
    void present(const QString& text, bool persistent);
    void updateLayout(const QString& text);
    QFont messageFont() const;

    QTimer* m_timer;
    QPropertyAnimation* m_fade;
    QGraphicsOpacityEffect* m_effect;
    QString m_text;
    double m_opacity = 1.0;
    QColor m_background;
    QColor m_textColor;
    int m_fontSize = 16;
    bool m_persistent = false;
    bool m_telling = false;
    bool m_bringsBackdrop = false; ///< the platform does not blend windows
    QPixmap m_backdrop;
};

} // namespace Kavor::HandheldGui
