#include "portable/update/update_dialog.h"

#include "portable/widgets/busybar.h"
#include "portable/widgets/dialogs.h"
#include "portable/widgets/msgbox.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace Kavor::HandheldGui {

namespace {

constexpr QSize DialogSize(720, 296);
constexpr int Margin = 40;
constexpr int TextHeight = 72;
constexpr int BarHeight = 64;
constexpr int TimesHeight = 76;
constexpr int StillSeconds = 10; ///< without a change, from which on the dialog says so

} // namespace

UpdateDialog::UpdateDialog(QWidget* parent, const QString& name, const QString& text)
    : QDialog(parent),
      m_text(new QLabel(this)),
      m_busy(new BusyBar(this)),
      m_progress(new cProgressBar(this)),
      m_times(new QLabel(this)),
      m_second(new QTimer(this)) {
    setObjectName(name);
    setWindowFlag(Qt::FramelessWindowHint);
    setStyleSheet(MESSAGE_BOX_STYLE);
    setFixedSize(DialogSize);
    const int width = DialogSize.width() - 2 * Margin;
    m_text->setObjectName(QStringLiteral("updateText"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setAlignment(Qt::AlignCenter);
    m_text->setGeometry(Margin, Margin / 2, width, TextHeight);
    m_progress->setObjectName(QStringLiteral("updateProgress"));
    m_progress->setStyleSheet(PROGRESS_BAR_STYLE);
    m_progress->setGeometry(Margin, Margin / 2 + TextHeight + Style::Gap, width, BarHeight);
    m_progress->hide();
    m_busy->setObjectName(QStringLiteral("updateBusy"));
    m_busy->setGeometry(m_progress->geometry());
    m_times->setObjectName(QStringLiteral("updateTimes"));
    m_times->setAlignment(Qt::AlignCenter);
    m_times->setStyleSheet(QStringLiteral("QLabel { color: %1; }").arg(Style::css(Style::Label)));
    m_times->setGeometry(Margin, m_progress->geometry().bottom() + 1 + 2 * Style::Gap, width, TimesHeight);
    m_started.start();
    showText(text);
    showTimes();
    m_second->setInterval(1000);
    connect(m_second, &QTimer::timeout, this, &UpdateDialog::showTimes);
    m_second->start();
}

QString UpdateDialog::text() const {
    return m_text->text();
}

void UpdateDialog::run() {
    if (!m_ended)
        DialogRunner::current().run(*this, DialogKind::Progress, text());
}

void UpdateDialog::end() {
    m_ended = true;
    accept();
}

void UpdateDialog::showText(const QString& text) {
    if (text != m_text->text())
        m_changed.start();
    m_text->setText(text);
}

void UpdateDialog::showNext(const QString& next) {
    if (next == m_next)
        return;
    m_next = next;
    showTimes();
}

void UpdateDialog::showPercent(int percent) {
    QProgressBar* bar = m_progress->bar();
    m_busy->hide();
    m_progress->show();
    if (percent != bar->value())
        m_changed.start();
    bar->setValue(percent);
}

void UpdateDialog::showTimes() {
    const int seconds = static_cast<int>(m_started.elapsed() / 1000);
    const int still = static_cast<int>(m_changed.elapsed() / 1000);
    const QString next = m_next.isEmpty() ? QString() : QStringLiteral(". ") + m_next;
    QString times = QStringLiteral("Do not switch the device off%1\n%2:%3")
                        .arg(next)
                        .arg(seconds / 60)
                        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    // Where there are no steps, none can fail to come.
    if (!m_progress->isHidden() && still >= StillSeconds)
        times += QStringLiteral("    No progress for %1 s").arg(still);
    m_times->setText(times);
}

FpgaProgressDialog::FpgaProgressDialog(QWidget* parent)
    : UpdateDialog(parent, QStringLiteral("fpgaProgress"), QStringLiteral("Transferring FPGA image...")) {
    setInfoText(text());
}

void FpgaProgressDialog::setInfoText(const QString& text) {
    static const std::pair<QLatin1String, QString> phases[] = {
        {QLatin1String("Transferring"), QStringLiteral("Next: programming")},
        {QLatin1String("Programming"), QStringLiteral("Next: verifying")},
        {QLatin1String("Verifying"), QStringLiteral("Last step")},
    };
    QString next;
    for (const auto& [begin, after] : phases) {
        if (text.startsWith(begin))
            next = after;
    }
    showNext(next);
    showText(text);
}

FpgaProgressDialog::Display FpgaProgressDialog::displayOf(int phase, int percent) {
    const int p = std::clamp(percent, 0, 100);
    const QString transferring = QStringLiteral("Transferring FPGA image: %1%");
    const QString programming = QStringLiteral("Programming FPGA: %1%");
    const QString verifying = QStringLiteral("Verifying FPGA: %1%");
    switch (phase) {
    case 0:
        return {transferring.arg(p), p};
    case 1:
        return p <= 50 ? Display{programming.arg(2 * p), 2 * p} : Display{verifying.arg(2 * (p - 50)), 2 * (p - 50)};
    case 2:
        return {verifying.arg(p), 50 + p / 2};
    default:
        return {QStringLiteral("FPGA update completed: 100%"), 100};
    }
}

} // namespace Kavor::HandheldGui
