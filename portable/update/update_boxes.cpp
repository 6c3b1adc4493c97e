#include "portable/update/update_boxes.h"

#include "portable/update/update_dialog.h"
#include "portable/widgets/boxes.h"

#include <QThread>
#include <QTimer>
#include <memory>

namespace Kavor::HandheldGui {

namespace {

const QString BoxName = QStringLiteral("updateBox");

} // namespace

void ShortWait::run() {
    if (m_ended)
        return;
    QTimer::singleShot(m_longestMs, &m_loop, &QEventLoop::quit);
    m_loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void ShortWait::end() {
    m_ended = true;
    m_loop.quit();
}

void UpdateBoxes::failure(const QString& text) const {
    tellInBox(m_parent, DialogKind::Critical, {BoxName, m_title, text, {}});
}

void UpdateBoxes::information(const QString& text) const {
    tellInBox(m_parent, DialogKind::Information, {BoxName, m_title, text, {}});
}

void UpdateBoxes::runAside(const QString& text, const std::function<void(const Percent&)>& work,
                           const QString& advice) const {
    UpdateDialog dialog(m_parent, QStringLiteral("asideProgress"), text);
    if (!advice.isEmpty())
        dialog.setAdvice(advice);
    ShortWait wait(m_patienceMs);
    int told = -1; // the work's
    const Percent tell = [&dialog, &told](int percent) {
        if (percent == told)
            return;
        told = percent;
        QMetaObject::invokeMethod(&dialog, "showPercent", Qt::QueuedConnection, Q_ARG(int, percent));
    };
    const std::unique_ptr<QThread> thread(QThread::create([&work, &tell] { work(tell); }));
    // The dialog hears of it first: the wait's end must not let a dialog flash up that has nothing to say.
    QObject::connect(thread.get(), &QThread::finished, &dialog, &UpdateDialog::end);
    QObject::connect(thread.get(), &QThread::finished, &wait, &ShortWait::end);
    thread->start();
    wait.run();
    dialog.run();
    thread->wait();
}

} // namespace Kavor::HandheldGui
