#pragma once

#include <QEventLoop>
#include <QString>
#include <functional>

class QWidget;

namespace Kavor::HandheldGui {

/// A wait for work on another thread that is over before anybody wonders: the screen is drawn, taps wait. What takes
/// longer needs a dialog. GUI thread.
class ShortWait : public QObject {
    Q_OBJECT

public:
    explicit ShortWait(int longestMs) : m_longestMs(longestMs) {}

    /// Returns after end(), also one that came before, or after the longest time.
    void run();

public slots:
    void end();

private:
    const int m_longestMs;
    QEventLoop m_loop;
    bool m_ended = false;
};

/// The boxes of one update. GUI thread; each returns when its box is closed.
class UpdateBoxes {
public:
    /// patienceMs: how long work aside may take before a dialog says so.
    UpdateBoxes(QWidget* parent, const QString& title, int patienceMs)
        : m_parent(parent), m_title(title), m_patienceMs(patienceMs) {}

    void failure(const QString& text) const;
    void information(const QString& text) const;

    /// Told of how much of the work is done, 0 to 100, on its thread.
    using Percent = std::function<void(int percent)>;

    /// Runs work on a thread of its own and returns when it has ended. A dialog with the text, and with the advice in
    /// place of the usual one, shows when that takes a while.
    void runAside(const QString& text, const std::function<void(const Percent&)>& work,
                  const QString& advice = QString()) const;

private:
    QWidget* m_parent;
    QString m_title;
    int m_patienceMs;
};

} // namespace Kavor::HandheldGui
