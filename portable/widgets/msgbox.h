#pragma once

#include <QMessageBox>

class QProgressBar;
class QTimer;

namespace Kavor::HandheldGui {

/// One progress bar that fills its widget: 0 to 100 unless a range is set, with its text shown.
class cProgressBar : public QWidget {
    Q_OBJECT

public:
    explicit cProgressBar(QWidget* parent);

    QProgressBar* bar() const { return m_bar; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QProgressBar* m_bar;
};

/// A modal message box of fixed size that can close itself after a set time and can show that time, or the progress of
/// a long operation, on a bar. GUI thread; run it through DialogRunner.
class cMessageBox : public QMessageBox {
    Q_OBJECT

public:
    /// closeAfterTicks: the box closes with result 0 after that many ticks of 100 ms; 0 means it stays.
    cMessageBox(QWidget* parent, const QString& text, StandardButtons buttons, const QSize& fixedSize,
                unsigned closeAfterTicks = 0);

    /// Creates the progress bar at that place of the box: 0 to the tick limit when the box closes itself, else 0 to
    /// 100.
    void setProgressBar(const QRect& geometry);

    /// Null until setProgressBar().
    cProgressBar* progressBar() const { return m_progress; }

    int ticks() const { return m_ticks; }

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void onTick();

    unsigned m_tickLimit;
    bool m_autoClose;
    int m_ticks = 0;
    int m_fixedWidth;
    int m_fixedHeight;
    cProgressBar* m_progress = nullptr;
    QTimer* m_timer;
};

} // namespace Kavor::HandheldGui
