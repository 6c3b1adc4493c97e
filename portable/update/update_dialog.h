#pragma once

#include "common/update/fpga_board_state.h"

#include <QDialog>
#include <QElapsedTimer>

class QLabel;
class QTimer;

namespace Kavor::HandheldGui {

class BoardRows;
class BusyBar;
class cProgressBar;

/// What is on the screen while an update runs. It has no button and ignores Esc and closing: only the work's own end
/// ends it. Shows for how long it has run and, when nothing has changed for a while, for how long that is. GUI thread.
class UpdateDialog : public QDialog {
    Q_OBJECT

public:
    /// The bar is busy: how much has been done is not known.
    UpdateDialog(QWidget* parent, const QString& name, const QString& text);

    /// Runs modally until end(); returns at once when that has been called already.
    void run();

    QString text() const;

    /// What the user is to leave alone meanwhile; at first, that the device stays on.
    void setAdvice(const QString& advice);

    /// The medium is not needed any more: says so.
    void freeStick();

public slots:
    void end();

    /// Shows how much has been done, 0 to 100.
    void showPercent(int percent);
    void reject() override {}

protected:
    void showText(const QString& text);

    /// A few words on what comes after what is under way.
    void showNext(const QString& next);

    /// Puts something between the bar and the advice. Once.
    void addRows(QWidget* rows);

private:
    void arrange();
    void showTimes();

    QLabel* m_text;
    BusyBar* m_busy;          ///< until the first percentage
    cProgressBar* m_progress; ///< from then on
    QWidget* m_rows = nullptr;
    QLabel* m_advice;
    QLabel* m_times;
    QTimer* m_second;
    QElapsedTimer m_started;
    QElapsedTimer m_changed; ///< when the text or the bar changed last
    QString m_whatToLeave;
    bool m_stickIsFree = false;
    QString m_next;
    bool m_ended = false;
};

/// The progress of an FPGA image on its way to the boards and into them.
class FpgaProgressDialog : public UpdateDialog {
    Q_OBJECT

public:
    /// A row for each of these boards.
    explicit FpgaProgressDialog(QWidget* parent, const QVector<QHostAddress>& boards = {});

    struct Display {
        QString text;
        int percent;
    };

    /// How a report of the updater is shown: burning and verifying come as one range of 0 to 100 and are split at 50.
    static Display displayOf(int phase, int percent);

public slots:
    void setProgress(int percent) { showPercent(percent); }
    void setInfoText(const QString& text);
    void setBoards(const FpgaBoardStates& states);

private:
    BoardRows* m_boards = nullptr;
};

} // namespace Kavor::HandheldGui
