#include "portable/widgets/msgbox.h"

#include "portable/widgets/boxes.h"
#include "portable/widgets/styles/styles.h"

#include <QProgressBar>
#include <QTimer>

namespace Kavor::HandheldGui {

namespace {
constexpr int TickMs = 100;
}

cProgressBar::cProgressBar(QWidget* parent) : QWidget(parent), m_bar(new QProgressBar(this)) {
    m_bar->setRange(0, 100);
    m_bar->setTextVisible(true);
}

void cProgressBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_bar->resize(size());
}

cMessageBox::cMessageBox(QWidget* parent, const QString& text, StandardButtons buttons, const QSize& fixedSize,
                         unsigned closeAfterTicks)
    : QMessageBox(parent),
      m_tickLimit(closeAfterTicks),
      m_autoClose(closeAfterTicks > 0),
      m_fixedWidth(fixedSize.width()),
      m_fixedHeight(fixedSize.height()),
      m_timer(new QTimer(this)) {
    setText(text);
    setStandardButtons(buttons);
    dressBox(*this);
    setFixedSize(fixedSize);
    m_timer->setInterval(TickMs);
    m_timer->setTimerType(Qt::CoarseTimer);
    connect(m_timer, &QTimer::timeout, this, &cMessageBox::onTick);
}

void cMessageBox::setProgressBar(const QRect& geometry) {
    m_progress = new cProgressBar(this);
    m_progress->setContextMenuPolicy(Qt::NoContextMenu);
    m_progress->setGeometry(geometry);
    m_progress->setStyleSheet(PROGRESS_BAR_STYLE);
    m_progress->bar()->resize(m_progress->size());
    m_progress->bar()->setRange(0, m_autoClose ? static_cast<int>(m_tickLimit) : 100);
    m_progress->bar()->reset();
    m_progress->bar()->setValue(0);
    m_progress->show();
}

void cMessageBox::showEvent(QShowEvent* event) {
    QMessageBox::showEvent(event);
    m_ticks = 0;
    if (m_autoClose)
        m_timer->start();
}

void cMessageBox::onTick() {
    ++m_ticks;
    if (m_progress)
        m_progress->bar()->setValue(m_ticks);
    if (m_ticks >= static_cast<int>(m_tickLimit)) {
        m_timer->stop();
        done(0);
    }
}

void cMessageBox::resizeEvent(QResizeEvent* event) {
    QMessageBox::resizeEvent(event);
    setFixedSize(m_fixedWidth, m_fixedHeight);
}

} // namespace Kavor::HandheldGui
