#include "portable/window/splash.h"

#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QMovie>

namespace Kavor::HandheldGui {

Splash::Splash(const QString& movie, QObject* parent)
    : QObject(parent), m_movie(new QMovie(movie)), m_label(new QLabel) {
    m_label->setWindowModality(Qt::NonModal);
    m_label->setContextMenuPolicy(Qt::NoContextMenu);
    m_label->setWindowFlags(Qt::Popup | Qt::FramelessWindowHint);
    m_label->setFixedSize(Style::WindowWidth, Style::WindowHeight);
    m_label->setBaseSize(Style::WindowWidth, Style::WindowHeight);
    m_label->setGeometry(0, 0, Style::WindowWidth, Style::WindowHeight);
    // The picture is the part that moves; around it lies its ground, which needs no memory in each frame.
    m_label->setAlignment(Qt::AlignCenter);
    QPalette ground;
    ground.setColor(QPalette::Window, QColor(Style::Ground));
    m_label->setPalette(ground);
    m_label->setMovie(m_movie);
    connect(m_movie, &QMovie::finished, this, &Splash::end);
    connect(m_movie, &QMovie::frameChanged, this, &Splash::onFrame);
}

void Splash::start() {
    m_movie->start();
    m_label->show();
    if (!m_movie->isValid())
        QMetaObject::invokeMethod(this, &Splash::end, Qt::QueuedConnection);
}

void Splash::onFrame(int frame) {
    const bool wrapped = frame < m_previousFrame && m_previousFrame >= 0;
    m_previousFrame = frame;
    if (wrapped)
        end();
}

void Splash::end() {
    if (m_done)
        return;
    m_done = true;
    m_movie->stop();
    m_label->close();
    m_label->deleteLater();
    m_movie->deleteLater();
    emit ended();
    deleteLater();
}

} // namespace Kavor::HandheldGui
