#include "portable/update/update_dialog.h"

#include "portable/update/board_rows.h"
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

constexpr int NarrowWidth = 720;
constexpr int WideWidth = 976;
constexpr int Margin = 40;
constexpr int TopMargin = 16;
constexpr int TextHeight = 72; ///< two lines
constexpr int LineHeight = 44;
constexpr int BarHeight = 60;
constexpr int StillSeconds = 10; ///< without a change, from which on the dialog says so
const QString StaysOn = QStringLiteral("Do not switch the device off");

} // namespace

UpdateDialog::UpdateDialog(QWidget* parent, const QString& name, const QString& text)
    : QDialog(parent),
      m_text(new QLabel(this)),
      m_busy(new BusyBar(this)),
      m_progress(new cProgressBar(this)),
      m_advice(new QLabel(this)),
      m_times(new QLabel(this)),
      m_second(new QTimer(this)),
      m_whatToLeave(StaysOn) {
    setObjectName(name);
    setWindowFlag(Qt::FramelessWindowHint);
    setStyleSheet(MESSAGE_BOX_STYLE);
    m_text->setObjectName(QStringLiteral("updateText"));
    m_text->setStyleSheet(QStringLiteral("QLabel { font-size: %1px; font-weight: 504; }").arg(Style::TextValue));
    m_progress->setObjectName(QStringLiteral("updateProgress"));
    m_progress->setStyleSheet(PROGRESS_BAR_STYLE);
    m_progress->hide();
    m_busy->setObjectName(QStringLiteral("updateBusy"));
    m_advice->setObjectName(QStringLiteral("updateAdvice"));
    m_times->setObjectName(QStringLiteral("updateTimes"));
    m_times->setStyleSheet(QStringLiteral("QLabel { color: %1; }").arg(Style::css(Style::Label)));
    for (QLabel* label : {m_text, m_advice, m_times}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignCenter);
    }
    m_started.start();
    showText(text);
    showTimes();
    arrange();
    m_second->setInterval(1000);
    connect(m_second, &QTimer::timeout, this, &UpdateDialog::showTimes);
    m_second->start();
}

void UpdateDialog::arrange() {
    const int width = (m_rows ? WideWidth : NarrowWidth) - 2 * Margin;
    int y = TopMargin;
    const auto place = [&y, width](QWidget* widget, int height, int gap) {
        widget->setGeometry(Margin, y, width, height);
        y += height + gap;
    };
    place(m_text, TextHeight, Style::Gap);
    m_busy->setGeometry(Margin, y, width, BarHeight);
    place(m_progress, BarHeight, 2 * Style::Gap);
    if (m_rows)
        place(m_rows, m_rows->height(), Style::Gap);
    place(m_advice, 2 * LineHeight, 0);
    place(m_times, LineHeight, TopMargin);
    setFixedSize(width + 2 * Margin, y);
}

void UpdateDialog::addRows(QWidget* rows) {
    m_rows = rows;
    arrange();
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

void UpdateDialog::setAdvice(const QString& advice) {
    m_whatToLeave = advice;
    showTimes();
}

void UpdateDialog::freeStick() {
    m_stickIsFree = true;
    showTimes();
}

void UpdateDialog::showTimes() {
    const int seconds = static_cast<int>(m_started.elapsed() / 1000);
    const int still = static_cast<int>(m_changed.elapsed() / 1000);
    m_advice->setText(m_next.isEmpty() ? m_whatToLeave : m_whatToLeave + QStringLiteral(". ") + m_next);
    QString times = QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (m_stickIsFree)
        times += QStringLiteral("    The stick may be removed");
    // Where there are no steps, none can fail to come.
    if (!m_progress->isHidden() && still >= StillSeconds)
        times += QStringLiteral("    No progress for %1 s").arg(still);
    m_times->setText(times);
}

FpgaProgressDialog::FpgaProgressDialog(QWidget* parent, const QVector<QHostAddress>& boards)
    : UpdateDialog(parent, QStringLiteral("fpgaProgress"), QStringLiteral("Transferring FPGA image...")) {
    freeStick();
    setInfoText(text());
    if (boards.isEmpty())
        return;
    m_boards = new BoardRows(this, boards);
    addRows(m_boards);
}

void FpgaProgressDialog::setBoards(const FpgaBoardStates& states) {
    if (m_boards)
        m_boards->setStates(states);
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
